// SPDX-License-Identifier: Zlib
// The stages that carry sprites to their targets, in the order of the pass.
#include <algorithm>
#include <cstdlib>
#include <mutex>

#include "sprites/line_path.h"
#include "sprites/movement.h"
#include "sprites/sprite_record.h"
#include "sprites/stages.h"
#include "sprites/waypoint_table.h"

namespace fenlight {

int32_t StepOnAxis(const AxisMotion &motion) noexcept {
    // Without branches: headings change from sprite to sprite, and cannot be foretold.
    const int64_t speed = motion.slowCount == 0 ? motion.speed : 0;
    const int64_t distance = std::abs(int64_t{motion.target} - motion.position);
    const int64_t step = std::min(speed, distance) * HeadingOnAxis(motion.position, motion.target);
    return static_cast<int32_t>(motion.position + step);
}

int32_t DirectionOf(const SpriteRecord &record) noexcept {
    // Rows: target above, level, below. Columns: left, level, right. Y grows downwards.
    static constexpr int32_t kCodes[3][3] = {{7, 8, 1}, {6, 0, 2}, {5, 4, 3}};
    const int32_t column = HeadingOnAxis(record.X, record.TargetX) + 1;
    const int32_t row = HeadingOnAxis(record.Y, record.TargetY) + 1;
    return kCodes[row][column];
}

namespace {

// Keeps the six words of a cage together: half of a new cage beside half of an old one would send a sprite
// home that was never outside. The innermost lock, held for these words only.
std::mutex cageLock;

int32_t StepX(const SpriteRecord &record) {
    return StepOnAxis({record.X, record.TargetX, record.SpeedX, record.SlowCountX});
}

int32_t StepY(const SpriteRecord &record) {
    return StepOnAxis({record.Y, record.TargetY, record.SpeedY, record.SlowCountY});
}

void CountSlowly(NumberWord &count, int32_t period) {
    count += 1;
    if (count > period) count = 0;
}

bool IsInsideCage(const SpriteRecord &record) {
    return record.X > record.CageLeft && record.X < record.CageRight && record.Y > record.CageTop &&
           record.Y < record.CageBottom;
}

bool HasCage(const SpriteRecord &record) {
    return record.CageLeft != 0 || record.CageTop != 0 || record.CageRight != 0 || record.CageBottom != 0;
}

void FollowLeader(SpriteRecord &record) {
    const uintptr_t leader = record.AttachedTo;
    if (leader == 0) return;
    record.TargetX = WrapAdd(RecordOf(leader)->X, record.AttachX);
    record.TargetY = WrapAdd(RecordOf(leader)->Y, record.AttachY);
}

}  // namespace

void SetCage(SpriteRecord &record, const Cage &cage) noexcept {
    const std::scoped_lock hold(cageLock);
    record.CageLeft = cage.left;
    record.CageTop = cage.top;
    record.CageRight = cage.right;
    record.CageBottom = cage.bottom;
    record.CageHomeX = cage.homeX;
    record.CageHomeY = cage.homeY;
}

void SlowStage(SpriteRecord &record) noexcept {
    CountSlowly(record.SlowCountX, record.SlowPeriodX);
    CountSlowly(record.SlowCountY, record.SlowPeriodY);
}

void CageStage(SpriteRecord &record) noexcept {
    if (!HasCage(record)) return;
    const std::scoped_lock hold(cageLock);
    if (!HasCage(record) || IsInsideCage(record)) return;
    record.X = record.TargetX = record.CageHomeX;
    record.Y = record.TargetY = record.CageHomeY;
}

void LookAheadStage(SpriteRecord &record) noexcept {
    record.NextX = StepX(record);
    record.NextY = StepY(record);
}

void MovingRectangleStage(SpriteRecord &record) noexcept {
    constexpr int32_t kSideOff = -1;
    if (record.RectLeft != kSideOff && record.X <= record.RectLeft) record.TargetX = record.RectRight;
    if (record.RectTop != kSideOff && record.Y <= record.RectTop) record.TargetY = record.RectBottom;
    if (record.RectRight != kSideOff && record.X >= record.RectRight) record.TargetX = record.RectLeft;
    if (record.RectBottom != kSideOff && record.Y >= record.RectBottom) record.TargetY = record.RectTop;
}

void AnimCopyStage(SpriteRecord &record) noexcept {
    const uintptr_t handle = record.AnimFrom;
    if (handle == 0) return;
    const SpriteRecord &leader = *RecordOf(handle);
    record.SourceX = leader.SourceX;
    record.SourceY = leader.SourceY;
    record.Width = leader.Width;
    record.Height = leader.Height;
    record.FrameCount = leader.FrameCount;
    record.Frame = leader.Frame;
    record.FrameDelay = leader.FrameDelay;
}

void MoveStage(SpriteRecord &record) noexcept {
    if (record.MovingMode == 0) {
        record.X = StepX(record);
        record.Y = StepY(record);
        FollowLeader(record);
        TakeNextWaypoint(record);
    } else {
        TakeNextWaypoint(record);
        MoveAlongLine(record);
    }
}

}  // namespace fenlight
