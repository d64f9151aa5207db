// SPDX-License-Identifier: Zlib
// From inflated data to the rows of a bitmap: filters undone, samples converted, passes scattered.
#pragma once

#include <cstddef>
#include <cstdint>

#include "images/png/png_filters.h"
#include "images/png/png_format.h"

namespace fenlight {

// The bits of a top-down bitmap; nothing else may use them meanwhile.
struct BitmapRows {
    uint8_t *bits;
    size_t pitch;

    uint8_t *Row(uint32_t y) const { return bits + y * pitch; }
};

enum class RowsResult : uint8_t { Done, BadFilter, NoMemory };

// Writes the whole picture of a decoded context, padding of the rows aside. Allocates two rows, no more.
// After a failure the target holds part of the picture.
RowsResult StoreRows(const PngContext &context, const PngFormat &format, const BitmapRows &target,
                     const FilterKernels &filters = BestFilterKernels()) noexcept;

}  // namespace fenlight
