// SPDX-License-Identifier: Zlib
// The loops that every version of the kernels compiles for itself, at its own width.
#pragma once

#include <cstdint>
#include <utility>

#include "fx/geometry/geometry_kernels.h"

namespace fenlight {
namespace {

// What is left between two pointers that vector code brought closer. The last three bytes may begin before
// `begin`, in pixels that were swapped already.
inline void TurnRest(uint8_t *begin, uint8_t *end) noexcept {
    for (int64_t half = (end - begin) / 2; half > 0; half -= 3) {
        end -= 3;
        for (int i = 0; i < 3; ++i) std::swap(begin[i], end[i]);
        begin += 3;
    }
}

inline void SwapBytes(uint8_t *__restrict first, uint8_t *__restrict second, int64_t bytes) noexcept {
    for (int64_t i = 0; i < bytes; ++i) {
        const uint8_t kept = first[i];
        first[i] = second[i];
        second[i] = kept;
    }
}

inline void FindLandings(const LandingLine &line, int32_t *offsets, int64_t count) noexcept {
    // Whole vectors: a rest would be worked out one by one.
    const auto rounded =
        static_cast<uint32_t>(count + kLandingsAtOnce - 1) / kLandingsAtOnce * kLandingsAtOnce;
    for (uint32_t i = 0; i < rounded; ++i) {
        const auto column = static_cast<uint32_t>(static_cast<int32_t>(line.x + i * line.stepX) >> 10);
        const auto row = static_cast<uint32_t>(static_cast<int32_t>(line.y + i * line.stepY) >> 10);
        offsets[i] = static_cast<int32_t>(line.origin + column * line.pixelBytes + row * line.pitch);
    }
}

}  // namespace
}  // namespace fenlight
