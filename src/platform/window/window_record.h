// SPDX-License-Identifier: Zlib
// What a window handle names.
#pragma once

#include <SDL_video.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "fenlight/platform/types.h"
#include "platform/system/handle_table.h"
#include "platform/window/input_state.h"

namespace fenlight::platform {

// SDL's own limit for a window's side. Of a larger one the X server sees only the low 16 bits, and ends the
// program where they are 0.
constexpr bool IsWindowSide(int32_t pixels) { return pixels > 0 && pixels <= 16384; }

struct WindowRecord : HandleObject {
    // A window without a picture has context 0.
    WindowRecord(HDC windowContext, int32_t windowWidth, int32_t windowHeight) noexcept
        : context(windowContext), width(windowWidth), height(windowHeight) {}

    // Takes it off the screen for good. On the display thread.
    virtual void LeaveScreen() noexcept;

    // Where the picture's top left pixel is on the screen.
    CursorPosition Corner() const noexcept {
        const uint64_t both = corner_.load(std::memory_order_relaxed);
        return {static_cast<int32_t>(both), static_cast<int32_t>(both >> 32)};
    }
    void SetCorner(int32_t x, int32_t y) noexcept {
        corner_.store(uint64_t{static_cast<uint32_t>(y)} << 32 | static_cast<uint32_t>(x),
                      std::memory_order_relaxed);
    }

    const HDC context;
    const int32_t width;
    const int32_t height;
    HWND handle = 0;                    // its own; set before the window is shown
    std::atomic<bool> isOpen{false};    // on the screen, and not closed by hand
    std::atomic<bool> isEnding{false};  // never to be shown again
    std::atomic<DWORD> style{0};        // the published bits, whatever SDL can show of them
    std::atomic<DWORD> extendedStyle{0};

    // The display thread's own.
    std::string title;  // UTF-8
    SDL_Window *frame = nullptr;
    WindowRecord *nextShown = nullptr;
    int32_t fullWidth = 0, fullHeight = 0;  // the mode that it fills the screen in, 0: it does not
    CursorPosition usualCorner;             // where it was before
    bool needsShowing = true;               // whatever the change counter says: exposed, resized, new
    uint32_t shownChange = 0;
    std::chrono::steady_clock::time_point nextShow{};

  private:
    std::atomic<uint64_t> corner_{0};
};

using PinnedWindow = Pinned<WindowRecord, HandleKind::Window>;

}  // namespace fenlight::platform
