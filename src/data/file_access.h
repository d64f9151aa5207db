// SPDX-License-Identifier: Zlib
// Whole files in one call. A file is open only during the call; its handle leaves the table before the call
// returns. Keeps nothing between calls, so any thread may use it.
#pragma once

#include <cstdint>

namespace fenlight {

inline constexpr int32_t kCannotOpen = -1;

// All three give the bytes moved, or kCannotOpen; sizes below 0 open nothing and give 0.
int32_t ReadWholeFile(const char *fileName, void *target, int32_t size) noexcept;
int32_t ReadFilePiece(const char *fileName, void *target, int32_t size, int32_t filePosition) noexcept;
int32_t WriteWholeFile(const char *fileName, const void *bytes, int32_t size) noexcept;

}  // namespace fenlight
