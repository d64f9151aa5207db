// SPDX-License-Identifier: Zlib
// Free rotation of one FX buffer over another. Nothing here keeps state.
#pragma once

#include "fx/fx_buffer.h"

namespace fenlight {

// Draws the picture `fx`, turned about its centre, on `result`, which holds what `background` holds and has
// packed rows of the same width. Each pixel is drawn where it lands and to the right of it. Pixels of `fx`
// are taken one after the other; where it has fewer than `background`, the last ones are missing. The colour
// of its last pixel is left out if `isKeyed`.
void DrawTurned(const FXHeader &background, const FXHeader &fx, uint8_t *result, int32_t degrees,
                bool isKeyed) noexcept;

}  // namespace fenlight
