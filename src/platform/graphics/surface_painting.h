// SPDX-License-Identifier: Zlib
// Painting on a surface whose lock the caller holds (SurfaceAccess), for pictures that come piece by piece.
#pragma once

#include <cstdint>

#include "fenlight/platform/graphics.h"
#include "platform/raster/pixel_view.h"

namespace fenlight::platform {

// Puts `pixels` with their top left corner at (x, y) of a surface of 32 bits, clipped. They have 24 or 32
// bits and memory of their own.
FENLIGHT_API void PaintOnSurface(const PixelView &surface, int32_t x, int32_t y,
                                 const PixelView &pixels) noexcept;

}  // namespace fenlight::platform
