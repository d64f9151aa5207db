// SPDX-License-Identifier: Zlib
#include <cstring>
#include <limits>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/system.h"
#include "fenlight/sprite_worlds.h"
#include "sprites/background_settings.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

// The sprites that got a shift in this frame. They are remembered here, and not told from their ScrollMode,
// because the caller may switch the mode, delete the sprite or change the list's order before the shift comes
// off again. Of the sprite thread alone; empty between frames.
class ShiftedSprites {
  public:
    // False: no memory, and the sprite is not in it.
    [[nodiscard]] bool Add(SpriteRecord &record) noexcept {
        if (count_ == capacity_ && !Grow()) return false;
        Places()[count_++] = &record;
        return true;
    }
    template <class Action>
    void TakeEach(Action action) noexcept {
        for (int32_t i = 0; i < count_; ++i) action(*Places()[i]);
        count_ = 0;
    }
    void Release() noexcept {
        GlobalFree(block_);
        block_ = nullptr;
        capacity_ = kFirstCapacity;
    }

  private:
    static constexpr int32_t kFirstCapacity = 64;

    SpriteRecord **Places() noexcept { return block_ != nullptr ? block_ : first_; }

    bool Grow() noexcept {
        if (capacity_ > std::numeric_limits<int32_t>::max() / 2) return false;
        const size_t bytes = sizeof(SpriteRecord *) * static_cast<size_t>(capacity_);
        auto *block = static_cast<SpriteRecord **>(GlobalAlloc(GMEM_FIXED, 2 * bytes));
        if (block == nullptr) return false;
        std::memcpy(block, Places(), bytes);
        GlobalFree(block_);
        block_ = block;
        capacity_ *= 2;
        return true;
    }

    int32_t count_ = 0;
    int32_t capacity_ = kFirstCapacity;
    SpriteRecord **block_ = nullptr;  // in use once first_ has become too small
    SpriteRecord *first_[kFirstCapacity]{};
};

constinit ShiftedSprites shiftedSprites;

}  // namespace

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
    // Without memory to remember it the sprite gets no shift: out of place for a frame rather than for good.
    if (record.ScrollMode == 0 || !shiftedSprites.Add(record)) return;
    const SpriteRecord &first = *SpriteList.load(std::memory_order_acquire);
    record.ScrollShiftX = first.ScrollX;
    record.ScrollShiftY = first.ScrollY;
    record.X += record.ScrollShiftX;
    record.Y += record.ScrollShiftY;
    record.TargetX += record.ScrollShiftX;
    record.TargetY += record.ScrollShiftY;
}

void PresentView(const SpriteRecord &first) noexcept {
    BitBlt(first.ScreenDC, 0, 0, first.ViewWidth, first.ViewHeight, first.BackDC, first.ScrollX,
           first.ScrollY, SRCCOPY);
}

void ScrollOutStage() noexcept {
    shiftedSprites.TakeEach([](SpriteRecord &record) {
        record.X -= record.ScrollShiftX;
        record.Y -= record.ScrollShiftY;
        record.TargetX -= record.ScrollShiftX;
        record.TargetY -= record.ScrollShiftY;
    });
}

void ReleaseShiftedSprites() noexcept { shiftedSprites.Release(); }

}  // namespace fenlight

int32_t SpriteScrollMode(uintptr_t sprite, int32_t mode) noexcept {
    if (sprite != 0) fenlight::RecordOf(sprite)->ScrollMode = mode;
    return 0;
}
