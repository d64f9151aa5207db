// SPDX-License-Identifier: Zlib
// How a tooltip looks: its text in a small font of our own, five by seven dots a letter, each dot a square of
// two pixels.
#pragma once

#include <SDL_surface.h>

#include <string_view>

namespace fenlight::platform {

struct PictureSize {
    int width, height;  // pixels
};

// Text is UTF-8, its lines end with \n. Longer lines and more of them than a screen has room for are cut off.
PictureSize TooltipSize(std::string_view text) noexcept;
void DrawTooltip(std::string_view text, SDL_Surface &picture) noexcept;

}  // namespace fenlight::platform
