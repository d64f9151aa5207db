// SPDX-License-Identifier: Zlib
// Loops that treat each byte by itself, for every version of the filters: compilers put them into vectors of
// the width of the file that includes this one.
//
// Saturation is written as a limit before the step: max(b, a) - a is b - a or 0.
#pragma once

#include <algorithm>
#include <cstdint>

#include "fx/filters/filter_kernels.h"

namespace fenlight {
namespace {

inline uint8_t Lower(uint8_t byte, uint8_t amount) {
    return static_cast<uint8_t>(std::max(byte, amount) - amount);
}

inline uint8_t Raise(uint8_t byte, uint8_t amount) {
    return static_cast<uint8_t>(std::min(byte, static_cast<uint8_t>(255 - amount)) + amount);
}

inline void DarkenBytes(uint8_t *bytes, int64_t count, uint8_t amount) noexcept {
    for (int64_t i = 0; i < count; ++i) bytes[i] = Lower(bytes[i], amount);
}

inline void LightenBytes(uint8_t *bytes, int64_t count, uint8_t amount) noexcept {
    for (int64_t i = 0; i < count; ++i) bytes[i] = Raise(bytes[i], amount);
}

// One down below 127, else one up. Within 1 to 254 neither leaves the byte's range, and 0 and 255 come back
// to what they were. The step is taken from the top bit of byte + 1: compilers make a mess of a choice here.
inline void SharpenBytes(uint8_t *bytes, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i) {
        const uint8_t byte = std::clamp<uint8_t>(bytes[i], 1, 254);
        const auto next = static_cast<uint8_t>(byte + 1);
        bytes[i] = static_cast<uint8_t>(byte - 1 + (next >> 6 & 2));
    }
}

// The target, kept between the two ends of the step.
inline void ApproachBytes(uint8_t *bytes, const uint8_t *target, int64_t count, uint8_t step) noexcept {
    for (int64_t i = 0; i < count; ++i)
        bytes[i] = std::min(std::max(target[i], Lower(bytes[i], step)), Raise(bytes[i], step));
}

// Whole pixels and whole vectors of any width up to 64 bytes.
constexpr int64_t kPatternBytes = 192;
constexpr int64_t kPatternPixels = kPatternBytes / 3;

struct Pattern {
    explicit Pattern(const PixelBytes &pixel) {
        for (int64_t i = 0; i < kPatternBytes; ++i) bytes[i] = pixel[static_cast<size_t>(i % 3)];
    }
    alignas(64) uint8_t bytes[kPatternBytes];
};

inline void ShiftPixels(uint8_t *pixels, int64_t count, const ColourShift &shift) noexcept {
    const Pattern raise(shift.raise), lower(shift.lower);
    const auto shiftByte = [&](uint8_t *bytes, int64_t i) {
        bytes[i] = Lower(Raise(bytes[i], raise.bytes[i]), lower.bytes[i]);
    };
    for (; count >= kPatternPixels; count -= kPatternPixels, pixels += kPatternBytes)
        for (int64_t i = 0; i < kPatternBytes; ++i) shiftByte(pixels, i);
    for (int64_t i = 0; i < 3 * count; ++i) shiftByte(pixels, i);
}

inline void FillPixels(uint8_t *pixels, int64_t count, const PixelBytes &colour) noexcept {
    const Pattern pattern(colour);
    for (; count >= kPatternPixels; count -= kPatternPixels, pixels += kPatternBytes)
        for (int64_t i = 0; i < kPatternBytes; ++i) pixels[i] = pattern.bytes[i];
    for (int64_t i = 0; i < 3 * count; ++i) pixels[i] = pattern.bytes[i];
}

}  // namespace
}  // namespace fenlight
