// SPDX-License-Identifier: Zlib
// Tells on a terminal how far a long piece of work is. Says nothing elsewhere or about short ones.
#pragma once

#include <cstdint>
#include <string>

namespace fenpack {

class Progress {
  public:
    Progress(std::string task, uint64_t totalBytes);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void Show(uint64_t doneBytes) const;

  private:
    std::string task_;
    uint64_t total_;
    bool shown_;
};

}  // namespace fenpack
