// SPDX-License-Identifier: Zlib
// The thread that runs the pixel effects while the run flag asks for it. There is never more than one: a
// thread that is asked to go on before it has noticed that it was to end goes on.
#pragma once

#include <cstdint>

#include "fenlight/platform/system.h"

namespace fenlight {

inline constexpr uint32_t kEffectsFrameMillis = 20;

// Has the thread run. Its handle, or 0 if it was asked to run already, or if the system gives no semaphore or
// thread; it is then as if it had not been asked.
[[nodiscard]] HANDLE StartEffects() noexcept;
// Has it end at the close of its frame.
void StopEffects() noexcept;
bool IsEffectsThreadAlive() noexcept;

// Waits until the frame that began at `frameStart` has lasted kEffectsFrameMillis.
void PaceEffectsFrame(uint32_t frameStart) noexcept;

}  // namespace fenlight
