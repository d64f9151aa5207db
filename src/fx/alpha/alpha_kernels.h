// SPDX-License-Identifier: Zlib
// The hot loops of alpha images. They see addresses and counts of pixels only, at any alignment.
//
// An alpha image's pixel is red, green, blue, alpha; a colour pixel of an FX buffer blue, green, red; a
// surface's pixel blue, green, red, unused. Blocks do not overlap unless a loop says so.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

struct AlphaKernels {
    // Surface pixels: target = image over backdrop, the unused byte 0. Target and backdrop may be one.
    void (*paint)(uint8_t *target, const uint8_t *backdrop, const uint8_t *image, int64_t pixels) noexcept;
    // Colours to an opaque alpha image, or to one whose alpha is the mean of the bytes in `greys`.
    void (*widen)(uint8_t *image, const uint8_t *colours, int64_t pixels) noexcept;
    void (*widenWithAlpha)(uint8_t *image, const uint8_t *colours, const uint8_t *greys,
                           int64_t pixels) noexcept;
    // And back; `greys` takes the alpha in all three bytes.
    void (*narrow)(uint8_t *colours, const uint8_t *image, int64_t pixels) noexcept;
    void (*narrowWithAlpha)(uint8_t *colours, uint8_t *greys, const uint8_t *image, int64_t pixels) noexcept;
    void (*invertAlpha)(uint8_t *image, int64_t pixels) noexcept;
    // Moves each byte towards that of `goal` by no more than its byte of `limits`, which lies as a pixel in
    // memory and is below 37. Returns the sum of all moves. `goal` may be `image`.
    int64_t (*merge)(uint8_t *image, const uint8_t *goal, int64_t pixels, uint32_t limits) noexcept;
};

extern const AlphaKernels kPlainAlphaKernels;
extern const AlphaKernels kAvx2AlphaKernels;
extern const AlphaKernels kAvx512AlphaKernels;

// The widest that this processor runs, unless forced.
const AlphaKernels &CurrentAlphaKernels() noexcept;

}  // namespace fenlight
