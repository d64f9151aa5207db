// SPDX-License-Identifier: Zlib
// What InitSpriteBackground sets: how the back buffer comes onto the screen and how the view scrolls. The
// settings belong to no list and outlive every thread. The caller's thread writes them one by one, the sprite
// thread reads them once at the start of a frame and steps the position; each is whole, together they need
// not be of one call.
#pragma once

#include <atomic>
#include <cstdint>

namespace fenlight {

// In the order of InitSpriteBackground and GetBackgroundInfos.
enum BackgroundSetting {
    kBackgroundMode,
    kViewWidth,
    kViewHeight,
    kScrollX,
    kScrollY,
    kScrollStepX,
    kScrollStepY,
    kBackgroundSettingCount
};

// An argument of InitSpriteBackground that leaves its setting alone.
inline constexpr int32_t kNoChange = 888888;

extern std::atomic<int32_t> BackgroundSettings[kBackgroundSettingCount];

inline int32_t ReadSetting(BackgroundSetting setting) noexcept {
    return BackgroundSettings[setting].load(std::memory_order_relaxed);
}

// One indivisible step, so that a position set at the same moment is stepped from or replaces the sum, and
// is never lost to it. Wraps round at the ends of the range.
inline void StepSetting(BackgroundSetting setting, int32_t step) noexcept {
    BackgroundSettings[setting].fetch_add(step, std::memory_order_relaxed);
}

}  // namespace fenlight
