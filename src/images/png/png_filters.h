// SPDX-License-Identifier: Zlib
// Undoing the five PNG filters, one kernel per filter and pixel layout, each in a version for every machine
// and one for SSE4. Pure functions on rows; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace fenlight {

// Bytes from a sample to the same sample of the next pixel. Swapped: red and blue of the result change places
// on the way. As a filter never mixes channels, a swapped row serves as the previous row of the next.
enum class PixelLayout : uint8_t { Bytes1, Bytes2, Bytes4, Bytes6, Bytes8, SwappedRgb, SwappedRgba };
constexpr int kPixelLayouts = 7;

enum class PngFilter : uint8_t { None, Sub, Up, Average, Paeth };
constexpr int kFilterTypes = 5;

// `filtered` is the row behind its filter byte, `previous` the unfiltered row above; `row` overlaps neither.
// `rowBytes` is a multiple of the layout's bytes, and exactly so many are read and written.
using UnfilterRow = void (*)(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes);

// Rows under one another that all have the Paeth filter. Its chain from pixel to pixel is so long that a
// processor can work on several rows at once, each a little behind the one above.
struct PaethRows {
    uint8_t *row;  // the uppermost
    size_t pitch;
    const uint8_t *previous;
    const uint8_t *filtered;  // of the uppermost; the others follow, each behind its filter byte
    size_t rowBytes;
};
using UnfilterPaethRows = void (*)(const PaethRows &rows);

struct LayoutKernels {
    std::array<UnfilterRow, kFilterTypes> rows;  // in the order of the filter byte
    UnfilterPaethRows twoPaeth;                  // both null where row by row is as fast
    UnfilterPaethRows fourPaeth;
};

struct FilterKernels {
    const char *name;
    std::array<LayoutKernels, kPixelLayouts> layouts;
};

extern const FilterKernels kPlainFilters;
extern const FilterKernels kSse4Filters;  // x86 only

// What this processor can run, the best last.
std::span<const FilterKernels *const> UsableFilterKernels() noexcept;
const FilterKernels &BestFilterKernels() noexcept;

}  // namespace fenlight
