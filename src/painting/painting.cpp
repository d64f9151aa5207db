// SPDX-License-Identifier: Zlib
#include "painting/painting.h"

#include "fenlight/painting.h"
#include "images/raster_modes.h"

namespace fenlight {
namespace {

// The colour of the block's top right pixel. Outside the source there is none, and then no pixel is left out.
COLORREF KeyColour(const PaintBlock &block) noexcept {
    // A sum beyond the 32 bits wraps to a negative number, which lies outside as well.
    const auto right = static_cast<int32_t>(int64_t{block.sourceX} + block.width - 1);
    return GetPixel(block.source, right, block.sourceY);
}

bool PaintTransparently(const PaintBlock &block) noexcept {
    // TransparentBlt would mirror negative sizes.
    const int32_t width = block.width > 0 ? block.width : 0;
    const int32_t height = block.height > 0 ? block.height : 0;
    return TransparentBlt(block.target, block.targetX, block.targetY, width, height, block.source,
                          block.sourceX, block.sourceY, width, height, KeyColour(block)) != 0;
}

}  // namespace

bool Paint(const PaintBlock &block, int32_t mode) noexcept {
    if (mode == kTransparentMode) return PaintTransparently(block);
    return BitBlt(block.target, block.targetX, block.targetY, block.width, block.height, block.source,
                  block.sourceX, block.sourceY, RasterCodeOfMode(mode)) != 0;
}

}  // namespace fenlight

int32_t PaintImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t width, int32_t height,
                   uintptr_t srcDC, int32_t srcX, int32_t srcY, int32_t mode) noexcept {
    return fenlight::Paint({destDC, destX, destY, width, height, srcDC, srcX, srcY}, mode) ? 1 : 0;
}

int32_t Curve(uintptr_t dc, int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t x3, int32_t y3) noexcept {
    const POINT points[] = {{x1, y1}, {x2, y2}, {x2, y2}, {x3, y3}};
    PolyBezier(dc, points, 4);
    return 0;
}
