// SPDX-License-Identifier: Zlib
#include "platform/raster/stretch.h"

#include <algorithm>
#include <array>

#include "platform/raster/clipping.h"
#include "platform/raster/raster_codes.h"

namespace fenlight::platform {
namespace {

struct Axes {
    ScaledAxis columns;
    ScaledAxis rows;
};

// Columns in pieces outside, rows inside: the source columns of a piece are worked out once for all rows.
// Row `top` of the axes is row 0 of `source`.
void WriteScaled(PieceWriter &writer, const PixelView &target, const PixelView &source, const Axes &axes,
                 int32_t top) {
    std::array<int32_t, kPieceWidth> columns;
    std::array<uint32_t, kPieceWidth> values;
    for (int32_t done = 0; done < axes.columns.Count(); done += kPieceWidth) {
        const int32_t x = axes.columns.First() + done;
        const int32_t count = std::min(kPieceWidth, axes.columns.Count() - done);
        axes.columns.FillSources(x, count, columns.data());
        for (int32_t i = 0; i < axes.rows.Count(); ++i) {
            const int32_t y = axes.rows.First() + i;
            LoadScattered(source.format, source.Row(axes.rows.SourceAt(y) - top), columns.data(), count,
                          values.data());
            writer.Write(target.Row(y), x, count, values.data());
        }
    }
}

// The rectangle of a code that needs no source, as an ordinary block.
Block TargetPart(const PixelView &target, const ScaledBlock &block) {
    const ScaledAxis columns(block.targetX, block.targetWidth, 0, 1, target.width, 1);
    const ScaledAxis rows(block.targetY, block.targetHeight, 0, 1, target.height, 1);
    return {columns.First(), rows.First(), columns.Count(), rows.Count(), 0, 0};
}

}  // namespace

bool ScaleInto(PieceWriter &writer, const PixelView &target, const PixelView &source,
               const ScaledBlock &block) noexcept {
    Axes axes{
        {block.targetX, block.targetWidth, block.sourceX, block.sourceWidth, target.width, source.width},
        {block.targetY, block.targetHeight, block.sourceY, block.sourceHeight, target.height, source.height}};
    if (axes.columns.Count() == 0 || axes.rows.Count() == 0) return true;
    const int32_t top = axes.rows.LowestSource();
    const int32_t height = axes.rows.HighestSource() - top + 1;
    if (!SharesMemory(target, axes.rows.First(), axes.rows.Count(), source, top, height)) {
        WriteScaled(writer, target, source, axes, 0);
        return true;
    }
    SourceCopy copy;
    if (!copy.Make(source, 0, top, source.width, height)) return false;
    WriteScaled(writer, target, copy.View(), axes, top);
    return true;
}

bool StretchBlock(const PixelView &target, const PixelView *source, const ScaledBlock &block,
                  DWORD rasterCode, const TransferColours &colours) noexcept {
    if (!NeedsSource(rasterCode)) {
        return BlitBlock(target, nullptr, TargetPart(target, block), rasterCode, colours);
    }
    if (source == nullptr) return false;
    if (HasEqualSizes(block)) return BlitBlock(target, source, PlainBlock(block), rasterCode, colours);
    PieceWriter writer(*source, target, rasterCode, colours);
    return ScaleInto(writer, target, *source, block);
}

}  // namespace fenlight::platform
