// SPDX-License-Identifier: Zlib
// From the system's error numbers to the published ones.
#pragma once

#include <cstdint>

namespace fenlight::platform {

// The published code for a value of errno; `path` tells a missing file from a missing directory and may be
// nullptr.
uint32_t ErrorFromErrno(int error, const char *path) noexcept;

}  // namespace fenlight::platform
