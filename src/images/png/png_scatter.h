// SPDX-License-Identifier: Zlib
// Converts one unfiltered row and puts its pixels at every n-th column of a bitmap's row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "images/png/png_format.h"

namespace fenlight {

struct RowColumns {
    uint32_t first, step;
    uint32_t count;  // pixels of `row`
};

// Pixels of less than a byte are OR-ed in, all others overwrite; other columns stay as they are.
using ScatterRow = void (*)(uint8_t *target, const uint8_t *row, const RowColumns &columns);

ScatterRow ScatterFor(const PngFormat &format) noexcept;

}  // namespace fenlight
