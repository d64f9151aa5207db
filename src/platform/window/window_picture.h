// SPDX-License-Identifier: Zlib
// Brings the picture of a window's context on the screen. Belongs to the display thread.
#pragma once

#include "platform/window/window_record.h"

namespace fenlight::platform {

// Shows the picture if it changed since it was last shown. True if something was shown.
bool ShowWindowPicture(WindowRecord &window) noexcept;

}  // namespace fenlight::platform
