// SPDX-License-Identifier: Zlib
// What the fifteen kinds of PNG picture become, and the geometry of their rows. Pure functions and constant
// tables; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "images/png/png_decoder.h"
#include "images/png/png_filters.h"

namespace fenlight {

// How an unfiltered row becomes a row of the bitmap. Red and blue of 8-bit samples have changed places
// already: the filters do that on the way.
enum class RowConversion : uint8_t {
    Copy,
    WidenTwoBits,     // each 2-bit sample to a 4-bit value, same number
    SecondByteDrops,  // one byte of two: grey with alpha, 16-bit grey
    ThreeBytesDrop,   // one byte of four: 16-bit grey with alpha
    HighBytesRgb,     // 16-bit red, green, blue to blue, green, red
    HighBytesRgba,
};

struct PngFormat {
    uint8_t colourType;
    uint8_t bitDepth;
    uint8_t samples;
    uint8_t bitCount;   // of the bitmap
    uint16_t rampSize;  // entries of its grey ramp, 0: none
    PixelLayout layout;
    RowConversion conversion;
};

constexpr uint8_t kPaletteColour = 3;
constexpr uint64_t kMaxPixels = uint64_t{1} << 28;  // keeps all byte counts of a picture below 2^32

// Null for a combination that the standard does not allow.
const PngFormat *FindPngFormat(uint8_t colourType, uint8_t bitDepth) noexcept;

// The rows that come one after another in the data: the whole picture, or one of the seven passes.
struct PngPass {
    uint32_t firstColumn, firstRow, columnStep, rowStep;
    uint32_t width, height;  // in pixels of this pass; a pass with either 0 has no rows in the data
};

constexpr int kPasses = 7;
PngPass WholePicture(const PngContext &context) noexcept;
PngPass InterlacePass(const PngContext &context, int pass) noexcept;

constexpr size_t RowBytes(const PngFormat &format, uint32_t width) {
    return static_cast<size_t>((uint64_t{width} * format.samples * format.bitDepth + 7) / 8);
}

// Bytes from one row of the bitmap to the next.
constexpr size_t BitmapPitch(const PngFormat &format, uint32_t width) {
    return static_cast<size_t>((uint64_t{width} * format.bitCount + 31) / 32 * 4);
}

// Bytes of all rows and their filter bytes.
uint64_t RawDataSize(const PngContext &context, const PngFormat &format) noexcept;

}  // namespace fenlight
