// SPDX-License-Identifier: Zlib
#include "paths/grid_walk.h"

#include <initializer_list>

namespace fenlight {
namespace {

// An exit is the step that the cell was left with, and in the lowest bits the turn of the neighbour that the
// walker went to: 3 for the first one examined, 0 for the last.
constexpr int kExitShift = 2;
constexpr uint64_t kExitTurn = 3;

struct Neighbour {
    uint32_t visits;
    uint32_t turn;
    int64_t cell;
};

// `best` becomes `other` where that was left no more often. Which one it is can't be predicted, and a branch
// that is wrong every other time would cost more than the whole step; compilers tend to make one.
[[gnu::always_inline]] inline void TakeLessVisited(Neighbour &best, const Neighbour &other) noexcept {
#if defined(__x86_64__)
    asm("cmp %[visits], %[otherVisits]\n\t"
        "cmovbe %[otherVisits], %[visits]\n\t"
        "cmovbe %[otherCell], %[cell]\n\t"
        "cmovbe %[otherTurn], %[turn]"
        : [visits] "+&r"(best.visits), [cell] "+&r"(best.cell), [turn] "+&r"(best.turn)
        : [otherVisits] "r"(other.visits), [otherCell] "r"(other.cell), [otherTurn] "r"(other.turn)
        : "cc");
#else
    if (other.visits <= best.visits) best = other;
#endif
}

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
        Neighbour best = At<kPhase, 0>(), late = At<kPhase, 2>();
        TakeLessVisited(best, At<kPhase, 1>());
        TakeLessVisited(late, At<kPhase, 3>());
        TakeLessVisited(best, late);
        // The walker stays where all were left more often; `turn` means nothing then, and the cell is left
        // once more before anybody asks for it.
        Neighbour here{count, 0, cell_};
        visits_[cell_] = static_cast<uint8_t>(count + 1);
        exits_[cell_] = steps_ << kExitShift | best.turn;
        TakeLessVisited(here, best);
        cell_ = here.cell;
        return cell_ != end_;
    }

    bool HasArrived() const noexcept { return cell_ == end_; }
    int64_t CellNow() const noexcept { return cell_; }
    int64_t Steps() const noexcept { return static_cast<int64_t>(steps_); }

  private:
    template <int kDirection>
    int64_t Offset() const noexcept {
        if constexpr (kDirection == 0) return 1;
        if constexpr (kDirection == 1) return width_;
        if constexpr (kDirection == 2) return -1;
        return -width_;
    }

    // The directions are examined from `kPhase` on, going round.
    template <int kPhase, int kPlace>
    [[gnu::always_inline]] Neighbour At() const noexcept {
        const int64_t cell = cell_ + Offset<(kPhase + kPlace) % 4>();
        return {visits_[cell], 3 - kPlace, cell};
    }

    uint8_t *const visits_;
    uint64_t *const exits_;
    const int64_t width_;
    int64_t cell_;
    const int64_t end_;
    uint64_t steps_ = 0;
};

// Whether a walk that is under way can come to an end that it never left. The search spreads from the end
// over cells that were never left, whose exits have no use yet: each holds the next cell of the queue. It
// ends where it meets the walk.
class ReachSearch {
  public:
    ReachSearch(const WalkGrid &grid, int64_t end) noexcept : grid_(grid), first_(end), last_(end) {
        grid_.visits[end] = kCutOffCell;
    }

    // Counts are as they were if it is so.
    bool IsReached() noexcept {
        for (int64_t cell = first_;; cell = Next(cell)) {
            for (const int64_t offset : {int64_t{1}, grid_.width, int64_t{-1}, -grid_.width})
                if (MeetsWalk(cell + offset)) return TakeMarksBack();
            if (cell == last_) return false;
        }
    }

  private:
    int64_t Next(int64_t cell) const noexcept { return static_cast<int64_t>(grid_.exits[cell]); }

    bool MeetsWalk(int64_t cell) noexcept {
        const uint8_t count = grid_.visits[cell];
        if (count > 0 && count <= kMostVisits) return true;
        if (count == 0) {
            grid_.visits[cell] = kCutOffCell;
            grid_.exits[last_] = static_cast<uint64_t>(cell);
            last_ = cell;
        }
        return false;
    }

    bool TakeMarksBack() noexcept {
        for (int64_t cell = first_; cell != last_; cell = Next(cell)) grid_.visits[cell] = 0;
        grid_.visits[last_] = 0;
        return true;
    }

    const WalkGrid grid_;
    const int64_t first_;
    int64_t last_;
};

}  // namespace

FinishedWalk WalkToCell(const WalkGrid &grid, int64_t start, int64_t end) noexcept {
    // A blocked end can't be entered; the walk would be a long one for nothing.
    if (grid.visits[start] >= kMostVisits || grid.visits[end] >= kMostVisits) return {};
    Walker walker(grid, start, end);
    bool goesOn = walker.Step<1>();
    const int64_t firstCell = walker.CellNow();
    const auto fourSteps = [&] {
        return walker.Step<2>() && walker.Step<3>() && walker.Step<0>() && walker.Step<1>();
    };
    // Without a way the walk would take up to 32 steps a cell to give up; after one a cell it is worth a
    // look.
    while (goesOn && walker.Steps() < grid.cells) goesOn = fourSteps();
    const bool isNewCell = grid.visits[end] == 0;  // else the walk began there
    if (goesOn && isNewCell && !ReachSearch(grid, end).IsReached()) return {};
    while (goesOn) goesOn = fourSteps();
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
