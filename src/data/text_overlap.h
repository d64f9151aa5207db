// SPDX-License-Identifier: Zlib
#pragma once

#include <cstdint>

namespace fenlight {

// The wide versions read ahead of what they write, so a destination that touches the source is left to the
// plain ones, which go byte by byte.
inline bool DoOverlap(const void *first, int64_t firstBytes, const void *second, int64_t secondBytes) {
    const auto a = reinterpret_cast<uintptr_t>(first);
    const auto b = reinterpret_cast<uintptr_t>(second);
    return a < b ? b - a < static_cast<uint64_t>(firstBytes) : a - b < static_cast<uint64_t>(secondBytes);
}

}  // namespace fenlight
