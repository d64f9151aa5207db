// SPDX-License-Identifier: Zlib
// What a caller's bitmap header says, checked once. Nothing here reads more than the header announces.
#pragma once

#include <array>
#include <span>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/bitmap.h"

namespace fenlight::platform {

struct DibLayout {
    int32_t width = 0;
    int32_t height = 0;  // always positive
    bool isTopDown = false;
    PixelFormat format = PixelFormat::Bgrx32;
    uint32_t headerBytes = 0;  // the colour table begins behind them
    int32_t colours = 0;       // entries of the colour table that count, 0 without one

    int64_t Pitch() const { return RowBytes(width, format, 4); }
    // `lines` lines of this layout that begin at `bits`.
    PixelView View(void *bits, int32_t lines) const;
};

using Palette = std::array<uint32_t, kPaletteSize>;

// The format of a picture of that depth with a colour table where it can have one. False for other depths.
bool ReadFormat(UINT bitCount, PixelFormat &format) noexcept;
// Uncompressed, 1, 4, 8, 24 or 32 bits, of a size that a bitmap may have, and a header of 40, 108 or 124
// bytes. False for all others. `header` may stand at any address; its first four bytes are its size.
bool ReadDibLayout(const void *header, DibLayout &layout) noexcept;
// The colour table behind `header`, the rest black.
Palette ReadColourTable(const void *header, const DibLayout &layout) noexcept;
// Writes as many colours as the layout has.
void WriteColourTable(void *header, const DibLayout &layout, std::span<const uint32_t> colours) noexcept;

}  // namespace fenlight::platform
