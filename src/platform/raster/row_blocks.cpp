// SPDX-License-Identifier: Zlib
#include "platform/raster/row_blocks.h"

namespace fenlight::platform {

RowBlock RowsOf(const PixelView &target, const PixelView &source, const Block &part,
                WalkOrder order) noexcept {
    const int32_t first = order.isUpwards ? part.height - 1 : 0;
    const ptrdiff_t sign = order.isUpwards ? -1 : 1;
    return {target.Row(part.targetY + first) + int64_t{part.targetX} * (BitsPerPixel(target.format) / 8),
            target.pitch * sign,
            source.Row(part.sourceY + first) + int64_t{part.sourceX} * (BitsPerPixel(source.format) / 8),
            source.pitch * sign,
            part.width,
            part.height};
}

bool PackRows(const PixelView &target, const PixelView &source, const Block &part) noexcept {
    if (target.format != PixelFormat::Bgr24 || source.format != PixelFormat::Bgrx32) return false;
    Kernels().packTo24(RowsOf(target, source, part, WalkOrder{}));
    return true;
}

bool PaintRows(const PixelView &target, const PixelView &source, const Block &part, WalkOrder order,
               uint32_t key) noexcept {
    if (order.isWithinRows) return false;
    if (target.format == PixelFormat::Bgr24 && source.format == PixelFormat::Bgr24) {
        Kernels().key24(RowsOf(target, source, part, order), key);
        return true;
    }
    if (target.format != PixelFormat::Bgrx32) return false;
    if (source.format == PixelFormat::Bgrx32) {
        Kernels().keyFrom32(RowsOf(target, source, part, order), key);
    } else if (source.format == PixelFormat::Bgr24) {
        Kernels().keyFrom24(RowsOf(target, source, part, order), key);
    } else if (source.format == PixelFormat::Indexed8 && source.palette != nullptr) {
        Kernels().keyFrom8(RowsOf(target, source, part, order), source.palette, key);
    } else {
        return false;
    }
    return true;
}

}  // namespace fenlight::platform
