// SPDX-License-Identifier: Zlib
#include "platform/window/window_picture.h"

#include <SDL_surface.h>

#include <algorithm>

#include "platform/graphics/surface_access.h"

namespace fenlight::platform {
namespace {

// The picture keeps its size whatever a window manager does to the window: cut off at the right and at the
// bottom, or black beyond it.
void CopyPicture(const PixelView &picture, SDL_Surface &target) {
    const int width = std::min(picture.width, target.w);
    const int height = std::min(picture.height, target.h);
    if (target.w > width || target.h > height) SDL_FillRect(&target, nullptr, 0);
    SDL_ConvertPixels(width, height, SDL_PIXELFORMAT_RGB888, picture.topRow, static_cast<int>(picture.pitch),
                      target.format->format, target.pixels, target.pitch);
}

}  // namespace

bool ShowWindowPicture(WindowRecord &window) noexcept {
    if (!window.needsShowing && SurfaceChanges(window.context) == window.shownChange) return false;
    SDL_Surface *target = SDL_GetWindowSurface(window.frame);
    if (target == nullptr) return false;
    {
        const SurfaceAccess picture(window.context);
        if (!picture) return false;
        // Read under the lock: what is drawn from here on counts as a new change.
        window.shownChange = SurfaceChanges(window.context);
        CopyPicture(picture.View(), *target);
    }
    window.needsShowing = SDL_UpdateWindowSurface(window.frame) != 0;
    return true;
}

}  // namespace fenlight::platform
