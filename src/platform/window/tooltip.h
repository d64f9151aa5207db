// SPDX-License-Identifier: Zlib
// Tooltips. Their records belong to the display thread, which shows one at a time; callers' requests come to
// it as tasks.
#pragma once

#include <chrono>

#include "fenlight/platform/types.h"

namespace fenlight::platform {

// Shows the tooltip of the control that the pointer has rested on, and takes it away. `over` is the window
// that the pointer is on, or 0. On the display thread, in each tick.
void UpdateTooltips(std::chrono::steady_clock::time_point now, HWND over) noexcept;

// Is one on the screen? On the display thread.
bool IsTooltipShown() noexcept;

// A tooltip that is to be destroyed with this parent, 0 if there is none. Any thread but the display thread.
HWND TooltipOf(HWND parent) noexcept;

}  // namespace fenlight::platform
