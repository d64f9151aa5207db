// SPDX-License-Identifier: Zlib
// What a window handle names.
#pragma once

#include <SDL_video.h>

#include <atomic>
#include <chrono>
#include <cstdint>

#include "fenlight/platform/types.h"
#include "platform/system/handle_table.h"

namespace fenlight::platform {

struct WindowRecord : HandleObject {
    WindowRecord(HDC windowContext, int32_t windowWidth, int32_t windowHeight) noexcept
        : context(windowContext), width(windowWidth), height(windowHeight) {}

    const HDC context;
    const int32_t width;
    const int32_t height;
    std::atomic<bool> isOpen{false};    // on the screen, and not closed by hand
    std::atomic<bool> isEnding{false};  // never to be shown again

    // The display thread's own.
    SDL_Window *frame = nullptr;
    WindowRecord *nextShown = nullptr;
    bool needsShowing = true;  // whatever the change counter says: exposed, resized, new
    uint32_t shownChange = 0;
    std::chrono::steady_clock::time_point nextShow{};
};

using PinnedWindow = Pinned<WindowRecord, HandleKind::Window>;

}  // namespace fenlight::platform
