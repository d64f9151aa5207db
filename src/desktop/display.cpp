// SPDX-License-Identifier: Zlib
#include "fenlight/desktop.h"
#include "fenlight/platform/graphics.h"
#include "fenlight/platform/windows.h"

namespace fenlight {
namespace {

constexpr DWORD kModeFields = DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;
constexpr UINT kNewFrameOnly = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED;

// The fields that the caller does not choose, the refresh rate among them, come from a mode of the list.
DEVMODEA AnyMode() {
    DEVMODEA mode{};
    EnumDisplaySettingsA(nullptr, static_cast<DWORD>(GetDeviceCaps(GetDC(0), COLORRES)), &mode);
    return mode;
}

template <class Change>
int32_t ChangeStyle(HWND window, int32_t extended, Change change) {
    const int32_t index = extended == 1 ? GWL_EXSTYLE : GWL_STYLE;
    const auto style = static_cast<uint32_t>(GetWindowLongA(window, index));
    SetWindowLongA(window, index, static_cast<LONG>(change(style)));
    return SetWindowPos(window, 0, 0, 0, 0, 0, kNewFrameOnly);
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t ChangeDisplay(int32_t width, int32_t height) noexcept {
    if (width == 0) return ChangeDisplaySettingsA(nullptr, CDS_RESET);
    DEVMODEA mode = AnyMode();
    mode.dmFields = kModeFields;
    mode.dmPelsWidth = static_cast<DWORD>(width);
    mode.dmPelsHeight = static_cast<DWORD>(height);
    return ChangeDisplaySettingsA(&mode, CDS_FULLSCREEN);
}

int32_t AddWindowStyle(uintptr_t windowHandle, uint32_t style, int32_t extended) noexcept {
    return ChangeStyle(windowHandle, extended, [style](uint32_t before) { return before | style; });
}

int32_t SubWindowStyle(uintptr_t windowHandle, uint32_t style, int32_t extended) noexcept {
    return ChangeStyle(windowHandle, extended, [style](uint32_t before) { return before & ~style; });
}

int32_t SwitchTaskbar(int32_t mode) noexcept {
    if (const HWND taskbar = FindWindowA("Shell_TrayWnd", ""))
        ShowWindow(taskbar, mode == 1 ? SW_SHOW : mode);
    return 0;
}
