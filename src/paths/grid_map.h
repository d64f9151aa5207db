// SPDX-License-Identifier: Zlib
// From the pixels of a map to the grid that a walk counts its visits in.
//
// A cell is a square of pixels, and it is free only if all of them are pure white. A map's first row of cells
// is made of the last rows of the pixel block, and so on backwards; what is left over at the right and at the
// start of the block is never read. Nothing here owns memory or keeps state.
#pragma once

#include <array>
#include <cstdint>

#include "fenlight/fx_buffer.h"
#include "frame/vector_level.h"

namespace fenlight {

inline constexpr uint8_t kBlockedCell = 255;

struct CellMap {
    const uint8_t *end;  // behind the last pixel row
    int64_t pitch;       // bytes from a pixel row to the next
    int64_t cellSize;    // pixels
    int64_t columns;
    int64_t rows;

    bool HasCells() const { return columns > 0 && rows > 0; }
    int64_t GridWidth() const { return columns + 2; }
    // With the ring of blocked cells around the map.
    int64_t GridCells() const { return GridWidth() * (rows + 2); }
};

// Without any cell for a size below 1 or beyond the picture's, and for a header whose block is too short for
// its sizes.
CellMap MapOf(const FXHeader &fx, int32_t cellSize) noexcept;

// Bytes that kernels may write behind a run of cells.
inline constexpr int64_t kCellSlack = 64;

// Bytes for FillGrid to work in, at a multiple of 8.
int64_t MapScratchBytes(const CellMap &map) noexcept;
// Writes all GridCells() bytes of `grid`: 0 for a free cell, kBlockedCell for a blocked one and for the ring.
// With `thickens` the eight neighbours of a blocked cell are blocked as well. kCellSlack bytes behind the
// grid are overwritten.
void FillGrid(const CellMap &map, bool thickens, uint8_t *grid, uint64_t *scratch) noexcept;

struct MapKernels {
    // Sets bit p of `marks` if pixel p is not white in one of `rows` rows, each `pitch` bytes before the
    // last; other bits stay.
    void (*markPixels)(const uint8_t *row, int64_t pitch, int64_t rows, int64_t pixels,
                       uint64_t *marks) noexcept;
    // cells[c] = kBlockedCell if one of the `cellSize` bits from c * cellSize on is set, else 0. May read the
    // word behind the marks and write kCellSlack bytes behind the cells.
    void (*writeCells)(const uint64_t *marks, int64_t cellSize, int64_t count, uint8_t *cells) noexcept;
};

extern const MapKernels kPlainMapKernels;
extern const MapKernels kAvx2MapKernels;
extern const MapKernels kAvx512MapKernels;

}  // namespace fenlight
