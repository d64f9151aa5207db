// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <array>
#include <cstring>

#include "platform/raster/clipping.h"
#include "platform/raster/overlap.h"
#include "platform/raster/piece_writer.h"
#include "platform/raster/raster.h"
#include "platform/raster/raster_codes.h"
#include "platform/raster/row_blocks.h"

namespace fenlight::platform {
namespace {

bool HasPattern(DWORD rasterCode) { return NeedsPattern(TruthTable(rasterCode)); }

// Rows of equal bytes in both bitmaps; true where the block was done here.
bool CombineRows(const PixelView &target, const PixelView &source, const Block &part, WalkOrder order,
                 DWORD rasterCode) {
    const int64_t pixelBytes = BitsPerPixel(target.format) / 8;
    const RowBlock rows = RowsOf(target, source, part, order);
    const auto rowBytes = static_cast<size_t>(part.width * pixelBytes);
    if (TruthTable(rasterCode) != TruthTable(SRCCOPY)) {
        if (order.isWithinRows || HasPattern(rasterCode)) return false;
        for (int64_t y = 0; y < rows.rows; ++y) {
            CombineBytes(TruthTable(rasterCode), rows.source + y * rows.sourcePitch,
                         rows.target + y * rows.targetPitch, rowBytes);
        }
    } else if (order.isWithinRows) {
        for (int64_t y = 0; y < rows.rows; ++y) {
            std::memmove(rows.target + y * rows.targetPitch, rows.source + y * rows.sourcePitch, rowBytes);
        }
    } else {
        RowBlock bytes = rows;
        bytes.width = static_cast<int64_t>(rowBytes);
        Kernels().copyBytes(bytes);
    }
    return true;
}

// The first row pixel by pixel, the others as copies of it where pixels are whole bytes.
void FillPart(const PixelView &target, const Block &part, uint32_t value) {
    const int64_t pixelBytes = BitsPerPixel(target.format) / 8;
    const int32_t filledRows = pixelBytes == 0 ? part.height : std::min(part.height, 1);
    for (int32_t y = 0; y < filledRows; ++y) {
        FillValues(target.format, target.Row(part.targetY + y), part.targetX, part.width, value);
    }
    if (part.height <= filledRows) return;
    uint8_t *first = target.Row(part.targetY) + part.targetX * pixelBytes;
    Kernels().copyBytes(
        {first + target.pitch, target.pitch, first, 0, part.width * pixelBytes, part.height - 1});
}

// Codes that need no source: a constant, the pattern, or a change of what is there.
void CombineInPlace(const PixelView &target, const Block &part, uint8_t table, uint32_t pattern) {
    if (!NeedsTarget(table)) return FillPart(target, part, CombineWord(table, pattern, 0, 0));
    std::array<uint32_t, kPieceWidth> values;
    for (int32_t y = part.targetY; y < part.targetY + part.height; ++y) {
        for (int32_t done = 0; done < part.width; done += kPieceWidth) {
            const int32_t count = std::min(kPieceWidth, part.width - done);
            LoadValues(target.format, target.Row(y), part.targetX + done, count, values.data());
            CombineValues(table, pattern, values.data(), values.data(), count);
            StoreValues(target.format, target.Row(y), part.targetX + done, count, values.data());
        }
    }
}

bool HaveEqualBytes(const PixelView &target, const PixelView &source) {
    return target.format == source.format && BitsPerPixel(target.format) >= 8 && KeepsNumbers(source, target);
}

void TransferPart(const PixelView &target, const PixelView &source, const Block &part, WalkOrder order,
                  DWORD rasterCode, const TransferColours &colours) {
    if (HaveEqualBytes(target, source)) {
        if (CombineRows(target, source, part, order, rasterCode)) return;
    } else if (TruthTable(rasterCode) == TruthTable(SRCCOPY)) {
        if (PaintRows(target, source, part, order, kNoColour) || PackRows(target, source, part)) return;
    }
    PieceWriter(source, target, rasterCode, colours).WriteBlock(target, source, part, order);
}

}  // namespace

bool BlitBlock(const PixelView &target, const PixelView *source, const Block &block, DWORD rasterCode,
               const TransferColours &colours) noexcept {
    const uint8_t table = TruthTable(rasterCode);
    if (!NeedsSource(rasterCode)) {
        const Block part = ClipBlock(target, nullptr, block);
        const uint32_t pattern = NeedsPattern(table) ? MatchColour(target, SwapRedBlue(colours.brush)) : 0;
        CombineInPlace(target, part, table, pattern);
        return true;
    }
    if (source == nullptr) return false;
    const Block part = ClipBlock(target, source, block);
    if (part.width == 0) return true;
    return WithSafeSource(target, *source, part,
                          [&](const PixelView &from, const Block &safe, WalkOrder order) {
                              TransferPart(target, from, safe, order, rasterCode, colours);
                          });
}

}  // namespace fenlight::platform
