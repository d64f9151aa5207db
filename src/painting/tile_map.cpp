// SPDX-License-Identifier: Zlib
#include "painting/tile_map.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>
#include <limits>

#include "images/raster_modes.h"
#include "painting/painting.h"
#include "painting/tile_sheet.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

using platform::PixelFormat;
using platform::SurfaceAccess;

constexpr uint16_t kTileListEnd = 1111;
constexpr DWORD kTruthTable = 0xFF0000;  // the bits of a raster code that count
// The pixels of larger tiles take so long that the locks do not count: at 64 x 64 both ways are level.
constexpr int32_t kLargestSheetTile = 32;  // pixels, each way
// A sheet must be painted from that often, on average, to be worth its copy.
constexpr int64_t kUsesPerSheetTile = 2;
// What it costs to make any sheet, in tiles painted one by one.
constexpr int64_t kFewestSheetCells = 32;

using TileSet = std::bitset<256>;

// The tiles of a list. It is read once, and only as far as a tile must be looked for.
class TileChoice {
  public:
    explicit TileChoice(const uint16_t *list) noexcept : next_(list), isAll_(list == nullptr) {}

    bool Contains(uint8_t tile) noexcept {
        if (isAll_) return true;
        while (!chosen_[tile] && next_ != nullptr) ReadNext();
        return chosen_[tile];
    }

  private:
    void ReadNext() noexcept {
        uint16_t tile;
        std::memcpy(&tile, next_, sizeof tile);  // the caller's array may lie at an odd address
        next_ = tile == kTileListEnd ? nullptr : next_ + 1;
        if (tile < chosen_.size()) chosen_[tile] = true;
    }

    const uint16_t *next_;
    bool isAll_;
    TileSet chosen_;
};

struct Range {
    int64_t first, end;
};

// Which of `count` tiles from `start` on touch 0 to limit - 1.
Range VisibleTiles(int64_t start, int64_t size, int64_t count, int64_t limit) noexcept {
    if (start >= limit) return {0, 0};
    return {start < 0 ? -start / size : 0, std::min(count, (limit - start + size - 1) / size)};
}

// The part of a map that the target shows, for one call.
class MapSection {
  public:
    explicit MapSection(const TileArguments &map) noexcept;

    // Makes a sheet of the tiles that are worth it. None where it would not pay or cannot be.
    TileSet FillSheet(TileSheet &sheet) noexcept;
    // Paints these tiles under one lock. True if they were all that there is to paint.
    bool PaintFromSheet(const TileSheet &sheet, TileSet &tiles) noexcept;
    void PaintAllBut(const TileSet &painted) noexcept;

  private:
    // paint(x, y, tile) in the order of the map; what is not in the list is left out.
    template <class PaintTile>
    void ForEachCell(PaintTile paint) noexcept;
    bool MaySheet() const noexcept;
    int CountWholeTiles() const noexcept;
    void PaintCell(int64_t x, int64_t y, uint8_t tile) const noexcept;

    const TileArguments &map_;
    TileChoice choice_;
    Range columns_{0, 0};
    Range rows_{0, 0};
    bool isWide_ = false;  // 32 bits
};

MapSection::MapSection(const TileArguments &map) noexcept : map_(map), choice_(map.tileList) {
    const SurfaceAccess target(map.destDC);
    if (!target) return;
    columns_ = VisibleTiles(map.destX, map.tileWidth, map.columns, target.View().width);
    rows_ = VisibleTiles(map.destY, map.tileHeight, map.rows, target.View().height);
    isWide_ = target.View().format == PixelFormat::Bgrx32;
}

template <class PaintTile>
void MapSection::ForEachCell(PaintTile paint) noexcept {
    for (int64_t row = rows_.first; row < rows_.end; ++row) {
        const uint8_t *tiles = map_.map + (map_.startRow + row) * map_.mapWidth + map_.startColumn;
        for (int64_t column = columns_.first; column < columns_.end; ++column) {
            const uint8_t tile = tiles[column];
            if (choice_.Contains(tile))
                paint(map_.destX + column * map_.tileWidth, map_.destY + row * map_.tileHeight, tile);
        }
    }
}

// Within one surface a tile may be painted over the strip and change those that follow.
bool MapSection::MaySheet() const noexcept {
    const bool isCopy = map_.mode == kTransparentMode ||
                        (RasterCodeOfMode(map_.mode) & kTruthTable) == (SRCCOPY & kTruthTable);
    return isCopy && isWide_ && map_.tileDC != map_.destDC && map_.tileWidth <= kLargestSheetTile &&
           map_.tileHeight <= kLargestSheetTile;
}

// The tiles from 0 on that lie within the strip as a whole. Monochrome ones take their colours from the
// target.
int MapSection::CountWholeTiles() const noexcept {
    const SurfaceAccess source(map_.tileDC);
    if (!source || source.View().format == PixelFormat::Mono) return 0;
    if (map_.tileY < 0 || int64_t{map_.tileY} + map_.tileHeight > source.View().height) return 0;
    return std::min(source.View().width / map_.tileWidth, 256);
}

TileSet MapSection::FillSheet(TileSheet &sheet) noexcept {
    if (!MaySheet()) return {};
    const int wholeTiles = CountWholeTiles();
    std::array<int64_t, 256> cells{};
    ForEachCell([&](int64_t, int64_t, uint8_t tile) { ++cells[tile]; });
    TileSet tiles;
    int64_t uses = 0;
    int first = 0, last = -1;
    for (int tile = 0; tile < wholeTiles; ++tile) {
        const int64_t count = cells[static_cast<size_t>(tile)];
        if (count == 0) continue;
        tiles.set(static_cast<size_t>(tile));
        if (uses == 0) first = tile;
        last = tile;
        uses += count;
    }
    if (uses < std::max<int64_t>(kFewestSheetCells, kUsesPerSheetTile * (last - first + 1))) return {};
    return sheet.Make(map_, first, last) ? tiles : TileSet();
}

bool MapSection::PaintFromSheet(const TileSheet &sheet, TileSet &tiles) noexcept {
    SurfaceAccess target(map_.destDC);
    // Another bitmap may have been selected meanwhile.
    if (!target || target.View().format != PixelFormat::Bgrx32) tiles.reset();
    if (tiles.none()) return false;
    target.MarkChanged();
    TileBatch batch(target.View(), sheet, map_.mode == kTransparentMode);
    bool isAll = true;
    ForEachCell([&](int64_t x, int64_t y, uint8_t tile) {
        if (tiles[tile])
            batch.Add(x, y, tile);
        else
            isAll = false;
    });
    return isAll;
}

void MapSection::PaintCell(int64_t x, int64_t y, uint8_t tile) const noexcept {
    // Beyond the last coordinate there is no source; modes that need none paint all the same.
    const int64_t sourceX =
        std::min<int64_t>(int64_t{tile} * map_.tileWidth, std::numeric_limits<int32_t>::max());
    Paint({map_.destDC, static_cast<int32_t>(x), static_cast<int32_t>(y), map_.tileWidth, map_.tileHeight,
           map_.tileDC, static_cast<int32_t>(sourceX), map_.tileY},
          map_.mode);
}

void MapSection::PaintAllBut(const TileSet &painted) noexcept {
    ForEachCell([&](int64_t x, int64_t y, uint8_t tile) {
        if (!painted[tile]) PaintCell(x, y, tile);
    });
}

bool IsUsable(const TileArguments &map) noexcept {
    return map.map != nullptr && map.columns > 0 && map.rows > 0 && map.tileWidth > 0 && map.tileHeight > 0;
}

}  // namespace

void PaintTiles(const TileArguments &map) noexcept {
    if (!IsUsable(map)) return;
    MapSection section(map);
    TileSheet sheet;
    TileSet painted = section.FillSheet(sheet);
    if (painted.any() && section.PaintFromSheet(sheet, painted)) return;
    section.PaintAllBut(painted);
}

}  // namespace fenlight

void SetTiles(uintptr_t tileDC, int32_t tileY, int32_t columns, int32_t rows, int32_t tileWidth,
              int32_t tileHeight, const uint8_t *map, int32_t mapWidth, int32_t startColumn, int32_t startRow,
              uintptr_t destDC, int32_t destX, int32_t destY, int32_t mode,
              const uint16_t *tileList) noexcept {
    fenlight::PaintTiles({tileDC, tileY, columns, rows, tileWidth, tileHeight, map, mapWidth, startColumn,
                          startRow, destDC, destX, destY, mode, tileList});
}

void SetTiles5(const TileArguments *block) noexcept {
    if (block != nullptr) fenlight::PaintTiles(*block);
}
