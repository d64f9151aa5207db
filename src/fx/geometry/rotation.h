// SPDX-License-Identifier: Zlib
// Free rotation of one FX buffer over another. Nothing here keeps state.
#pragma once

#include "fx/fx_buffer.h"
#include "platform/raster/pixel_view.h"

namespace fenlight {

// Draws the picture `fx`, turned about its centre, on `target`, a picture of 24 or 32 bits. Each pixel is
// drawn where it lands and to the right of it. Pixels of `fx` are taken one after the other; where it has
// fewer than `target`, the last ones are missing. The colour of its last pixel is left out if `isKeyed`.
void DrawTurned(const platform::PixelView &target, const FXHeader &fx, int32_t degrees,
                bool isKeyed) noexcept;

}  // namespace fenlight
