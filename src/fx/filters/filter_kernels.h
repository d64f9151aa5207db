// SPDX-License-Identifier: Zlib
// The loops of the filters that look at one byte or one pixel, in a version for each vector level. They see
// runs of memory and nothing of buffers, keep no state and take no lock.
#pragma once

#include <array>
#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// Blue, green, red.
using PixelBytes = std::array<uint8_t, 3>;

// Added first and then taken away, both with saturation. One of the two is 0 in each colour.
struct ColourShift {
    PixelBytes raise, lower;
};

struct FilterKernels {
    // `count` bytes.
    void (*darken)(uint8_t *bytes, int64_t count, uint8_t amount) noexcept;
    void (*lighten)(uint8_t *bytes, int64_t count, uint8_t amount) noexcept;
    void (*sharpen)(uint8_t *bytes, int64_t count) noexcept;
    // Moves each byte by at most `step` towards that of `target`, which may be the same memory.
    void (*approach)(uint8_t *bytes, const uint8_t *target, int64_t count, uint8_t step) noexcept;

    // `count` pixels of three bytes without a gap.
    void (*grey)(uint8_t *pixels, int64_t count) noexcept;
    // White where the sum of the colours is `limit` or more, else black; 0 to 766. `target` is `source` or
    // lies apart from it.
    void (*split)(uint8_t *target, const uint8_t *source, int64_t count, int32_t limit) noexcept;
    void (*shift)(uint8_t *pixels, int64_t count, const ColourShift &shift) noexcept;
    void (*replace)(uint8_t *pixels, int64_t count, const PixelBytes &from, const PixelBytes &to) noexcept;
    void (*fill)(uint8_t *pixels, int64_t count, const PixelBytes &colour) noexcept;
    // A byte of `map` for each pixel, the last pixel's first: 1 for black, else 0.
    void (*mapBlack)(uint8_t *map, const uint8_t *pixels, int64_t count) noexcept;
};

extern const FilterKernels kPlainFilterKernels;
extern const FilterKernels kAvx2FilterKernels;
extern const FilterKernels kAvx512FilterKernels;

const FilterKernels &ChooseFilters() noexcept;

}  // namespace fenlight
