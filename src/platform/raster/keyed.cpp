// SPDX-License-Identifier: Zlib
#include "platform/raster/clipping.h"
#include "platform/raster/overlap.h"
#include "platform/raster/piece_writer.h"
#include "platform/raster/raster.h"
#include "platform/raster/row_blocks.h"
#include "platform/raster/stretch.h"

namespace fenlight::platform {

// The transfers through masks that this stands for work in contexts of their own, with black text on white;
// of the colours only the source's background comes in, where the source is first copied.
bool KeyedBlock(const PixelView &target, const PixelView &source, const ScaledBlock &block, COLORREF key,
                const TransferColours &colours) noexcept {
    const uint32_t keyWord = WordOfColour(key);
    const COLORREF background = colours.sourceBackground;
    if (!HasEqualSizes(block)) {
        PieceWriter writer = PieceWriter::Keyed(source, target, keyWord, background);
        return ScaleInto(writer, target, source, block);
    }
    const Block part = ClipBlock(target, &source, PlainBlock(block));
    if (part.width == 0) return true;
    return WithSafeSource(
        target, source, part, [&](const PixelView &from, const Block &safe, WalkOrder order) {
            if (PaintRows(target, from, safe, order, keyWord)) return;
            PieceWriter::Keyed(from, target, keyWord, background).WriteBlock(target, from, safe, order);
        });
}

}  // namespace fenlight::platform
