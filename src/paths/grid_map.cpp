// SPDX-License-Identifier: Zlib
#include "paths/grid_map.h"

#include <algorithm>
#include <cstring>

namespace fenlight {
namespace {

constexpr KernelVersions<MapKernels> kVersions{&kPlainMapKernels, nullptr, FENLIGHT_ON_X86(kAvx2MapKernels),
                                               FENLIGHT_ON_X86(kAvx512MapKernels)};

// Pixel rows that are read side by side: more would run out of what the processor fetches ahead.
constexpr int64_t kRowsAtOnce = 8;
// Bits that a word holds from any bit of its first byte on.
constexpr int64_t kBitsAtOnce = 57;

int64_t MarkWords(const CellMap &map) { return (map.columns * map.cellSize + 63) / 64; }

void MarkPixelsPlain(const uint8_t *row, int64_t pitch, int64_t rows, int64_t pixels,
                     uint64_t *marks) noexcept {
    for (; rows > 0; --rows, row -= pitch) {
        const uint8_t *pixel = row;
        for (int64_t p = 0; p < pixels; ++p, pixel += 3) {
            const bool isWhite = (pixel[0] & pixel[1] & pixel[2]) == 255;
            marks[p / 64] |= uint64_t{!isWhite} << (p % 64);
        }
    }
}

bool HasMark(const uint64_t *marks, int64_t first, int64_t count) {
    for (; count > 0; first += kBitsAtOnce, count -= kBitsAtOnce) {
        uint64_t bits;
        std::memcpy(&bits, reinterpret_cast<const uint8_t *>(marks) + first / 8, sizeof bits);
        const int64_t unused = 64 - std::min(count, kBitsAtOnce);
        if (bits >> (first % 8) << unused != 0) return true;
    }
    return false;
}

void WriteCellsPlain(const uint64_t *marks, int64_t cellSize, int64_t count, uint8_t *cells) noexcept {
    for (int64_t c = 0; c < count; ++c)
        cells[c] = HasMark(marks, c * cellSize, cellSize) ? kBlockedCell : uint8_t{0};
}

class MapReader {
  public:
    MapReader(const CellMap &map, uint64_t *marks) noexcept
        : map_(map), marks_(marks), kernels_(ChooseKernels(kVersions)) {}

    // One row of cells.
    void Read(int64_t row, uint8_t *cells) const {
        const auto markBytes = static_cast<size_t>(MarkWords(map_)) * sizeof *marks_;
        std::memset(marks_, 0, markBytes);
        const uint8_t *first = map_.end - (row * map_.cellSize + 1) * map_.pitch;
        for (int64_t done = 0; done < map_.cellSize; done += kRowsAtOnce) {
            const int64_t rows = std::min(kRowsAtOnce, map_.cellSize - done);
            kernels_.markPixels(first - done * map_.pitch, map_.pitch, rows, map_.columns * map_.cellSize,
                                marks_);
        }
        kernels_.writeCells(marks_, map_.cellSize, map_.columns, cells);
    }

  private:
    const CellMap &map_;
    uint64_t *marks_;
    const MapKernels &kernels_;
};

// Adds what a row of cells blocks in its own row of the grid and in those before and after it. `cells` has
// two zeros on each side. The row after it is written for the first time.
void SpreadRow(const uint8_t *cells, int64_t width, uint8_t *gridRow) {
    for (int64_t g = 0; g < width; ++g) {
        const auto blocked = static_cast<uint8_t>(cells[g - 2] | cells[g - 1] | cells[g]);
        gridRow[g - width] |= blocked;
        gridRow[g] |= blocked;
        gridRow[g + width] = blocked;
    }
}

void FillThickened(const CellMap &map, const MapReader &reader, uint8_t *grid, uint8_t *cells) {
    std::memset(grid, 0, static_cast<size_t>(2 * map.GridWidth()));
    cells[-2] = cells[-1] = 0;
    for (int64_t row = 0; row < map.rows; ++row) {
        reader.Read(row, cells);
        cells[map.columns] = cells[map.columns + 1] = 0;
        SpreadRow(cells, map.GridWidth(), grid + (row + 1) * map.GridWidth());
    }
}

void BlockRing(const CellMap &map, uint8_t *grid) {
    const int64_t width = map.GridWidth();
    std::memset(grid, kBlockedCell, static_cast<size_t>(width));
    for (int64_t row = 1; row <= map.rows; ++row)
        grid[row * width] = grid[row * width + width - 1] = kBlockedCell;
    std::memset(grid + (map.rows + 1) * width, kBlockedCell, static_cast<size_t>(width));
}

}  // namespace

const MapKernels kPlainMapKernels{MarkPixelsPlain, WriteCellsPlain};

CellMap MapOf(const FXHeader &fx, int32_t cellSize) noexcept {
    if (cellSize < 1 || fx.biWidth < cellSize || fx.biHeight < cellSize || fx.Pixels == nullptr) return {};
    const CellMap map{fx.Pixels + fx.biSizeImage, int64_t{3} * fx.biWidth, cellSize, fx.biWidth / cellSize,
                      fx.biHeight / cellSize};
    const bool isWhole = map.rows * cellSize <= fx.biSizeImage / map.pitch;
    return isWhole ? map : CellMap{};
}

int64_t MapScratchBytes(const CellMap &map) noexcept {
    // The word behind the marks that kernels may read, two zeros, the cells of a row and two zeros.
    return (MarkWords(map) + 1) * 8 + 2 + map.columns + 2 + kCellSlack;
}

void FillGrid(const CellMap &map, bool thickens, uint8_t *grid, uint64_t *scratch) noexcept {
    scratch[MarkWords(map)] = 0;
    const MapReader reader(map, scratch);
    if (thickens) {
        FillThickened(map, reader, grid, reinterpret_cast<uint8_t *>(scratch + MarkWords(map) + 1) + 2);
    } else {
        // What a row writes behind its end is the start of the next row, which comes later.
        for (int64_t row = 0; row < map.rows; ++row) reader.Read(row, grid + (row + 1) * map.GridWidth() + 1);
    }
    BlockRing(map, grid);
}

}  // namespace fenlight
