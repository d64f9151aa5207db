// SPDX-License-Identifier: Zlib
#include "images/png/png_scatter.h"

namespace fenlight {

namespace {

template <uint32_t sourceBits, uint32_t targetBits>
void ScatterBits(uint8_t *target, const uint8_t *row, const RowColumns &columns) {
    constexpr uint32_t sourcePerByte = 8 / sourceBits;
    constexpr uint32_t targetPerByte = 8 / targetBits;
    uint32_t x = columns.first;
    for (uint32_t i = 0; i < columns.count; ++i, x += columns.step) {
        const uint32_t sourceShift = 8 - sourceBits - i % sourcePerByte * sourceBits;
        const uint32_t value = row[i / sourcePerByte] >> sourceShift & ((1u << sourceBits) - 1);
        const uint32_t targetShift = 8 - targetBits - x % targetPerByte * targetBits;
        target[x / targetPerByte] = static_cast<uint8_t>(target[x / targetPerByte] | value << targetShift);
    }
}

// Each pixel of `sourceBytes` gives the bytes at these positions.
template <size_t sourceBytes, size_t... positions>
void ScatterBytes(uint8_t *target, const uint8_t *row, const RowColumns &columns) {
    constexpr size_t targetBytes = sizeof...(positions);
    uint8_t *pixel = target + columns.first * targetBytes;
    const size_t stride = columns.step * targetBytes;
    for (uint32_t i = 0; i < columns.count; ++i, pixel += stride, row += sourceBytes) {
        size_t k = 0;
        ((pixel[k++] = row[positions]), ...);
    }
}

ScatterRow CopyingScatter(uint8_t bitCount) {
    switch (bitCount) {
        case 1:
            return ScatterBits<1, 1>;
        case 4:
            return ScatterBits<4, 4>;
        case 8:
            return ScatterBytes<1, 0>;
        case 24:
            return ScatterBytes<3, 0, 1, 2>;
        default:
            return ScatterBytes<4, 0, 1, 2, 3>;
    }
}

}  // namespace

ScatterRow ScatterFor(const PngFormat &format) noexcept {
    switch (format.conversion) {
        case RowConversion::WidenTwoBits:
            return ScatterBits<2, 4>;
        case RowConversion::SecondByteDrops:
            return ScatterBytes<2, 0>;
        case RowConversion::ThreeBytesDrop:
            return ScatterBytes<4, 0>;
        case RowConversion::HighBytesRgb:
            return ScatterBytes<6, 4, 2, 0>;
        case RowConversion::HighBytesRgba:
            return ScatterBytes<8, 4, 2, 0, 6>;
        default:
            return CopyingScatter(format.bitCount);
    }
}

}  // namespace fenlight
