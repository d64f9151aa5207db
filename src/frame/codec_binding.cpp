// SPDX-License-Identifier: Zlib
#include "frame/codec_binding.h"

#include <lodepng.h>

#include <cstdlib>
#include <limits>

#include "frame/jpeg_codec.h"

namespace fenlight {
namespace {

// LodePNG's own numbers for these refusals.
constexpr uint32_t kTooLittleData = 91;
constexpr uint32_t kTooManyPixels = 92;
constexpr uint32_t kEmptyPicture = 93;

constexpr int64_t kLargestBlock = std::numeric_limits<int32_t>::max();
// A block of 1 GiB. More is a mistake or an attack.
constexpr uint64_t kMostDecodedPixels = uint64_t{1} << 28;
// No byte of a deflate stream makes more than this many.
constexpr uint64_t kMostInflation = 1032;

class DecoderState {
  public:
    DecoderState() noexcept { lodepng_state_init(&state); }
    DecoderState(const DecoderState &) = delete;
    DecoderState &operator=(const DecoderState &) = delete;
    ~DecoderState() { lodepng_state_cleanup(&state); }
    LodePNGState state;
};

// Refuses a size that the file cannot fill before any memory is asked for it, and has inflation stop where
// the picture is full; LodePNG alone would go on as long as the stream does.
uint32_t LimitMemory(LodePNGState &state, const uint8_t *file, size_t bytes) {
    unsigned width = 0, height = 0;
    const unsigned error = lodepng_inspect(&width, &height, &state, file, bytes);
    if (error != 0) return error;
    // The product of two 32-bit sizes fits 64 bits, its multiples need not.
    const uint64_t pixels = uint64_t{width} * height;
    if (pixels > kMostDecodedPixels) return kTooManyPixels;
    const uint64_t pixelBytes = pixels * lodepng_get_bpp(&state.info_png.color) / 8;
    if (pixelBytes > bytes * kMostInflation) return kTooLittleData;
    // Interlaced pictures have less than 2 * height + 7 rows; each takes a byte for its filter and may be
    // filled up with another.
    state.decoder.zlibsettings.max_output_size = pixelBytes + uint64_t{4} * height + 64;
    return 0;
}

uint32_t DecodeWithLodePng(int32_t *width, int32_t *height, const uint8_t *file, int32_t fileBytes,
                           uint8_t **pixels, int32_t *pixelBytes) noexcept {
    *width = 0;
    *pixels = nullptr;
    *pixelBytes = 0;
    unsigned char *block = nullptr;
    unsigned blockWidth = 0;
    unsigned blockHeight = 0;
    const size_t bytes = fileBytes < 0 ? 0 : static_cast<size_t>(fileBytes);
    DecoderState decoder;
    unsigned error = LimitMemory(decoder.state, file, bytes);
    if (error == 0) error = lodepng_decode(&block, &blockWidth, &blockHeight, &decoder.state, file, bytes);
    if (error != 0) {
        std::free(block);
        return error;
    }
    *width = static_cast<int32_t>(blockWidth);
    *height = static_cast<int32_t>(blockHeight);
    *pixels = block;
    *pixelBytes = static_cast<int32_t>(uint64_t{blockWidth} * blockHeight * 4);
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
