// SPDX-License-Identifier: Zlib
// A private copy of the tiles of a strip in the 32 bits of the screen, for one call of the tile painter. With
// it a whole map is painted under one lock of the target, where two locks and two look-ups for each tile
// would take three times as long as its pixels. The copy is needed because nobody may hold two surfaces at
// once.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "fenlight/platform/graphics.h"
#include "fenlight/tiles.h"
#include "painting/tile_rows.h"
#include "platform/raster/pixel_view.h"

namespace fenlight {

class TileSheet {
  public:
    TileSheet() noexcept = default;
    TileSheet(const TileSheet &) = delete;
    TileSheet &operator=(const TileSheet &) = delete;
    ~TileSheet();

    // The tiles `first` to `last`, which must lie within the strip as a whole. False if memory or handles ran
    // out.
    [[nodiscard]] bool Make(const TileArguments &map, int first, int last) noexcept;

    int32_t TileWidth() const { return tileWidth_; }
    int32_t TileHeight() const { return tileHeight_; }
    ptrdiff_t Pitch() const { return pitch_; }
    const uint8_t *TileAt(uint8_t tile) const { return pixels_ + ptrdiff_t{tile - first_} * tileWidth_ * 4; }
    // The colour of a tile's top right pixel, 0x00RRGGBB.
    uint32_t KeyOf(uint8_t tile) const noexcept {
        uint32_t pixel;
        std::memcpy(&pixel, TileAt(tile) + ptrdiff_t{tileWidth_ - 1} * 4, sizeof pixel);
        return pixel & 0xFFFFFF;
    }

  private:
    HDC context_ = 0;
    HBITMAP bitmap_ = 0;
    const uint8_t *pixels_ = nullptr;  // of the first tile
    ptrdiff_t pitch_ = 0;
    int first_ = 0;
    int32_t tileWidth_ = 0;
    int32_t tileHeight_ = 0;
};

// Paints tiles of a sheet on a locked 32-bit surface, clipped, all of them when it ends. No two of them may
// cover the same pixel.
class TileBatch {
  public:
    TileBatch(const platform::PixelView &target, const TileSheet &sheet, bool isKeyed) noexcept;
    TileBatch(const TileBatch &) = delete;
    TileBatch &operator=(const TileBatch &) = delete;
    ~TileBatch() { Flush(); }

    // With its corner at x, y.
    void Add(int64_t x, int64_t y, uint8_t tile) noexcept {
        if (!IsInside(x, y)) return PaintPart(x, y, tile);
        if (count_ == places_.size()) Flush();
        TilePlace &place = places_[count_++];
        place.target = PixelAt(x, y);
        place.source = sheet_.TileAt(tile);
        place.key = KeyOf(tile);
    }

  private:
    bool IsInside(int64_t x, int64_t y) const noexcept {
        return x >= 0 && y >= 0 && x + shape_.width <= target_.width && y + shape_.height <= target_.height;
    }
    uint32_t KeyOf(uint8_t tile) const noexcept { return isKeyed_ ? sheet_.KeyOf(tile) : 0; }
    void PaintPart(int64_t x, int64_t y, uint8_t tile) const noexcept;
    uint8_t *PixelAt(int64_t x, int64_t y) const noexcept {
        return target_.Row(static_cast<int32_t>(y)) + 4 * x;
    }
    void Flush() noexcept;

    const platform::PixelView &target_;
    const TileSheet &sheet_;
    const TileShape shape_;
    const decltype(TileKernels::copy) copy_;
    const bool isKeyed_;
    size_t count_ = 0;
    std::array<TilePlace, 64> places_;
};

}  // namespace fenlight
