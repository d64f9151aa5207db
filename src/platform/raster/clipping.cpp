// SPDX-License-Identifier: Zlib
#include "platform/raster/clipping.h"

#include <algorithm>

namespace fenlight::platform {
namespace {

struct Range {
    int64_t first;
    int64_t end;
};

// Offsets into a block at `start` that lie inside 0 to limit - 1.
Range Visible(int64_t start, int64_t limit, Range range) {
    return {std::max(range.first, -start), std::min(range.end, limit - start)};
}

}  // namespace

Block ClipBlock(const PixelView &target, const PixelView *source, const Block &block) noexcept {
    Range columns = Visible(block.targetX, target.width, {0, block.width});
    Range rows = Visible(block.targetY, target.height, {0, block.height});
    if (source != nullptr) {
        columns = Visible(block.sourceX, source->width, columns);
        rows = Visible(block.sourceY, source->height, rows);
    }
    if (columns.first >= columns.end || rows.first >= rows.end) return {};
    Block part{};
    part.targetX = static_cast<int32_t>(block.targetX + columns.first);
    part.targetY = static_cast<int32_t>(block.targetY + rows.first);
    part.width = static_cast<int32_t>(columns.end - columns.first);
    part.height = static_cast<int32_t>(rows.end - rows.first);
    if (source == nullptr) return part;
    part.sourceX = static_cast<int32_t>(block.sourceX + columns.first);
    part.sourceY = static_cast<int32_t>(block.sourceY + rows.first);
    return part;
}

ScaledAxis::ScaledAxis(int32_t targetStart, int32_t targetSize, int32_t sourceStart, int32_t sourceSize,
                       int32_t targetLimit, int32_t sourceLimit) noexcept
    : targetStart_(targetStart),
      targetSize_(targetSize < 0 ? -int64_t{targetSize} : int64_t{targetSize}),
      sourceStart_(sourceStart),
      sourceSize_(sourceSize < 0 ? -int64_t{sourceSize} : int64_t{sourceSize}),
      targetSign_(targetSize < 0 ? -1 : 1),
      sourceSign_(sourceSize < 0 ? -1 : 1) {
    if (targetSize_ == 0 || sourceSize_ == 0) return;
    const int64_t lowest = targetSign_ > 0 ? targetStart_ : targetStart_ - targetSize_ + 1;
    const int64_t first = std::max<int64_t>(lowest, 0);
    const int64_t end = std::min<int64_t>(lowest + targetSize_, targetLimit);
    if (first >= end) return;
    first_ = static_cast<int32_t>(first);
    count_ = static_cast<int32_t>(end - first);
    CutToSource(sourceLimit);
}

int64_t ScaledAxis::WalkAt(int32_t target) const { return (target - targetStart_) * targetSign_; }

int32_t ScaledAxis::SourceAt(int32_t target) const {
    return static_cast<int32_t>(sourceStart_ + sourceSign_ * (WalkAt(target) * sourceSize_ / targetSize_));
}

// The first step of the target that takes step `step` of the source or a later one.
int64_t ScaledAxis::FirstWalkWithStep(int64_t step) const {
    return (step * targetSize_ + sourceSize_ - 1) / sourceSize_;
}

void ScaledAxis::CutToSource(int32_t sourceLimit) {
    // Steps of the source that lie inside it, as a half-open range.
    int64_t firstStep = sourceSign_ > 0 ? -sourceStart_ : sourceStart_ - sourceLimit + 1;
    int64_t endStep = sourceSign_ > 0 ? sourceLimit - sourceStart_ : sourceStart_ + 1;
    firstStep = std::max<int64_t>(firstStep, 0);
    endStep = std::min(endStep, sourceSize_);
    int64_t low = first_;
    int64_t end = int64_t{first_} + count_;
    count_ = 0;
    if (firstStep >= endStep) return;
    if (firstStep == 0 && endStep == sourceSize_) {
        count_ = static_cast<int32_t>(end - low);
        return;
    }
    const int64_t firstWalk = FirstWalkWithStep(firstStep);
    const int64_t endWalk = FirstWalkWithStep(endStep);
    if (targetSign_ > 0) {
        low = std::max(low, targetStart_ + firstWalk);
        end = std::min(end, targetStart_ + endWalk);
    } else {
        low = std::max(low, targetStart_ - endWalk + 1);
        end = std::min(end, targetStart_ - firstWalk + 1);
    }
    if (low >= end) return;
    first_ = static_cast<int32_t>(low);
    count_ = static_cast<int32_t>(end - low);
}

ScaledAxis::Walk::Walk(const ScaledAxis &axis, int32_t target) noexcept
    : wholeStep_(axis.sourceSize_ / axis.targetSize_),
      carryStep_(axis.targetSign_ * axis.sourceSign_),
      rest_(axis.sourceSize_ - wholeStep_ * axis.targetSize_),
      size_(axis.targetSize_) {
    const int64_t product = axis.WalkAt(target) * axis.sourceSize_;
    const int64_t step = product / size_;
    position_ = axis.sourceStart_ + axis.sourceSign_ * step;
    const int64_t remainder = product - step * size_;
    remainder_ = axis.targetSign_ > 0 ? remainder : size_ - 1 - remainder;
    wholeStep_ *= carryStep_;
}

void ScaledAxis::FillSources(int32_t target, int32_t count, int32_t *sources) const {
    Walk walk(*this, target);
    if (walk.HasEqualSteps()) {
        for (int32_t i = 0; i < count; ++i) sources[i] = walk.Source() + i * walk.WholeStep();
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        sources[i] = walk.Source();
        walk.Step();
    }
}

int32_t ScaledAxis::LowestSource() const { return std::min(SourceAt(first_), SourceAt(first_ + count_ - 1)); }

int32_t ScaledAxis::HighestSource() const {
    return std::max(SourceAt(first_), SourceAt(first_ + count_ - 1));
}

}  // namespace fenlight::platform
