// SPDX-License-Identifier: Zlib
#include "platform/window/full_screen.h"

#include <SDL_video.h>

#include "platform/window/display_modes.h"
#include "platform/window/video.h"

namespace fenlight::platform {
namespace {

// Each step by itself: where no window manager takes care of it, SDL only notes that the window fills the
// screen, and leaves its place and size to the program.
void LeaveFullScreen(WindowRecord &window) {
    if (window.fullWidth == 0) return;
    SDL_SetWindowFullscreen(window.frame, 0);
    SDL_SetWindowSize(window.frame, window.width, window.height);
    SDL_SetWindowPosition(window.frame, window.usualCorner.x, window.usualCorner.y);
    window.fullWidth = window.fullHeight = 0;
    window.needsShowing = true;
}

// A screen that has no such mode takes the next larger one, or stays as it is: the window then fills it, with
// its picture at the top left.
void EnterFullScreen(WindowRecord &window, ScreenSize size) {
    if (ScreenSize{window.fullWidth, window.fullHeight} == size) return;
    LeaveFullScreen(window);
    SDL_GetWindowPosition(window.frame, &window.usualCorner.x, &window.usualCorner.y);
    const int display = SDL_GetWindowDisplayIndex(window.frame);
    const SDL_DisplayMode wanted{0, size.width, size.height, 0, nullptr};
    SDL_DisplayMode mode{};
    SDL_Rect screen{};
    const bool hasMode = SDL_GetClosestDisplayMode(display, &wanted, &mode) != nullptr;
    if (!hasMode) SDL_GetDesktopDisplayMode(display, &mode);
    SDL_GetDisplayBounds(display, &screen);
    SDL_SetWindowDisplayMode(window.frame, &mode);
    SDL_SetWindowPosition(window.frame, screen.x, screen.y);
    SDL_SetWindowSize(window.frame, mode.w, mode.h);
    SDL_SetWindowFullscreen(window.frame, hasMode ? SDL_WINDOW_FULLSCREEN : SDL_WINDOW_FULLSCREEN_DESKTOP);
    window.fullWidth = size.width;
    window.fullHeight = size.height;
    window.needsShowing = true;
}

}  // namespace

void ArrangeFullScreen() noexcept {
    if (IsBoxStanding()) return;
    WindowRecord *newest = FirstShownWindow();
    const std::optional<ScreenSize> mode = ChangedMode();
    for (WindowRecord *window = newest; window != nullptr; window = window->nextShown) {
        if (window != newest || !mode) LeaveFullScreen(*window);
    }
    if (newest != nullptr && mode) EnterFullScreen(*newest, *mode);
}

void GiveScreenBack() noexcept {
    for (WindowRecord *window = FirstShownWindow(); window != nullptr; window = window->nextShown)
        LeaveFullScreen(*window);
}

}  // namespace fenlight::platform
