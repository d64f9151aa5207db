// SPDX-License-Identifier: Zlib
#include "paths/grid_walk.h"

#include <algorithm>

namespace fenlight {
namespace {

// A neighbour as one number, so that the least of them is the one to take: from the top the count of visits,
// the turn (the last one examined has the lowest), and the cell. There are no branches to mispredict.
constexpr int kCountShift = 40;
constexpr int kTurnShift = 37;
constexpr uint64_t kCellMask = (uint64_t{1} << kTurnShift) - 1;
constexpr uint64_t kStayTurn = 4;

// An exit is the step that the cell was left with, and in the lowest bits its turn.
constexpr int kExitShift = 2;
constexpr uint64_t kExitTurn = 3;

class Walker {
  public:
    Walker(const WalkGrid &grid, int64_t start, int64_t end) noexcept
        : visits_(grid.visits), exits_(grid.exits), width_(grid.width), cell_(start), end_(end) {}

    // False where the walk ends.
    template <int kPhase>
    [[gnu::always_inline]] bool Step() noexcept {
        ++steps_;
        const uint8_t count = visits_[cell_];
        if (count >= kMostVisits) [[unlikely]]
            return false;
        const uint64_t early = std::min(Neighbour<kPhase, 0>(), Neighbour<kPhase, 1>());
        const uint64_t late = std::min(Neighbour<kPhase, 2>(), Neighbour<kPhase, 3>());
        const uint64_t stay = uint64_t{count} << kCountShift | kStayTurn << kTurnShift | Cell();
        const uint64_t chosen = std::min(std::min(early, late), stay);
        visits_[cell_] = static_cast<uint8_t>(count + 1);
        exits_[cell_] = steps_ << kExitShift | (chosen >> kTurnShift & kExitTurn);
        cell_ = static_cast<int64_t>(chosen & kCellMask);
        return cell_ != end_;
    }

    bool HasArrived() const noexcept { return cell_ == end_; }
    int64_t CellNow() const noexcept { return cell_; }
    int64_t Steps() const noexcept { return static_cast<int64_t>(steps_); }

  private:
    uint64_t Cell() const noexcept { return static_cast<uint64_t>(cell_); }

    template <int kDirection>
    int64_t Offset() const noexcept {
        if constexpr (kDirection == 0) return 1;
        if constexpr (kDirection == 1) return width_;
        if constexpr (kDirection == 2) return -1;
        return -width_;
    }

    // The directions are examined from `kPhase` on, going round.
    template <int kPhase, int kPlace>
    [[gnu::always_inline]] uint64_t Neighbour() const noexcept {
        const int64_t cell = cell_ + Offset<(kPhase + kPlace) % 4>();
        constexpr uint64_t kTurn = uint64_t{3 - kPlace} << kTurnShift;
        return (uint64_t{visits_[cell]} << kCountShift) + (static_cast<uint64_t>(cell) + kTurn);
    }

    uint8_t *const visits_;
    uint64_t *const exits_;
    const int64_t width_;
    int64_t cell_;
    const int64_t end_;
    uint64_t steps_ = 0;
};

}  // namespace

FinishedWalk WalkToCell(const WalkGrid &grid, int64_t start, int64_t end) noexcept {
    if (grid.visits[start] >= kMostVisits) return {};
    Walker walker(grid, start, end);
    bool goesOn = walker.Step<1>();
    const int64_t firstCell = walker.CellNow();
    while (goesOn) goesOn = walker.Step<2>() && walker.Step<3>() && walker.Step<0>() && walker.Step<1>();
    return {walker.HasArrived() ? walker.Steps() : 0, firstCell};
}

ShortenedWalk::ShortenedWalk(const WalkGrid &grid, const FinishedWalk &walk, int64_t end) noexcept
    : grid_(grid), steps_(walk.steps), cell_(walk.firstCell) {
    // As if the walker had left the end cell one step later: nobody stands anywhere later than there.
    grid_.visits[end] = 1;
    grid_.exits[end] = static_cast<uint64_t>(steps_ + 1) << kExitShift;
}

int64_t ShortenedWalk::NextCell() noexcept {
    // A cell is left in the step after its last entry, so the latest exit around is the latest entry too.
    uint64_t latest = 0;
    int64_t kept = cell_;
    for (const int64_t row : {cell_ - grid_.width, cell_, cell_ + grid_.width}) {
        for (int64_t cell = row - 1; cell <= row + 1; ++cell) {
            const bool wasLeft = static_cast<uint8_t>(grid_.visits[cell] - 1) < kMostVisits;
            if (!wasLeft || grid_.exits[cell] <= latest) continue;
            latest = grid_.exits[cell];
            kept = cell;
        }
    }
    const auto step = static_cast<int64_t>(latest >> kExitShift);
    const int64_t offsets[4] = {1, grid_.width, -1, -grid_.width};
    cell_ = kept + offsets[(step + 3 - static_cast<int64_t>(latest & kExitTurn)) & 3];
    time_ = step;
    return kept;
}

}  // namespace fenlight
