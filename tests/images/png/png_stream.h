// SPDX-License-Identifier: Zlib
// PNG streams for tests: encoded by LodePNG from random samples, or put together chunk by chunk, and what the
// loader makes of them.
#pragma once

#include <lodepng.h>

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "images/png/png_decoder.h"
#include "platform/raster/pixel_view.h"
#include "support/picture_check.h"

namespace fenlight::test {

using Bytes = std::vector<uint8_t>;

struct PngKind {
    LodePNGColorType type;
    unsigned depth;
    unsigned samples;
    int bitCount;  // of the bitmap that it becomes
};
extern const std::vector<PngKind> kPngKinds;  // all fifteen

// A picture as the samples that were drawn for it.
struct RandomPicture {
    PngKind kind;
    unsigned width, height;
    std::vector<uint16_t> samples;
    Bytes palette;  // red, green, blue of 2^depth entries

    RandomPicture(const PngKind &pictureKind, unsigned pictureWidth, unsigned pictureHeight,
                  std::mt19937 &random);
    // Encoded with one filter type per row; several rows of one type in a row are likely.
    Bytes Encode(bool isInterlaced, const Bytes &rowFilters) const;
    // What the bitmap's pixel must hold: an index, or blue, green, red, alpha from the low byte on.
    uint32_t Value(unsigned x, unsigned y) const;
    // Entry `index` of the bitmap's palette, 0x00RRGGBB.
    uint32_t PaletteColour(uint32_t index) const;
};
Bytes RandomFilters(unsigned height, std::mt19937 &random);

// Chunks; their CRCs are all wrong, as nobody looks at them.
Bytes Signature();
Bytes Chunk(const std::string &type, const Bytes &payload);
Bytes Header(uint32_t width, uint32_t height, uint8_t depth, uint8_t type, uint8_t interlace = 0);
Bytes Deflate(const Bytes &raw, int level = 9, int strategy = 0);
Bytes Join(const std::vector<Bytes> &parts);

// One run through all steps, with the stream in a block of exactly its size.
struct LoadResult {
    uint32_t error = 0;  // lastError behind the last step taken
    int stepsDone = 0;   // 3: there was a bitmap
    int bitCount = 0;
    Picture values;  // indices or colours
    Picture alphas;  // the fourth bytes
    std::vector<uint32_t> palette;
};
LoadResult LoadPng(const Bytes &stream);
// The same with another first step.
LoadResult LoadPngBy(const std::function<int32_t(PngContext *)> &load);
// A pixel as it stands in memory: an index, or blue, green, red, alpha from the low byte on.
uint32_t ReadValue(const uint8_t *row, int bitCount, int x);
// The pixels of a live bitmap, which is deleted.
void TakeBitmap(HBITMAP bitmap, LoadResult &result);
// The colours that the bitmap shows.
Picture Shown(const LoadResult &result);

}  // namespace fenlight::test
