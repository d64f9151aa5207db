// SPDX-License-Identifier: Zlib
// Alpha images: blocks of 4 * width * height bytes, a pixel red, green, blue, alpha, rows from the top
// without padding. The library keeps no record of them: a block is the caller's from the call that made it
// until ReleaseAlphaImage, and nothing here holds state or takes a lock but that of the surfaces painted on.
//
// A block comes from the C heap, whether the codec made it or GlobalAlloc: one way of release serves both.
#pragma once

#include <algorithm>
#include <cstdint>

#include "fenlight/platform/graphics.h"
#include "fx/fx_buffer.h"

namespace fenlight {

inline constexpr int64_t kAlphaPixelBytes = 4;

struct AlphaImage {
    uint8_t *pixels = nullptr;  // null: there is none
    int32_t width = 0;
    int32_t height = 0;
    int32_t bytes = 0;
};

// Where a caller asks for them; 0 is no place.
inline void StoreSizes(const AlphaImage &image, int32_t *width, int32_t *height, int32_t *bytes) noexcept {
    if (width != nullptr) *width = image.width;
    if (height != nullptr) *height = image.height;
    if (bytes != nullptr) *bytes = image.bytes;
}

// Whole pixels in a block of so many bytes; sizes below 0 have none.
constexpr int64_t AlphaPixels(int32_t bytes) noexcept {
    return std::max<int64_t>(bytes, 0) / kAlphaPixelBytes;
}

// False where the file could not be read; a file that is no picture makes an empty image.
bool ReadAlphaImage(const char *fileName, AlphaImage &image) noexcept;
// Needs a bound codec. The size of the PNG stream, whether the file could be made or not, or the codec's
// error number.
int32_t WriteAlphaImage(const uint8_t *pixels, int32_t width, int32_t height, const char *fileName) noexcept;
void ReleaseAlphaImage(uint8_t *pixels) noexcept;

// Where an alpha image is painted, and how much of it: pixels behind `bytes` are clear.
struct AlphaPlace {
    int32_t x, y;
    int32_t width, height;
    int32_t bytes;
};

// Paints over what `backdrop` shows at the same place, or over the target itself for the backdrop 0. False,
// with nothing painted, without a free image slot, for a dead target, sizes that no image has, and where
// memory ran out.
bool PaintAlphaImage(const uint8_t *pixels, const AlphaPlace &place, HDC target, HDC backdrop) noexcept;

// `alpha` may be null. The sizes are stored in any case; without memory there are no pixels.
AlphaImage AlphaImageOfFX(const FXHeader &fx, const FXHeader *alpha) noexcept;

// Buffers with packed rows. Empty where memory ran out.
struct AlphaBuffers {
    OwnedFX colours;
    OwnedFX alpha;  // only if wanted
};
AlphaBuffers FXOfAlphaImage(const AlphaImage &image, bool wantsAlpha) noexcept;

}  // namespace fenlight
