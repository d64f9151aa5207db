// SPDX-License-Identifier: Zlib
// Rectangles between FX buffers: plain copy, copy but for a key colour, mix through a mask.
//
// The definition is a walk over the pixels, from the top left to the bottom right, that reads a source pixel
// (and its three mask bytes) when it comes to it and then writes. Where source, mask and target share memory,
// the result is that of the walk. Buffers belong to the caller's thread; nothing here keeps state.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/vector_level.h"
#include "fx/fx_buffer.h"

namespace fenlight {

inline constexpr int32_t kArrayKey = 1;
inline constexpr int32_t kArrayMask = 2;  // every mode but these two is a plain copy

// In pixels; any 32-bit numbers.
struct ArrayRectangle {
    int32_t destX, destY;
    int32_t width, height;
    int32_t srcX, srcY;
};

// What lies outside either buffer is left out, a mask that is too short ends the mix.
void CopyArray(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle) noexcept;
// `key` is 0x00BBGGRR; its high byte is ignored.
void CopyArrayKeyed(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle,
                    uint32_t key) noexcept;
void MixArray(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle,
              const FXHeader &mask) noexcept;

// A clipped rectangle: `rows` rows of `rowBytes` bytes, three a pixel. Without a mask that pointer is null.
struct ArrayBlock {
    uint8_t *target;
    ptrdiff_t targetPitch;
    const uint8_t *source;
    ptrdiff_t sourcePitch;
    const uint8_t *mask;
    ptrdiff_t maskPitch;
    int64_t rowBytes;
    int64_t rows;
};

// No version looks at more than this many bytes at a time, and all walk forwards, each byte once: a target
// that lies this far behind its source, or before it, gives what the walk gives.
inline constexpr ptrdiff_t kArrayStep = 96;

struct ArrayKernels {
    // `key` has blue in its low byte, as pixels have.
    void (*keyRows)(const ArrayBlock &block, uint32_t key) noexcept;
    void (*mixRows)(const ArrayBlock &block) noexcept;
};

extern const ArrayKernels kPlainArrayKernels;
extern const ArrayKernels kAvx2ArrayKernels;
extern const ArrayKernels kAvx512ArrayKernels;

}  // namespace fenlight
