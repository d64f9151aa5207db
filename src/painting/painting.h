// SPDX-License-Identifier: Zlib
// Painting a block of one context on another. Nothing is owned and nothing is kept between calls; any thread
// may call. The tile painter paints through here too, so that both give the same pictures.
#pragma once

#include <cstdint>

#include "fenlight/platform/graphics.h"

namespace fenlight {

// The mode that leaves out the key colour; all others are raster modes or raster codes.
inline constexpr int32_t kTransparentMode = -1;

struct PaintBlock {
    HDC target;
    int32_t targetX, targetY;
    int32_t width, height;  // below 1: nothing is painted
    HDC source;
    int32_t sourceX, sourceY;
};

// False for a dead target, or a dead source where the mode needs one, and where source and target share
// memory and there is none for a copy; nothing is painted then.
bool Paint(const PaintBlock &block, int32_t mode) noexcept;

}  // namespace fenlight
