// SPDX-License-Identifier: Zlib
// The layer's own list of display modes and the one that is in use: one atomic word, the same with a display
// and without. What a screen makes of it is full_screen.h's.
#pragma once

#include <cstdint>
#include <optional>

namespace fenlight::platform {

struct ScreenSize {
    int32_t width = 0, height = 0;  // pixels
    bool operator==(const ScreenSize &) const = default;
};

// The mode that ChangeDisplaySettingsA has set, nothing while it is the user's own. Any thread.
std::optional<ScreenSize> ChangedMode() noexcept;

// The display thread tells what the user's own mode is. Until then it is 1024 x 768.
void NoteDesktopSize(ScreenSize size) noexcept;

}  // namespace fenlight::platform
