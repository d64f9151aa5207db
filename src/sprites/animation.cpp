// SPDX-License-Identifier: Zlib
// Which strip and which frame a sprite shows.
#include "sprites/animation.h"

#include "fenlight/sprite_animation.h"
#include "sprites/movement.h"
#include "sprites/sprite_record.h"
#include "sprites/stages.h"

namespace fenlight {

void SetStripX(SpriteRecord &record, int32_t sourceX) noexcept {
    for (int32_t direction = 0; direction < kDirections; ++direction) record.MoveSourceX(direction) = sourceX;
    record.SourceX = sourceX;
}

void SetStripY(SpriteRecord &record, int32_t sourceY) noexcept {
    for (int32_t direction = 0; direction < kDirections; ++direction) record.MoveSourceY(direction) = sourceY;
    record.SourceY = sourceY;
}

void FacingStage(SpriteRecord &record) noexcept {
    const int32_t direction = DirectionOf(record);
    record.SourceX = record.MoveSourceX(direction);
    record.SourceY = record.MoveSourceY(direction);
}

void AnimStage(SpriteRecord &record) noexcept {
    const int32_t passes = WrapAdd(record.FrameTimer, 1);
    // Equal, not at least: a delay of 0, or one written below the running timer, stops the animation.
    if (passes != record.FrameDelay) {
        record.FrameTimer = passes;
        return;
    }
    record.FrameTimer = 0;
    if (record.Frame != record.FrameCount)
        record.Frame += 1;
    else if (record.AnimOnce == 0)
        record.Frame = 1;
}

}  // namespace fenlight

using namespace fenlight;

int32_t SetSpriteAnim(uintptr_t sprite, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                      int32_t frameCount, int32_t startFrame, int32_t delay) noexcept {
    if (sprite == 0) return 0;
    SpriteRecord &record = *RecordOf(sprite);
    SetStripX(record, sourceX);
    SetStripY(record, sourceY);
    record.Width = width;
    record.Height = height;
    record.FrameCount = frameCount;
    record.Frame = startFrame;
    record.FrameDelay = delay;
    record.FrameTimer = 0;
    return 0;
}

int32_t SetSpriteAnimMove(uintptr_t sprite, int32_t direction, int32_t sourceX, int32_t sourceY) noexcept {
    if (sprite == 0 || direction < 0 || direction >= kDirections) return 0;
    RecordOf(sprite)->MoveSourceX(direction) = sourceX;
    RecordOf(sprite)->MoveSourceY(direction) = sourceY;
    return 0;
}

int32_t SetSpriteAnimMode(uintptr_t sprite, int32_t mode) noexcept {
    if (sprite != 0) RecordOf(sprite)->AnimOnce = mode != 0;
    return 0;
}

int32_t GetSpriteAnimModeStatus(uintptr_t sprite) noexcept {
    if (sprite == 0) return 0;
    const SpriteRecord &record = *RecordOf(sprite);
    return record.AnimOnce != 0 && record.Frame == record.FrameCount;
}
