// SPDX-License-Identifier: Zlib
// Full screen, while the display mode is a changed one. Belongs to the display thread.
#pragma once

namespace fenlight::platform {

// The window that was opened last fills the screen if the mode is changed, all others are windows. To be
// called whenever the mode or the windows have changed; while a message box stands it is put off.
void ArrangeFullScreen() noexcept;

// Back to the user's own mode, because the process ends: the display would stay as it is.
void GiveScreenBack() noexcept;

}  // namespace fenlight::platform
