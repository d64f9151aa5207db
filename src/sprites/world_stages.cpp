// SPDX-License-Identifier: Zlib
#include "fenlight/platform/graphics.h"
#include "fenlight/sprite_worlds.h"
#include "sprites/background_settings.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {

void BackgroundStage(SpriteRecord &first) noexcept {
    first.ViewWidth = ReadSetting(kViewWidth);
    first.ViewHeight = ReadSetting(kViewHeight);
    first.ScrollX = ReadSetting(kScrollX);
    first.ScrollY = ReadSetting(kScrollY);
    first.ScrollStepX = ReadSetting(kScrollStepX);
    first.ScrollStepY = ReadSetting(kScrollStepY);
    first.BackgroundMode = ReadSetting(kBackgroundMode);
    StepSetting(kScrollX, first.ScrollStepX);
    StepSetting(kScrollY, first.ScrollStepY);
}

void ScrollInStage(SpriteRecord &record) noexcept {
    if (record.ScrollMode == 0) return;
    const SpriteRecord &first = *SpriteList.load(std::memory_order_acquire);
    record.ScrollShiftX = first.ScrollX;
    record.ScrollShiftY = first.ScrollY;
    record.X += record.ScrollShiftX;
    record.Y += record.ScrollShiftY;
    record.TargetX += record.ScrollShiftX;
    record.TargetY += record.ScrollShiftY;
    record.IsShifted = true;
}

void PresentView(const SpriteRecord &first) noexcept {
    BitBlt(first.ScreenDC, 0, 0, first.ViewWidth, first.ViewHeight, first.BackDC, first.ScrollX,
           first.ScrollY, SRCCOPY);
}

// By now the caller may have switched ScrollMode or deleted the sprite.
void ScrollOutStage(SpriteRecord &record) noexcept {
    if (!record.IsShifted) return;
    record.X -= record.ScrollShiftX;
    record.Y -= record.ScrollShiftY;
    record.TargetX -= record.ScrollShiftX;
    record.TargetY -= record.ScrollShiftY;
    record.IsShifted = false;
}

}  // namespace fenlight

int32_t SpriteScrollMode(uintptr_t sprite, int32_t mode) noexcept {
    if (sprite != 0) fenlight::RecordOf(sprite)->ScrollMode = mode;
    return 0;
}
