// SPDX-License-Identifier: Zlib
// The sprite thread: starts with the first sprite, runs one frame after the other, ends with the last sprite.
// Everything that it does is here as plain functions, so that frames can be run without the thread.
#pragma once

#include <atomic>

#include "fenlight/platform/system.h"
#include "sprites/sprite_record.h"

namespace fenlight {

// A frame takes at least this long; the other drawing threads work in what is left of it.
inline constexpr uint32_t kFrameMillis = 12;

// The thread, 0 when there is none. Written under SpriteListLock.
extern std::atomic<HANDLE> SpriteThread;
// The running thread's own handle of "mysem". Written under SpriteListLock, while no thread runs.
extern HANDLE FrameSemaphore;
// Of the sprite thread alone: the record of the running pass, and when the frame began.
extern SpriteRecord *CurrentSprite;
extern uint32_t FrameStart;
// Length of the last frame.
extern std::atomic<uint32_t> FrameMillis;

// For the first record of a list. The caller holds SpriteListLock. False: no semaphore or no thread, and
// nothing is left behind.
[[nodiscard]] bool StartSpriteThread() noexcept;

// What the thread does while it holds FrameSemaphore: all stages of one frame, on a list that is not empty.
void RunFrame() noexcept;
// The pass over one record.
void RunPass(SpriteRecord &record, const SpriteRecord &first) noexcept;
// Waits until the frame has lasted kFrameMillis, then as long as SystemBrake says.
void PaceFrame() noexcept;

}  // namespace fenlight
