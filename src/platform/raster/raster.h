// SPDX-License-Identifier: Zlib
// Block transfers between pixel views: clipping, raster operations, conversions, scaling, key colours. The
// callers hold the locks of both bitmaps; nothing here takes one. Memory is asked for only where source and
// target share theirs, and by CopyUnion, which does without if there is none.
//
// All coordinates may be any 32-bit number: a transfer is clipped to the target at both ends, and what lies
// outside the source is not transferred.
#pragma once

#include <cstdint>
#include <span>

#include "fenlight/platform/graphics.h"
#include "platform/raster/pixel_view.h"

namespace fenlight::platform {

struct Block {
    int32_t targetX, targetY, width, height, sourceX, sourceY;
};

struct ScaledBlock {
    // A negative size mirrors: -n covers the n pixels from the start leftwards or upwards, the start
    // included.
    int32_t targetX, targetY, targetWidth, targetHeight;
    int32_t sourceX, sourceY, sourceWidth, sourceHeight;
};

// COLORREFs of the contexts of a transfer.
struct TransferColours {
    COLORREF targetText = 0;               // what a 0 of a monochrome source becomes
    COLORREF targetBackground = 0xFFFFFF;  // what a 1 of a monochrome source becomes
    COLORREF sourceBackground = 0xFFFFFF;  // what becomes 1 in a monochrome target
    COLORREF brush = 0xFFFFFF;             // the pattern
};

// BitBlt. `source` may be null where the code needs none, and is ignored then. Source and target may be one
// bitmap, or two over the same memory. A width or height below 1 transfers nothing. Source pixels and the
// pattern are first turned into the target's numbers (the nearest palette index; the unused byte of 32 bits
// becomes 0 unless the source has 32 bits too), then combined bit by bit; all 32 bits take part. False where
// the code needs a source and there is none, or where a copy of shared memory was needed and there was no
// memory for it; nothing is changed then.
bool BlitBlock(const PixelView &target, const PixelView *source, const Block &block, DWORD rasterCode,
               const TransferColours &colours) noexcept;

// StretchBlt, pixels dropped or repeated: step i of the target takes step floor(i * source size / target
// size) of the source, both counted from their starts. Clipping doesn't move samples. Fails as BlitBlock
// does.
bool StretchBlock(const PixelView &target, const PixelView *source, const ScaledBlock &block,
                  DWORD rasterCode, const TransferColours &colours) noexcept;

// TransparentBlt: pixels of the source whose colour is `key` (a COLORREF) leave the target as it is;
// CLR_INVALID is nobody's colour. Of a monochrome source 1 leaves the target and 0 paints black, whatever the
// key. This stands for transfers through masks in contexts of their own, and gives what those give: of the
// colours only the source's background plays a part, which becomes 1 in a monochrome target. Fails as
// BlitBlock does.
bool KeyedBlock(const PixelView &target, const PixelView &source, const ScaledBlock &block, COLORREF key,
                const TransferColours &colours) noexcept;

// SRCCOPY of the union of the rectangles, at equal coordinates, each pixel once. Empty and inverted
// rectangles count for nothing. Fails as BlitBlock does, but only where the two views share memory.
bool CopyUnion(const PixelView &target, const PixelView &source, std::span<const RECT> rectangles,
               const TransferColours &colours) noexcept;

// One pixel. The caller has checked that it lies inside, and may hold the bitmap's lock for many of them.
COLORREF ReadPixel(const PixelView &view, int32_t x, int32_t y) noexcept;
void WritePixel(const PixelView &view, int32_t x, int32_t y, COLORREF colour) noexcept;
// The colour that a bitmap shows for `colour`: the nearest palette entry, black or white, or the colour
// itself.
COLORREF NearestColour(const PixelView &view, COLORREF colour) noexcept;

// Does the code's truth table depend on the source?
constexpr bool NeedsSource(DWORD rasterCode) { return ((rasterCode >> 2 ^ rasterCode) & 0x00330000u) != 0; }

}  // namespace fenlight::platform
