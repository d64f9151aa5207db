// SPDX-License-Identifier: Zlib
#include "frame/codec_binding.h"

#include <lodepng.h>

#include <cstdlib>
#include <limits>

#include "frame/jpeg_codec.h"

namespace fenlight {
namespace {

// LodePNG's own numbers for these two refusals.
constexpr uint32_t kTooManyPixels = 92;
constexpr uint32_t kEmptyPicture = 93;

constexpr int64_t kLargestBlock = std::numeric_limits<int32_t>::max();

uint32_t DecodeWithLodePng(int32_t *width, int32_t *height, const uint8_t *file, int32_t fileBytes,
                           uint8_t **pixels, int32_t *pixelBytes) noexcept {
    *width = 0;
    *pixels = nullptr;
    *pixelBytes = 0;
    unsigned char *block = nullptr;
    unsigned blockWidth = 0;
    unsigned blockHeight = 0;
    const size_t bytes = fileBytes < 0 ? 0 : static_cast<size_t>(fileBytes);
    const unsigned error = lodepng_decode32(&block, &blockWidth, &blockHeight, file, bytes);
    if (error != 0) {
        std::free(block);
        return error;
    }
    // The product of two 32-bit sizes fits 64 bits, its fourfold need not.
    const uint64_t pixelCount = uint64_t{blockWidth} * blockHeight;
    if (pixelCount > kLargestBlock / 4) {
        std::free(block);
        return kTooManyPixels;
    }
    *width = static_cast<int32_t>(blockWidth);
    *height = static_cast<int32_t>(blockHeight);
    *pixels = block;
    *pixelBytes = static_cast<int32_t>(pixelCount * 4);
    return 0;
}

// LodePNG encodes with a deflate window of 2048 bytes unless told otherwise.
uint32_t EncodeWithLodePng(int32_t width, int32_t height, const uint8_t *pixels, uint8_t **stream,
                           int32_t *streamBytes) noexcept {
    *stream = nullptr;
    *streamBytes = 0;
    if (width <= 0 || height <= 0) return kEmptyPicture;
    if (int64_t{width} * height > kLargestBlock / 4) return kTooManyPixels;
    unsigned char *block = nullptr;
    size_t bytes = 0;
    const unsigned error =
        lodepng_encode32(&block, &bytes, pixels, static_cast<unsigned>(width), static_cast<unsigned>(height));
    if (error != 0 || bytes > static_cast<size_t>(kLargestBlock)) {
        std::free(block);
        return error != 0 ? error : kTooManyPixels;
    }
    *stream = block;
    *streamBytes = static_cast<int32_t>(bytes);
    return 0;
}

// LodePNG allocates with malloc.
void FreeLodePngBlock(uint8_t *block) noexcept { std::free(block); }

}  // namespace

DecodePngEntry DecodePNG = nullptr;
EncodePngEntry EncodePNG = nullptr;
FreePngBufferEntry FreePNGBuffer = nullptr;
Dib2JpgEntry Dib2Jpg = nullptr;

void BindCodecs() noexcept {
    DecodePNG = DecodeWithLodePng;
    EncodePNG = EncodeWithLodePng;
    FreePNGBuffer = FreeLodePngBlock;
    Dib2Jpg = WriteJpegFile;
}

void UnbindCodecs() noexcept {
    DecodePNG = nullptr;
    EncodePNG = nullptr;
    FreePNGBuffer = nullptr;
    Dib2Jpg = nullptr;
}

}  // namespace fenlight
