// SPDX-License-Identifier: Zlib
// Picture files as bytes: BMP written by hand, the samples of tests/data read, and what they show.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "support/picture_check.h"

namespace fenlight::test {

using Bytes = std::vector<uint8_t>;

inline Bytes ReadSample(const std::string &name) {
    std::ifstream file(std::string(FENLIGHT_TEST_DATA) + "/" + name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

// What all samples show; tests/data/README.md.
inline Picture SamplePicture(uint32_t yellow = 0xF0DC3C) {
    const uint32_t colours[] = {0xC81E28, 0x1EB43C, 0x2846DC, yellow};
    Picture picture(7, 5);
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 7; ++x) picture.At(x, y) = colours[(3 * x + 5 * y + x * y) % 4];
    }
    return picture;
}

struct BmpLayout {
    uint16_t bitCount = 24;
    uint32_t compression = 0;  // 1 RLE8, 2 RLE4, 3 masks (16 bits: 5-6-5)
    bool hasCoreHeader = false;
    bool isTopDown = false;
    uint32_t pelsPerMetreX = 0;
    uint32_t pelsPerMetreY = 0;
};

// Every palette entry is exact in 16 bits with 5, 6 and 5 bits too.
inline constexpr uint32_t kBmpColours[] = {0xFF0000, 0x00FF84, 0x8400FF, 0x840000, 0xFFFFFF};

inline int BmpColourIndex(int x, int y, int bitCount) { return (x * x + 2 * y) % (bitCount == 1 ? 2 : 5); }

inline Picture BmpPicture(int width, int height, int bitCount) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) picture.At(x, y) = kBmpColours[BmpColourIndex(x, y, bitCount)];
    }
    return picture;
}

inline void Put(Bytes &bytes, uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

inline Bytes BmpHeaders(int width, int height, const BmpLayout &layout) {
    const bool isCore = layout.hasCoreHeader;
    const uint32_t paletteCount = layout.bitCount <= 8 ? 1u << layout.bitCount : 0;
    const uint32_t maskBytes = layout.compression == 3 ? 12 : 0;
    const uint32_t headersSize = 14 + (isCore ? 12 : 40) + maskBytes;
    Bytes bytes;
    Put(bytes, 0x4D42, 2);
    Put(bytes, 0, 4);
    Put(bytes, 0, 4);
    Put(bytes, headersSize + paletteCount * (isCore ? 3 : 4), 4);
    Put(bytes, isCore ? 12 : 40, 4);
    Put(bytes, static_cast<uint32_t>(width), isCore ? 2 : 4);
    Put(bytes, static_cast<uint32_t>(layout.isTopDown ? -height : height), isCore ? 2 : 4);
    Put(bytes, 1, 2);
    Put(bytes, layout.bitCount, 2);
    if (!isCore) {
        for (const uint32_t field :
             {layout.compression, 0u, layout.pelsPerMetreX, layout.pelsPerMetreY, 0u, 0u}) {
            Put(bytes, field, 4);
        }
    }
    if (maskBytes != 0) {
        const bool isHigh = layout.bitCount == 16;
        for (const uint32_t mask :
             {isHigh ? 0xF800u : 0xFF0000u, isHigh ? 0x7E0u : 0xFF00u, isHigh ? 0x1Fu : 0xFFu}) {
            Put(bytes, mask, 4);
        }
    }
    for (uint32_t i = 0; i < paletteCount; ++i) Put(bytes, i < 5 ? kBmpColours[i] : 0x123456, isCore ? 3 : 4);
    return bytes;
}

inline void PutBmpRow(Bytes &bytes, int width, int y, const BmpLayout &layout) {
    const size_t start = bytes.size();
    uint32_t bits = 0;
    for (int x = 0; x < width; ++x) {
        const int index = BmpColourIndex(x, y, layout.bitCount);
        const uint32_t colour = kBmpColours[index];
        const uint32_t red = colour >> 19, green = colour >> 8 & 0xFF, blue = colour >> 3 & 0x1F;
        if (layout.bitCount == 16) {
            const bool isSixGreen = layout.compression == 3;
            Put(bytes, isSixGreen ? red << 11 | green >> 2 << 5 | blue : red << 10 | green >> 3 << 5 | blue,
                2);
        } else if (layout.bitCount > 16) {
            Put(bytes, colour, layout.bitCount / 8);
        } else {
            const int place = x * layout.bitCount % 8;
            bits |= static_cast<uint32_t>(index) << (8 - layout.bitCount - place);
            if (place + layout.bitCount == 8 || x == width - 1) Put(bytes, std::exchange(bits, 0), 1);
        }
    }
    while ((bytes.size() - start) % 4 != 0) bytes.push_back(0);
}

// Four pixels as they are, then runs of one pixel, then the end of the line. Rows of 4 pixels at least.
inline void PutRunLengthRow(Bytes &bytes, int width, int y, bool isRle4) {
    const auto index = [&](int x) { return static_cast<uint32_t>(BmpColourIndex(x, y, 8)); };
    Put(bytes, 0x0400, 2);
    for (int x = 0; x < 4; x += isRle4 ? 2 : 1)
        Put(bytes, isRle4 ? index(x) << 4 | index(x + 1) : index(x), 1);
    for (int x = 4; x < width; ++x) Put(bytes, 1 | (isRle4 ? index(x) << 4 : index(x)) << 8, 2);
    Put(bytes, 0, 2);
}

inline Bytes MakeBmp(int width, int height, const BmpLayout &layout = {}) {
    Bytes bytes = BmpHeaders(width, height, layout);
    const bool isRunLength = layout.compression == 1 || layout.compression == 2;
    for (int row = 0; row < height; ++row) {
        const int y = layout.isTopDown ? row : height - 1 - row;
        if (isRunLength) {
            PutRunLengthRow(bytes, width, y, layout.compression == 2);
        } else {
            PutBmpRow(bytes, width, y, layout);
        }
    }
    if (isRunLength) Put(bytes, 0x0100, 2);  // end of the bitmap
    return bytes;
}

}  // namespace fenlight::test
