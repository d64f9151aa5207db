// SPDX-License-Identifier: Zlib
// What of a transfer happens at all. Pure arithmetic in 64 bits on the callers' numbers, nothing is owned.
#pragma once

#include <cstdint>

#include "platform/raster/pixel_view.h"
#include "platform/raster/raster.h"

namespace fenlight::platform {

// The part of the block that lies inside the target and, if there is a source, inside the source. A width or
// height of 0 means that nothing is left.
Block ClipBlock(const PixelView &target, const PixelView *source, const Block &block) noexcept;

// One dimension of a scaled transfer. Both rectangles are walked from their start in the direction of their
// sign, the start itself included: step i of the target takes step floor(i * source / target) of the source.
// A negative size of -n therefore covers start - n + 1 to start.
class ScaledAxis {
  public:
    ScaledAxis(int32_t targetStart, int32_t targetSize, int32_t sourceStart, int32_t sourceSize,
               int32_t targetLimit, int32_t sourceLimit) noexcept;

    // The visible target positions are First() to First() + Count() - 1; clipping doesn't move samples.
    int32_t First() const { return first_; }
    int32_t Count() const { return count_; }
    int32_t SourceAt(int32_t target) const;

    // Goes along the target from left to right without a division per step.
    class Walk {
      public:
        Walk(const ScaledAxis &axis, int32_t target) noexcept;
        int32_t Source() const { return static_cast<int32_t>(position_); }
        void Step() {
            const int64_t remainder = remainder_ + rest_;
            const int64_t below = remainder - size_;
            remainder_ = below >= 0 ? below : remainder;
            position_ += below >= 0 ? wholeStep_ + carryStep_ : wholeStep_;
        }

        bool HasEqualSteps() const { return rest_ == 0; }
        int32_t WholeStep() const { return static_cast<int32_t>(wholeStep_); }

      private:
        int64_t position_;
        // Of the target's step times the source's size, by the target's size; where the target is walked
        // against its sign, what is missing of the greatest remainder, which rises likewise.
        int64_t remainder_;
        int64_t wholeStep_;
        int64_t carryStep_;
        int64_t rest_;
        int64_t size_;
    };
    // The source positions of `count` target positions from `target` on.
    void FillSources(int32_t target, int32_t count, int32_t *sources) const;
    // The lowest and the highest source position of the visible part.
    int32_t LowestSource() const;
    int32_t HighestSource() const;

  private:
    int64_t WalkAt(int32_t target) const;
    void CutToSource(int32_t sourceLimit);
    int64_t FirstWalkWithStep(int64_t step) const;

    int64_t targetStart_;
    int64_t targetSize_;  // magnitude
    int64_t sourceStart_;
    int64_t sourceSize_;  // magnitude
    int64_t targetSign_;  // 1 or -1
    int64_t sourceSign_;  // 1 or -1
    int32_t first_ = 0;
    int32_t count_ = 0;
};

}  // namespace fenlight::platform
