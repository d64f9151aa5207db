// SPDX-License-Identifier: Zlib
// Loops that blend byte by byte, for every version: compilers put them into vectors of the width of the file
// that includes this one. All is done in 16 bits without a sign.
#pragma once

#include <cstdint>

#include "fx/blends/blend_kernels.h"

namespace fenlight {
namespace {

inline uint8_t Lower(uint8_t byte, uint8_t amount) {
    return static_cast<uint8_t>((byte > amount ? byte : amount) - amount);
}

inline void FadeBytes(uint8_t *result, const uint8_t *first, const uint8_t *second, int64_t count,
                      const FadeAmounts &amounts) noexcept {
    const uint8_t offFirst = amounts.offFirst, offSecond = amounts.offSecond;
    for (int64_t i = 0; i < count; ++i)
        result[i] = static_cast<uint8_t>(Lower(first[i], offFirst) + Lower(second[i], offSecond));
}

// 25701 / 65536 lies so little above 100 / 255, and 5243 / 2^19 above 1 / 100, that both round down exactly
// for all that occurs: mask bytes, and sums up to 25500.
inline uint8_t MixByte(uint8_t first, uint8_t second, uint8_t mask) {
    const auto share = static_cast<uint16_t>(mask * 25701u >> 16);
    const auto rest = static_cast<uint16_t>(100 - share);
    const auto sum = static_cast<uint16_t>(rest * first + share * second);
    return static_cast<uint8_t>(static_cast<uint16_t>(sum * 5243u >> 16) >> 3);
}

inline void MixBytes(uint8_t *result, const uint8_t *first, const uint8_t *second, const uint8_t *mask,
                     int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i) result[i] = MixByte(first[i], second[i], mask[i]);
}

}  // namespace
}  // namespace fenlight
