// SPDX-License-Identifier: Zlib
// Block transfers between pixel views: clipping, raster operations, conversions, scaling, key colours. The
// callers hold the locks of both bitmaps; nothing here takes one or allocates without saying so.
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
    int32_t targetX, targetY, targetWidth, targetHeight;  // a negative size mirrors
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
// bitmap. False where the code needs a source and there is none.
bool BlitBlock(const PixelView &target, const PixelView *source, const Block &block, DWORD rasterCode,
               const TransferColours &colours) noexcept;

// StretchBlt, pixels dropped or repeated.
bool StretchBlock(const PixelView &target, const PixelView *source, const ScaledBlock &block,
                  DWORD rasterCode, const TransferColours &colours) noexcept;

// TransparentBlt: pixels of the source whose colour is `key` (a COLORREF) leave the target as it is.
bool KeyedBlock(const PixelView &target, const PixelView &source, const ScaledBlock &block, COLORREF key,
                const TransferColours &colours) noexcept;

// The union of the rectangles, at equal coordinates, each pixel once.
bool CopyUnion(const PixelView &target, const PixelView &source, std::span<const RECT> rectangles,
               const TransferColours &colours) noexcept;

// One pixel. The caller has checked that it lies inside.
COLORREF ReadPixel(const PixelView &view, int32_t x, int32_t y) noexcept;
void WritePixel(const PixelView &view, int32_t x, int32_t y, COLORREF colour) noexcept;
// The colour that a bitmap shows for `colour`: the nearest palette entry, black or white, or the colour
// itself.
COLORREF NearestColour(const PixelView &view, COLORREF colour) noexcept;

// Does the code's truth table depend on the source?
constexpr bool NeedsSource(DWORD rasterCode) { return ((rasterCode >> 2 ^ rasterCode) & 0x00330000u) != 0; }

}  // namespace fenlight::platform
