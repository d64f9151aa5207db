// SPDX-License-Identifier: Zlib
#include "platform/raster/piece_writer.h"

#include <algorithm>
#include <array>

#include "platform/raster/raster_codes.h"

namespace fenlight::platform {

PieceWriter::PieceWriter(const PixelView &source, const PixelView &target, DWORD rasterCode,
                         const TransferColours &colours) noexcept
    : source_(source),
      targetFormat_(target.format),
      converter_(source, target, colours),
      pattern_(NeedsPattern(TruthTable(rasterCode)) ? MatchColour(target, SwapRedBlue(colours.brush)) : 0),
      table_(TruthTable(rasterCode)) {}

PieceWriter PieceWriter::Keyed(const PixelView &source, const PixelView &target, uint32_t key,
                               COLORREF sourceBackground) noexcept {
    TransferColours colours;
    colours.sourceBackground = sourceBackground;
    PieceWriter writer(source, target, SRCCOPY, colours);
    writer.isKeyed_ = true;
    writer.key_ = key;
    return writer;
}

void PieceWriter::Write(uint8_t *targetRow, int32_t x, int32_t count, uint32_t *values) noexcept {
    if (isKeyed_) return WriteKeyed(targetRow, x, count, values);
    converter_.Convert(values, count);
    if (IsPlainCopy()) return StoreValues(targetFormat_, targetRow, x, count, values);
    std::array<uint32_t, kPieceWidth> present;
    LoadValues(targetFormat_, targetRow, x, count, present.data());
    CombineValues(table_, pattern_, values, present.data(), count);
    StoreValues(targetFormat_, targetRow, x, count, present.data());
}

// All bits set where the pixel has the key colour. A monochrome source is its own mask, whatever the key:
// that is what a copy of it to a mask bitmap gives.
void PieceWriter::MarkKeys(const uint32_t *values, int32_t count, uint32_t *masks) const noexcept {
    if (source_.format == PixelFormat::Mono) {
        for (int32_t i = 0; i < count; ++i) masks[i] = 0 - values[i];
    } else if (HasPalette(source_.format)) {
        for (int32_t i = 0; i < count; ++i) masks[i] = ColourOfValue(source_, values[i]) == key_ ? ~0u : 0;
    } else {
        for (int32_t i = 0; i < count; ++i) masks[i] = (values[i] & kColourBits) == key_ ? ~0u : 0;
    }
}

void PieceWriter::WriteKeyed(uint8_t *targetRow, int32_t x, int32_t count, uint32_t *values) noexcept {
    std::array<uint32_t, kPieceWidth> present;
    std::array<uint32_t, kPieceWidth> masks;
    MarkKeys(values, count, masks.data());
    converter_.Convert(values, count);
    LoadValues(targetFormat_, targetRow, x, count, present.data());
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) values[i] ^= (values[i] ^ present[i]) & masks[i];
    StoreValues(targetFormat_, targetRow, x, count, values);
}

void PieceWriter::WriteBlock(const PixelView &target, const PixelView &source, const Block &part,
                             WalkOrder order) noexcept {
    std::array<uint32_t, kPieceWidth> values;
    ForEachRow(part, order, [&](int32_t sourceY, int32_t targetY) {
        for (int32_t done = 0; done < part.width;) {
            const int32_t count = std::min(kPieceWidth, part.width - done);
            const int32_t x = order.isLeftwards ? part.width - done - count : done;
            LoadValues(source.format, source.Row(sourceY), part.sourceX + x, count, values.data());
            Write(target.Row(targetY), part.targetX + x, count, values.data());
            done += count;
        }
    });
}

}  // namespace fenlight::platform
