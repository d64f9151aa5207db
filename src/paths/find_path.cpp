// SPDX-License-Identifier: Zlib
#include <cstdint>
#include <memory>

#include "fenlight/paths.h"
#include "fx/fx_buffer.h"
#include "paths/grid_map.h"
#include "paths/grid_walk.h"

namespace fenlight {
namespace {

constexpr int32_t kNoPath = 0;
constexpr int32_t kNoMemory = -1;
constexpr int32_t kThickensWalls = 1;

struct Position {
    int32_t x, y;  // pixels
};

struct BlockReleaser {
    void operator()(void *block) const noexcept { GlobalFree(block); }
};

// The memory of one search, in one block: exits, what the map is read with, visits.
class SearchMemory {
  public:
    explicit SearchMemory(const CellMap &map) noexcept
        : exitWords_(map.GridCells()),
          scratchWords_((MapScratchBytes(map) + 7) / 8),
          block_(GlobalAlloc(
              0, static_cast<size_t>((exitWords_ + scratchWords_) * 8 + map.GridCells() + kCellSlack))) {}

    explicit operator bool() const noexcept { return block_ != nullptr; }
    uint64_t *Exits() const noexcept { return static_cast<uint64_t *>(block_.get()); }
    uint64_t *Scratch() const noexcept { return Exits() + exitWords_; }
    uint8_t *Visits() const noexcept { return reinterpret_cast<uint8_t *>(Scratch() + scratchWords_); }

  private:
    const int64_t exitWords_;
    const int64_t scratchWords_;
    const std::unique_ptr<void, BlockReleaser> block_;
};

bool IsInside(const CellMap &map, Position position) {
    return position.x >= 0 && position.x < map.columns * map.cellSize && position.y >= 0 &&
           position.y < map.rows * map.cellSize;
}

int64_t CellAt(const CellMap &map, Position position) {
    return (position.y / map.cellSize + 1) * map.GridWidth() + position.x / map.cellSize + 1;
}

class PathWriter {
  public:
    explicit PathWriter(int16_t *path) noexcept : start_(path), next_(path) {}
    // The low words; what they cut off is the caller's concern.
    void Add(int64_t x, int64_t y) noexcept {
        *next_++ = static_cast<int16_t>(x);
        *next_++ = static_cast<int16_t>(y);
    }
    int32_t Bytes() const noexcept {
        return static_cast<int32_t>((next_ - start_) * static_cast<ptrdiff_t>(sizeof *start_));
    }

  private:
    int16_t *const start_;
    int16_t *next_;
};

int32_t SearchPath(int16_t *path, const CellMap &map, Position start, Position end, bool thickens) {
    const SearchMemory memory(map);
    if (!memory) return kNoMemory;
    FillGrid(map, thickens, memory.Visits(), memory.Scratch());
    const WalkGrid grid{memory.Visits(), memory.Exits(), map.GridWidth(), map.GridCells()};
    const FinishedWalk walk = WalkToCell(grid, CellAt(map, start), CellAt(map, end));
    if (walk.steps == 0) return kNoPath;

    PathWriter writer(path);
    writer.Add(start.x, start.y);
    for (ShortenedWalk kept(grid, walk, CellAt(map, end)); kept.HasMore();) {
        const int64_t cell = kept.NextCell();
        writer.Add((cell % grid.width - 1) * map.cellSize, (cell / grid.width - 1) * map.cellSize);
    }
    writer.Add(end.x, end.y);
    return writer.Bytes();
}

}  // namespace
}  // namespace fenlight

int32_t FindPath(int16_t *pathArray, uintptr_t fx, int32_t cellSize, int32_t startX, int32_t startY,
                 int32_t endX, int32_t endY, int32_t flags) noexcept {
    using namespace fenlight;
    if (pathArray == nullptr || fx == 0) return kNoPath;
    const CellMap map = MapOf(*FXFromHandle(fx), cellSize);
    const Position start{startX, startY}, end{endX, endY};
    if (!map.HasCells() || !IsInside(map, start) || !IsInside(map, end)) return kNoPath;
    return SearchPath(pathArray, map, start, end, (flags & kThickensWalls) != 0);
}
