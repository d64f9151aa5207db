// SPDX-License-Identifier: Zlib
// Style bits, place and size of windows. The bits are the layer's own; SDL shows what it can of them.
#include <SDL_video.h>
#include <strings.h>

#include <cstring>

#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "platform/system/suspend_gate.h"
#include "platform/window/ansi_text.h"
#include "platform/window/display_thread.h"
#include "platform/window/video.h"
#include "platform/window/window_record.h"

namespace fenlight::platform {
namespace {

constexpr const char *kPictureClass = "FenlightWindow";

// An open window; anything else is told to the caller as the last error.
class OpenWindowOf {
  public:
    explicit OpenWindowOf(HWND window) : record_(window) {
        if (!*this) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    }
    explicit operator bool() const { return record_ && record_->isOpen.load(std::memory_order_acquire); }
    WindowRecord *operator->() const { return record_.operator->(); }
    WindowRecord &operator*() const { return *record_; }

  private:
    PinnedWindow record_;
};

std::atomic<DWORD> *StyleWord(WindowRecord &window, int32_t index) {
    if (index == GWL_STYLE) return &window.style;
    if (index == GWL_EXSTYLE) return &window.extendedStyle;
    SetLastError(ERROR_INVALID_INDEX);
    return nullptr;
}

// On the display thread, as all that follow. SDL knows a frame with a title or none.
void ShowStyle(const WindowRecord &window) {
    const DWORD style = window.style;
    const auto asked = [](bool isSo) { return isSo ? SDL_TRUE : SDL_FALSE; };
    SDL_SetWindowBordered(window.frame, asked((style & (WS_CAPTION | WS_THICKFRAME)) != 0));
    SDL_SetWindowTitle(window.frame, (style & WS_CAPTION) == WS_CAPTION ? window.title.c_str() : "");
    SDL_SetWindowResizable(window.frame, asked((style & WS_THICKFRAME) != 0));
    SDL_SetWindowAlwaysOnTop(window.frame, asked((window.extendedStyle & WS_EX_TOPMOST) != 0));
    ((style & WS_VISIBLE) != 0 ? SDL_ShowWindow : SDL_HideWindow)(window.frame);
}

void Show(WindowRecord &window, int32_t command) {
    switch (command) {
        case SW_HIDE:
            window.style &= ~WS_VISIBLE;
            return SDL_HideWindow(window.frame);
        case SW_SHOWMINIMIZED:
        case SW_MINIMIZE:
            return SDL_MinimizeWindow(window.frame);
        case SW_SHOWMAXIMIZED:
            window.style |= WS_VISIBLE;
            SDL_ShowWindow(window.frame);
            return SDL_MaximizeWindow(window.frame);
        case SW_SHOWNORMAL:
        case SW_RESTORE:
            SDL_RestoreWindow(window.frame);
            [[fallthrough]];
        case SW_SHOW:
            window.style |= WS_VISIBLE;
            return SDL_ShowWindow(window.frame);
        default:
            return;
    }
}

void Place(WindowRecord &window, const SDL_Rect &place, UINT flags) {
    if ((flags & SWP_NOMOVE) == 0) SDL_SetWindowPosition(window.frame, place.x, place.y);
    if ((flags & SWP_NOSIZE) == 0 && IsWindowSide(place.w) && IsWindowSide(place.h))
        SDL_SetWindowSize(window.frame, place.w, place.h);
    NoteCorners();
    if ((flags & SWP_FRAMECHANGED) != 0) ShowStyle(window);
}

HWND FindTitle(const char *title, const std::string &utf8) {
    const WindowRecord *window = FirstShownWindow();
    while (window != nullptr && title != nullptr && window->title != utf8) window = window->nextShown;
    return window != nullptr ? window->handle : 0;
}

// A tooltip that is not on the screen has no frame; nor has a window that was closed meanwhile.
template <class Task>
bool RunWithFrame(const WindowRecord &window, Task task) {
    return RunOnDisplayThread([&] {
        if (window.frame != nullptr) task();
    });
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

LONG GetWindowLongA(HWND window, int32_t index) noexcept {
    const OpenWindowOf record(window);
    const std::atomic<DWORD> *word = record ? StyleWord(*record, index) : nullptr;
    return word != nullptr ? static_cast<LONG>(word->load()) : 0;
}

LONG SetWindowLongA(HWND window, int32_t index, LONG value) noexcept {
    const OpenWindowOf record(window);
    std::atomic<DWORD> *word = record ? StyleWord(*record, index) : nullptr;
    return word != nullptr ? static_cast<LONG>(word->exchange(static_cast<DWORD>(value))) : 0;
}

BOOL SetWindowPos(HWND window, HWND, int32_t x, int32_t y, int32_t width, int32_t height,
                  UINT flags) noexcept {
    PassSuspendGate();
    const OpenWindowOf record(window);
    if (!record) return 0;
    return RunWithFrame(*record, [&] { Place(*record, {x, y, width, height}, flags); }) ? 1 : 0;
}

BOOL ShowWindow(HWND window, int32_t command) noexcept {
    PassSuspendGate();
    const OpenWindowOf record(window);
    if (!record) return 0;
    const bool wasVisible = (record->style & WS_VISIBLE) != 0;
    RunWithFrame(*record, [&] { Show(*record, command); });
    return wasVisible ? 1 : 0;
}

HWND FindWindowA(const char *className, const char *title) noexcept {
    PassSuspendGate();
    if (className != nullptr && strcasecmp(className, kPictureClass) != 0) return 0;
    HWND found = 0;
    const std::string utf8 = TextToUtf8(title, kMaxTitleBytes);
    if (IsDisplayThreadRunning()) RunOnDisplayThread([&] { found = FindTitle(title, utf8); });
    return found;
}
