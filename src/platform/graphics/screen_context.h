// SPDX-License-Identifier: Zlib
// The one reference context of the process: 32 bits, in plain memory, never deleted and never shown. It gives
// compatible contexts and bitmaps their format.
#pragma once

#include "fenlight/platform/graphics.h"

namespace fenlight::platform {

// Pixels of the reference context's bitmap. Its memory is taken only where something draws on it.
inline constexpr int32_t kScreenWidth = 1024;
inline constexpr int32_t kScreenHeight = 768;

// Made by the first call; 0 if there was no memory for it, and the next call tries again. Any thread.
FENLIGHT_API HDC ScreenContext() noexcept;

}  // namespace fenlight::platform
