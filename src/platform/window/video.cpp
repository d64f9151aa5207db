// SPDX-License-Identifier: Zlib
#include "platform/window/video.h"

#include <SDL.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "platform/system/sdl_start.h"
#include "platform/window/display_modes.h"
#include "platform/window/event_feed.h"
#include "platform/window/full_screen.h"
#include "platform/window/window_picture.h"

namespace fenlight::platform {
namespace {

constexpr int kUsualRefreshRate = 60;

bool isVideoUp = false;
WindowRecord *firstShown = nullptr;
bool isBoxStanding = false;
SDL_Window *firstDoomed = nullptr;  // destroyed while a box stood; kNextDoomed leads to the next
constexpr const char *kNextDoomed = "next doomed";
std::atomic<HWND> activeWindow{0};

bool IsSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

// A driver that the user names is tried first. Without a choice only the two that show something come into
// question: left to itself SDL would take over the text console, or draw off screen and say so on stderr.
const char *PreferredDriver() {
    if (IsSet("SDL_VIDEODRIVER")) return nullptr;
    return IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY") ? "x11,wayland" : "dummy";
}

bool InitialiseWith(const char *driver) {
    if (driver != nullptr) SDL_SetHintWithPriority(SDL_HINT_VIDEODRIVER, driver, SDL_HINT_OVERRIDE);
    return SDL_InitSubSystem(SDL_INIT_VIDEO) == 0;
}

WindowRecord *FindShown(Uint32 windowId) {
    SDL_Window *frame = SDL_GetWindowFromID(windowId);
    WindowRecord *window = firstShown;
    while (window != nullptr && window->frame != frame) window = window->nextShown;
    return frame != nullptr ? window : nullptr;
}

void Activate(const WindowRecord *window) {
    activeWindow.store(window != nullptr ? window->handle : 0, std::memory_order_relaxed);
}

void Deactivate(const WindowRecord &window, const WindowRecord *next) {
    if (ActiveWindow() == window.handle) Activate(next);
}

void TakeOffScreen(WindowRecord &window) {
    WindowRecord **link = &firstShown;
    while (*link != nullptr && *link != &window) link = &(*link)->nextShown;
    if (*link == nullptr) return;
    *link = window.nextShown;
    window.isOpen.store(false, std::memory_order_release);
    DestroyFrame(std::exchange(window.frame, nullptr));
    Deactivate(window, firstShown);
    if (firstShown == nullptr) ReleaseAllKeys();
    ArrangeFullScreen();
}

// What is not a picture's window is a tooltip, whose surface still holds what it showed.
void ShowAgain(const SDL_WindowEvent &event) {
    SDL_Window *frame = SDL_GetWindowFromID(event.windowID);
    if (frame != nullptr && event.event == SDL_WINDOWEVENT_EXPOSED) SDL_UpdateWindowSurface(frame);
}

void TakeWindowEvent(const SDL_WindowEvent &event) {
    WindowRecord *window = FindShown(event.windowID);
    if (window == nullptr) return ShowAgain(event);
    switch (event.event) {
        case SDL_WINDOWEVENT_CLOSE:
            TakeOffScreen(*window);
            break;
        case SDL_WINDOWEVENT_FOCUS_GAINED:
            Activate(window);
            break;
        case SDL_WINDOWEVENT_FOCUS_LOST:
            Deactivate(*window, nullptr);
            break;
        case SDL_WINDOWEVENT_LEAVE:
            FeedLeave(*window);
            break;
        case SDL_WINDOWEVENT_EXPOSED:
        case SDL_WINDOWEVENT_SHOWN:
        case SDL_WINDOWEVENT_RESTORED:
        case SDL_WINDOWEVENT_SIZE_CHANGED:
            window->needsShowing = true;
            break;
        default:
            break;
    }
}

std::chrono::nanoseconds RefreshPeriod(SDL_Window *frame) {
    SDL_DisplayMode mode;
    const bool isKnown = SDL_GetWindowDisplayMode(frame, &mode) == 0 && mode.refresh_rate > 0;
    return std::chrono::nanoseconds(1'000'000'000 / (isKnown ? mode.refresh_rate : kUsualRefreshRate));
}

bool IsDriver(const char *name) {
    const char *driver = isVideoUp ? SDL_GetCurrentVideoDriver() : nullptr;
    return driver != nullptr && std::strcmp(driver, name) == 0;
}

// Is there a screen that somebody can look at?
bool HasDisplay() { return isVideoUp && !IsDriver("dummy") && !IsDriver("offscreen"); }

}  // namespace

void StartVideo() noexcept {
    const std::lock_guard lock(sdlStartLock);
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    // Plain pictures only: the renderers behind the accelerated surface start threads and drivers of their
    // own.
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    // The click that brings a window to the front is a click.
    SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
    isVideoUp = InitialiseWith(PreferredDriver()) || InitialiseWith("dummy");
    // Keys, not texts: an input method would keep some of them for itself.
    if (isVideoUp) SDL_StopTextInput();
    SDL_DisplayMode desktop;
    if (HasDisplay() && SDL_GetDesktopDisplayMode(0, &desktop) == 0) NoteDesktopSize({desktop.w, desktop.h});
}

bool AttachWindow(WindowRecord &window) noexcept {
    if (!isVideoUp || window.isEnding.load(std::memory_order_relaxed)) return false;
    window.frame = SDL_CreateWindow(window.title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED,
                                    window.width, window.height, SDL_WINDOW_SHOWN);
    if (window.frame == nullptr) return false;
    window.nextShown = firstShown;
    firstShown = &window;
    ArrangeFullScreen();
    NoteCorners();
    Activate(&window);
    window.isOpen.store(true, std::memory_order_release);
    return true;
}

void WindowRecord::LeaveScreen() noexcept { TakeOffScreen(*this); }

// SDL tells of no move that it made itself.
void NoteCorners() noexcept {
    for (WindowRecord *window = firstShown; window != nullptr; window = window->nextShown) {
        CursorPosition corner;
        SDL_GetWindowPosition(window->frame, &corner.x, &corner.y);
        window->SetCorner(corner.x, corner.y);
    }
}

WindowRecord *FirstShownWindow() noexcept { return firstShown; }

HWND WindowUnderPointer() noexcept {
    SDL_Window *frame = SDL_GetMouseFocus();
    const WindowRecord *window = frame != nullptr ? FindShown(SDL_GetWindowID(frame)) : nullptr;
    return window != nullptr ? window->handle : 0;
}

HWND ActiveWindow() noexcept { return activeWindow.load(std::memory_order_relaxed); }

bool BeginBox() noexcept {
    isBoxStanding = HasDisplay();
    return isBoxStanding;
}

void EndBox() noexcept {
    isBoxStanding = false;
    while (firstDoomed != nullptr) {
        void *next = SDL_GetWindowData(firstDoomed, kNextDoomed);
        SDL_DestroyWindow(std::exchange(firstDoomed, static_cast<SDL_Window *>(next)));
    }
    ArrangeFullScreen();
}

bool IsBoxStanding() noexcept { return isBoxStanding; }

// At its end a box gives the focus back to the window that had it: until then every window must live.
void DestroyFrame(SDL_Window *frame) noexcept {
    if (!isBoxStanding) return SDL_DestroyWindow(frame);
    SDL_SetWindowData(frame, kNextDoomed, std::exchange(firstDoomed, frame));
}

void PumpEvents() noexcept {
    if (isBoxStanding) return;
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        // Behind the last window's end nobody would hear a key go up.
        if (HasShownWindows()) FeedInput(event);
        if (event.type == SDL_WINDOWEVENT) TakeWindowEvent(event.window);
    }
    NoteCorners();
    // Other drivers do not tell where the pointer is outside.
    if (IsDriver("x11")) FollowPointerOutside();
}

void ShowChangedWindows() noexcept {
    const auto now = std::chrono::steady_clock::now();
    for (WindowRecord *window = firstShown; window != nullptr; window = window->nextShown) {
        if (now < window->nextShow || !ShowWindowPicture(*window)) continue;
        window->nextShow = now + RefreshPeriod(window->frame);
    }
}

}  // namespace fenlight::platform
