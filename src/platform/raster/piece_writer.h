// SPDX-License-Identifier: Zlib
// The general way of a transfer: pieces of a row as numbers, converted, combined or keyed, and stored. Works
// for every pair of formats and every code; transfers that matter for speed have row loops of their own
// beside it. A writer belongs to one transfer on one thread.
#pragma once

#include <cstdint>

#include "platform/raster/colour_conversion.h"
#include "platform/raster/overlap.h"
#include "platform/raster/raster_codes.h"
#include "platform/raster/row_values.h"

namespace fenlight::platform {

class PieceWriter {
  public:
    // Combines by a raster code.
    PieceWriter(const PixelView &source, const PixelView &target, DWORD rasterCode,
                const TransferColours &colours) noexcept;
    // Leaves out the pixels of the key colour (0x00RRGGBB, or kNoColour). The background is the COLORREF that
    // becomes 1 in a monochrome target.
    static PieceWriter Keyed(const PixelView &source, const PixelView &target, uint32_t key,
                             COLORREF sourceBackground) noexcept;

    bool IsPlainCopy() const { return !isKeyed_ && TruthTable(SRCCOPY) == table_; }
    // Takes the source's numbers, at most kPieceWidth of them, and spoils them.
    void Write(uint8_t *targetRow, int32_t x, int32_t count, uint32_t *values) noexcept;
    // A clipped block of equal sizes, piece by piece.
    void WriteBlock(const PixelView &target, const PixelView &source, const Block &part,
                    WalkOrder order) noexcept;

  private:
    void WriteKeyed(uint8_t *targetRow, int32_t x, int32_t count, uint32_t *values) noexcept;
    void MarkKeys(const uint32_t *values, int32_t count, uint32_t *masks) const noexcept;

    const PixelView &source_;
    PixelFormat targetFormat_;
    ValueConverter converter_;
    uint32_t pattern_;
    uint32_t key_ = kNoColour;
    uint8_t table_;
    bool isKeyed_ = false;
};

}  // namespace fenlight::platform
