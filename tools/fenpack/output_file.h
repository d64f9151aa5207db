// SPDX-License-Identifier: Zlib
// A file that appears under its name when it is whole, and not at all otherwise. One at a time: an
// interrupting signal removes what was written so far.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>

namespace fenpack {

class OutputFile {
  public:
    // Fails at once if there is such a file and it must not be replaced.
    OutputFile(const std::string &path, mode_t mode, bool mayReplace);
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    void Write(std::span<const uint8_t> bytes);
    // Gives it its name.
    void Finish();

  private:
    void Publish();

    std::string path_;
    std::string temporary_;
    bool mayReplace_;
    int file_ = -1;
};

}  // namespace fenpack
