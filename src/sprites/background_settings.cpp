// SPDX-License-Identifier: Zlib
#include "sprites/background_settings.h"

#include "fenlight/sprite_worlds.h"

namespace fenlight {

constinit std::atomic<int32_t> BackgroundSettings[kBackgroundSettingCount]{};

}  // namespace fenlight

using namespace fenlight;

int32_t InitSpriteBackground(int32_t backgroundMode, int32_t viewWidth, int32_t viewHeight, int32_t scrollX,
                             int32_t scrollY, int32_t scrollStepX, int32_t scrollStepY) noexcept {
    const int32_t values[] = {backgroundMode, viewWidth,   viewHeight, scrollX,
                              scrollY,        scrollStepX, scrollStepY};
    for (int32_t i = 0; i < kBackgroundSettingCount; ++i)
        if (values[i] != kNoChange) BackgroundSettings[i].store(values[i], std::memory_order_relaxed);
    return 0;
}

int32_t *GetBackgroundInfos(int32_t *buffer) noexcept {
    if (buffer == nullptr) return nullptr;
    for (int32_t i = 0; i < kBackgroundSettingCount; ++i)
        buffer[i] = ReadSetting(static_cast<BackgroundSetting>(i));
    return buffer;
}
