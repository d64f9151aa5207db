// SPDX-License-Identifier: Zlib
#include <algorithm>

#include "platform/raster/raster.h"

namespace fenlight::platform {

bool CopyUnion(const PixelView &target, const PixelView &source, std::span<const RECT> rectangles,
               const TransferColours &colours) noexcept {
    bool isDone = true;
    for (const RECT &rectangle : rectangles) {
        const int32_t left = std::max(rectangle.left, 0);
        const int32_t top = std::max(rectangle.top, 0);
        if (rectangle.right <= left || rectangle.bottom <= top) continue;
        const Block block{left, top, rectangle.right - left, rectangle.bottom - top, left, top};
        isDone = BlitBlock(target, &source, block, SRCCOPY, colours) && isDone;
    }
    return isDone;
}

}  // namespace fenlight::platform
