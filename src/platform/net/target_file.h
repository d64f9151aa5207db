// SPDX-License-Identifier: Zlib
// A file that stands under its name only when it is whole: as long as it grows it has no name, so that the
// end of the process leaves nothing behind, or where that cannot be done one of its own beside the target.
// Then it takes the target's place in one step. Until then, and if that never comes, what stood there stays.
// Belongs to one thread; two of them may have the same target, and the later one wins.
#pragma once

#include <cstddef>
#include <string>

#include "fenlight/platform/types.h"

namespace fenlight::platform {

class TargetFile {
  public:
    // `openFiles` is where the system lists the files that this process has open, with a slash at the end.
    explicit TargetFile(const char *openFiles = "/proc/self/fd/") noexcept : openFiles_(openFiles) {}
    ~TargetFile();
    TargetFile(const TargetFile &) = delete;
    TargetFile &operator=(const TargetFile &) = delete;

    // All three give 0 or a code of GetLastError. A target that exists must be a regular file that may be
    // written; a symbolic link stands for the file that it leads to. All but Write may
    // throw std::bad_alloc.
    DWORD Open(const char *fileName);
    DWORD Write(const char *bytes, size_t count) noexcept;
    // Ends the writing. After a failure nothing is left but what stood there before.
    DWORD Keep();

  private:
    DWORD JudgeTarget();
    DWORD MakeBeside();
    bool MakeNameless();
    DWORD GiveName();
    // Has `make` make the file under one name after the other until one is free.
    template <class Make>
    DWORD NameBeside(Make make);
    std::string Folder() const { return target_.substr(0, target_.rfind('/') + 1); }
    std::string OpenFilePath() const { return openFiles_ + std::to_string(descriptor_); }

    const char *const openFiles_;
    std::string target_;
    std::string written_;  // empty: nothing to take away
    int descriptor_ = -1;
    unsigned keptMode_ = 0;  // rights of the file that is replaced; 0: there is none
};

}  // namespace fenlight::platform
