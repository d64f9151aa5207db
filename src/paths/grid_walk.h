// SPDX-License-Identifier: Zlib
// The walk through a grid of visit counts, and the cells of it that make a path.
//
// The walker leaves a cell for the neighbour that was left least often; which of several is taken turns with
// the steps. It keeps no list of where it has been. Shortening asks only when a cell was entered for the last
// time and where the walker went from there, and each cell's last exit tells both. The memory belongs to the
// caller; nothing here keeps state.
#pragma once

#include <cstdint>

namespace fenlight {

struct WalkGrid {
    // Rows of `width` bytes within a ring of blocked cells: how often the walker has left a cell (0 to 32),
    // or kBlockedCell.
    uint8_t *visits;
    // A word for each cell, of any content. Those of cells that were left are written.
    uint64_t *exits;
    int64_t width;
    int64_t cells;  // ring included
};

// A walker that has left one cell so often gives up there.
inline constexpr uint8_t kMostVisits = 32;
// What stays in the counts of the cells around an end that no way leads to.
inline constexpr uint8_t kCutOffCell = 128;

struct FinishedWalk {
    int64_t steps;      // 0: it gave up
    int64_t firstCell;  // where the first step led
};

// Both are indices of cells inside the ring. Counts and exits are changed.
FinishedWalk WalkToCell(const WalkGrid &grid, int64_t start, int64_t end) noexcept;

// The cells of a finished walk that are left when every loop and every corner between neighbours is cut, from
// the first to the end cell. It is a path on the grid, not the shortest one.
class ShortenedWalk {
  public:
    // Marks the end cell as left, so each walk can be shortened once.
    ShortenedWalk(const WalkGrid &grid, const FinishedWalk &walk, int64_t end) noexcept;

    bool HasMore() const noexcept { return time_ <= steps_; }
    int64_t NextCell() noexcept;

  private:
    const WalkGrid grid_;
    const int64_t steps_;
    int64_t time_ = 1;
    int64_t cell_;  // where the walker stood after step time_
};

}  // namespace fenlight
