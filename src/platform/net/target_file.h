// SPDX-License-Identifier: Zlib
// A file that stands under its name only when it is whole: it is written beside its target under a name of
// its own and takes the target's place in one step. Until then, and if that never comes, what stood there
// stays. Belongs to one thread; two of them may have the same target, and the later one wins.
#pragma once

#include <cstddef>
#include <string>

#include "fenlight/platform/types.h"

namespace fenlight::platform {

class TargetFile {
  public:
    TargetFile() = default;
    ~TargetFile();
    TargetFile(const TargetFile &) = delete;
    TargetFile &operator=(const TargetFile &) = delete;

    // All three give 0 or a code of GetLastError. A target that exists must be a regular file that may be
    // written; a symbolic link stands for the file that it leads to. May throw std::bad_alloc.
    DWORD Open(const char *fileName);
    DWORD Write(const char *bytes, size_t count) noexcept;
    // Ends the writing. After a failure nothing is left but what stood there before.
    DWORD Keep() noexcept;

  private:
    DWORD JudgeTarget();
    DWORD MakeBeside();

    std::string target_;
    std::string written_;  // empty: nothing to take away
    int descriptor_ = -1;
    unsigned keptMode_ = 0;  // rights of the file that is replaced; 0: there is none
};

}  // namespace fenlight::platform
