// SPDX-License-Identifier: Zlib
#pragma once

#include <string>

namespace fenlight::platform {

// The path from the root, without empty and "." steps. ".." takes back the step before it unless that one is
// a symbolic link, whose parent lies elsewhere: the result always names the same file. Empty where the
// current directory is gone. May throw std::bad_alloc.
std::string FullPathOf(const char *path);

}  // namespace fenlight::platform
