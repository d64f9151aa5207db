// SPDX-License-Identifier: Zlib
// Picture files as bytes: BMP written by hand, the samples of tests/data read, and what they show.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
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

class BmpWriter {
  public:
    BmpWriter(int width, int height, const BmpLayout &layout)
        : width_(width), height_(height), layout_(layout) {}

    Bytes Write() {
        WriteHeaders();
        for (int row = 0; row < height_; ++row) {
            const int y = layout_.isTopDown ? row : height_ - 1 - row;
            if (layout_.compression == 1 || layout_.compression == 2) {
                WriteRunLengthRow(y);
            } else {
                WriteRow(y);
            }
        }
        if (layout_.compression == 1 || layout_.compression == 2) Put16(0x0100);  // end of bitmap
        const auto size = static_cast<uint32_t>(bytes_.size());
        for (unsigned i = 0; i < 4; ++i) bytes_[2 + i] = static_cast<uint8_t>(size >> (8 * i));
        return bytes_;
    }

  private:
    void Put8(uint32_t value) { bytes_.push_back(static_cast<uint8_t>(value)); }
    void Put16(uint32_t value) { Put8(value), Put8(value >> 8); }
    void Put32(uint32_t value) { Put16(value), Put16(value >> 16); }
    int Index(int x, int y) const { return BmpColourIndex(x, y, layout_.bitCount); }

    void WriteHeaders() {
        const uint32_t headerSize = layout_.hasCoreHeader ? 12 : 40;
        const uint32_t paletteCount = layout_.bitCount <= 8 ? 1u << layout_.bitCount : 0;
        const uint32_t maskBytes = layout_.compression == 3 ? 12 : 0;
        Put16(0x4D42);
        Put32(0), Put32(0);
        Put32(14 + headerSize + maskBytes + paletteCount * (layout_.hasCoreHeader ? 3 : 4));
        Put32(headerSize);
        if (layout_.hasCoreHeader) {
            Put16(static_cast<uint32_t>(width_)), Put16(static_cast<uint32_t>(height_));
        } else {
            Put32(static_cast<uint32_t>(width_));
            Put32(static_cast<uint32_t>(layout_.isTopDown ? -height_ : height_));
        }
        Put16(1), Put16(layout_.bitCount);
        if (!layout_.hasCoreHeader) {
            Put32(layout_.compression), Put32(0);
            Put32(layout_.pelsPerMetreX), Put32(layout_.pelsPerMetreY);
            Put32(0), Put32(0);
        }
        if (maskBytes != 0) {
            const bool isHigh = layout_.bitCount == 16;
            Put32(isHigh ? 0xF800 : 0xFF0000), Put32(isHigh ? 0x07E0 : 0x00FF00);
            Put32(isHigh ? 0x001F : 0x0000FF);
        }
        for (uint32_t i = 0; i < paletteCount; ++i) {
            const uint32_t colour = i < 5 ? kBmpColours[i] : 0x123456;
            Put16(colour), Put8(colour >> 16);
            if (!layout_.hasCoreHeader) Put8(0);
        }
    }

    void WriteRow(int y) {
        const size_t start = bytes_.size();
        uint32_t bits = 0;
        int bitsHeld = 0;
        for (int x = 0; x < width_; ++x) {
            const uint32_t colour = kBmpColours[Index(x, y)];
            const uint32_t red = colour >> 16, green = colour >> 8 & 0xFF, blue = colour & 0xFF;
            switch (layout_.bitCount) {
                case 16:
                    Put16(layout_.compression == 3 ? red >> 3 << 11 | green >> 2 << 5 | blue >> 3
                                                   : red >> 3 << 10 | green >> 3 << 5 | blue >> 3);
                    break;
                case 24:
                    Put16(colour), Put8(red);
                    break;
                case 32:
                    Put32(colour);
                    break;
                default:
                    bits = bits << layout_.bitCount | static_cast<uint32_t>(Index(x, y));
                    bitsHeld += layout_.bitCount;
                    if (bitsHeld == 8) Put8(bits), bits = 0, bitsHeld = 0;
            }
        }
        if (bitsHeld > 0) Put8(bits << (8 - bitsHeld));
        while ((bytes_.size() - start) % 4 != 0) Put8(0);
    }

    // Four pixels as they are, then runs of one pixel, then the end of the line. Rows of 4 pixels at least.
    void WriteRunLengthRow(int y) {
        Put16(0x0400);
        for (int x = 0; x < 4; x += layout_.compression == 2 ? 2 : 1) {
            Put8(static_cast<uint32_t>(layout_.compression == 2 ? Index(x, y) << 4 | Index(x + 1, y)
                                                                : Index(x, y)));
        }
        for (int x = 4; x < width_; ++x) {
            Put8(1), Put8(static_cast<uint32_t>(layout_.compression == 2 ? Index(x, y) << 4 : Index(x, y)));
        }
        Put16(0);
    }

    int width_, height_;
    BmpLayout layout_;
    Bytes bytes_;
};

inline Bytes MakeBmp(int width, int height, const BmpLayout &layout = {}) {
    return BmpWriter(width, height, layout).Write();
}

}  // namespace fenlight::test
