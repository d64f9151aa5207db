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

PieceWriter PieceWriter::Keyed(const PixelView &source, const PixelView &target, uint32_t key) noexcept {
    PieceWriter writer(source, target, SRCCOPY, TransferColours{});
    writer.isKeyed_ = true;
    writer.key_ = key;
    return writer;
}

void PieceWriter::Write(uint8_t *targetRow, int32_t x, int32_t count, uint32_t *values) noexcept {
    if (isKeyed_) return WriteKeyed(targetRow, x, count, values);
    converter_.Convert(values, count);
    if (table_ == TruthTable(SRCCOPY)) return StoreValues(targetFormat_, targetRow, x, count, values);
    std::array<uint32_t, kPieceWidth> present;
    LoadValues(targetFormat_, targetRow, x, count, present.data());
    CombineValues(table_, pattern_, values, present.data(), count);
    StoreValues(targetFormat_, targetRow, x, count, present.data());
}

// A monochrome source is its own mask, whatever the key: that is what a copy of it to a mask bitmap gives.
bool PieceWriter::IsKey(uint32_t value) const noexcept {
    return source_.format == PixelFormat::Mono ? value != 0 : ColourOfValue(source_, value) == key_;
}

void PieceWriter::WriteKeyed(uint8_t *targetRow, int32_t x, int32_t count, uint32_t *values) noexcept {
    std::array<uint32_t, kPieceWidth> present;
    std::array<bool, kPieceWidth> keeps;
    for (int32_t i = 0; i < count; ++i) keeps[static_cast<size_t>(i)] = IsKey(values[i]);
    converter_.Convert(values, count);
    LoadValues(targetFormat_, targetRow, x, count, present.data());
    for (int32_t i = 0; i < count; ++i) {
        if (keeps[static_cast<size_t>(i)]) values[i] = present[static_cast<size_t>(i)];
    }
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
