// SPDX-License-Identifier: Zlib
// Scaled transfers. Nothing is owned; a copy of the source is made only where source and target share memory.
#pragma once

#include "platform/raster/piece_writer.h"
#include "platform/raster/raster.h"

namespace fenlight::platform {

constexpr bool HasEqualSizes(const ScaledBlock &block) {
    return block.targetWidth == block.sourceWidth && block.targetHeight == block.sourceHeight &&
           block.targetWidth >= 0 && block.targetHeight >= 0;
}

constexpr Block PlainBlock(const ScaledBlock &block) {
    return {block.targetX,      block.targetY, block.targetWidth,
            block.targetHeight, block.sourceX, block.sourceY};
}

// Scales into the writer, which was made for these two views. False if a copy was needed and there was no
// memory.
[[nodiscard]] bool ScaleInto(PieceWriter &writer, const PixelView &target, const PixelView &source,
                             const ScaledBlock &block) noexcept;

}  // namespace fenlight::platform
