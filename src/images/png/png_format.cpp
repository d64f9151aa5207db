// SPDX-License-Identifier: Zlib
#include "images/png/png_format.h"

namespace fenlight {

namespace {

using enum PixelLayout;
using enum RowConversion;

constexpr PngFormat kFormats[] = {
    // type, depth, samples, bits, ramp
    {0, 1, 1, 1, 2, Bytes1, Copy},
    {0, 2, 1, 4, 4, Bytes1, WidenTwoBits},
    {0, 4, 1, 4, 16, Bytes1, Copy},
    {0, 8, 1, 8, 256, Bytes1, Copy},
    {0, 16, 1, 8, 256, Bytes2, SecondByteDrops},
    {2, 8, 3, 24, 0, SwappedRgb, Copy},
    {2, 16, 3, 24, 0, Bytes6, HighBytesRgb},
    {kPaletteColour, 1, 1, 1, 0, Bytes1, Copy},
    {kPaletteColour, 2, 1, 4, 0, Bytes1, WidenTwoBits},
    {kPaletteColour, 4, 1, 4, 0, Bytes1, Copy},
    {kPaletteColour, 8, 1, 8, 0, Bytes1, Copy},
    {4, 8, 2, 8, 256, Bytes2, SecondByteDrops},
    {4, 16, 2, 8, 256, Bytes4, ThreeBytesDrop},
    {6, 8, 4, 32, 0, SwappedRgba, Copy},
    {6, 16, 4, 32, 0, Bytes8, HighBytesRgba},
};

struct PassGrid {
    uint8_t firstColumn, firstRow, columnStep, rowStep;
};

constexpr PassGrid kGrids[kPasses] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                      {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};

constexpr uint32_t CountSteps(uint32_t size, uint32_t first, uint32_t step) {
    return size > first ? (size - first - 1) / step + 1 : 0;
}

uint64_t PassBytes(const PngPass &pass, const PngFormat &format) {
    if (pass.width == 0) return 0;
    return uint64_t{pass.height} * (RowBytes(format, pass.width) + 1);
}

}  // namespace

const PngFormat *FindPngFormat(uint8_t colourType, uint8_t bitDepth) noexcept {
    for (const PngFormat &format : kFormats) {
        if (format.colourType == colourType && format.bitDepth == bitDepth) return &format;
    }
    return nullptr;
}

PngPass WholePicture(const PngContext &context) noexcept {
    return {0, 0, 1, 1, context.width, context.height};
}

PngPass InterlacePass(const PngContext &context, int pass) noexcept {
    const PassGrid &grid = kGrids[pass];
    return {grid.firstColumn,
            grid.firstRow,
            grid.columnStep,
            grid.rowStep,
            CountSteps(context.width, grid.firstColumn, grid.columnStep),
            CountSteps(context.height, grid.firstRow, grid.rowStep)};
}

uint64_t RawDataSize(const PngContext &context, const PngFormat &format) noexcept {
    if (context.interlace == 0) return PassBytes(WholePicture(context), format);
    uint64_t bytes = 0;
    for (int pass = 0; pass < kPasses; ++pass) bytes += PassBytes(InterlacePass(context, pass), format);
    return bytes;
}

}  // namespace fenlight
