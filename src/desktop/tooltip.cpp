// SPDX-License-Identifier: Zlib
#include "fenlight/desktop.h"
#include "fenlight/platform/windows.h"

namespace {

constexpr DWORD kStyle = WS_POPUP | WS_CHILD | WS_VISIBLE | TTS_ALWAYSTIP;
constexpr LPARAM kWidest = 0x7FFF;

}  // namespace

uintptr_t Tooltip(uintptr_t controlHandle, const char *text, uintptr_t parentHandle,
                  uintptr_t instanceHandle) noexcept {
    InitCommonControls();
    TOOLINFOA tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.uId = controlHandle;
    tool.lpszText = text;
    const HWND tooltip = CreateWindowExA(0, TOOLTIPS_CLASSA, text, kStyle, 0, 0, 0, 0, parentHandle, 0,
                                         instanceHandle, nullptr);
    SendMessageA(tooltip, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageA(tooltip, TTM_SETMAXTIPWIDTH, 0, kWidest);
    return tooltip;
}
