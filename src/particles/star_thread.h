// SPDX-License-Identifier: Zlib
// The thread that runs the star field, from Stars until its stop mode ends it. Its parts are plain functions,
// so that frames can be run without it.
#pragma once

#include "particles/star_field.h"

namespace fenlight {

// Makes a field and starts the thread on it. nullptr, with nothing changed, if a field exists, where
// MakeStarField refuses, and where the system gives no semaphore or thread.
[[nodiscard]] StarRecord *StartStars(const StarArguments &arguments) noexcept;

// Waits until the frame that began at `frameStart` has lasted as long as the frame delay of the moment says.
void PaceStarFrame(uint32_t frameStart) noexcept;
// What the thread does at its end: erases, unless the stop mode leaves the stars, and gives everything back.
void LeaveStarField(int32_t stopMode) noexcept;

}  // namespace fenlight
