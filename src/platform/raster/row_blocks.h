// SPDX-License-Identifier: Zlib
// From clipped blocks of pixels to the rows that the kernels see.
#pragma once

#include "platform/raster/overlap.h"
#include "platform/raster/row_kernels.h"

namespace fenlight::platform {

// For formats of whole bytes; the width counts pixels.
RowBlock RowsOf(const PixelView &target, const PixelView &source, const Block &part,
                WalkOrder order) noexcept;

// Paints all pixels but those of the key colour (0x00RRGGBB or kNoColour) where a kernel does it: to 32 bits
// from 32, 24 and 8. False where none does; nothing has happened then.
[[nodiscard]] bool PaintRows(const PixelView &target, const PixelView &source, const Block &part,
                             WalkOrder order, uint32_t key) noexcept;

// Copies 32-bit pixels to 24-bit ones. False for other formats; nothing has happened then.
[[nodiscard]] bool PackRows(const PixelView &target, const PixelView &source, const Block &part) noexcept;

}  // namespace fenlight::platform
