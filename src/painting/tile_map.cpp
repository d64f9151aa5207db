// SPDX-License-Identifier: Zlib
#include "painting/tile_map.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <limits>

#include "painting/painting.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

constexpr uint16_t kTileListEnd = 1111;

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
    std::bitset<256> chosen_;
};

struct Range {
    int64_t first, end;
};

// Which of `count` tiles from `start` on touch 0 to limit - 1.
Range VisibleTiles(int64_t start, int64_t size, int64_t count, int64_t limit) noexcept {
    if (start >= limit) return {0, 0};
    return {start < 0 ? -start / size : 0, std::min(count, (limit - start + size - 1) / size)};
}

bool IsUsable(const TileArguments &map) noexcept {
    return map.map != nullptr && map.columns > 0 && map.rows > 0 && map.tileWidth > 0 && map.tileHeight > 0;
}

void PaintCell(const TileArguments &map, int64_t column, int64_t row, uint8_t tile) noexcept {
    const int64_t sourceX = int64_t{tile} * map.tileWidth;
    if (sourceX > std::numeric_limits<int32_t>::max()) return;
    Paint({map.destDC, static_cast<int32_t>(map.destX + column * map.tileWidth),
           static_cast<int32_t>(map.destY + row * map.tileHeight), map.tileWidth, map.tileHeight, map.tileDC,
           static_cast<int32_t>(sourceX), map.tileY},
          map.mode);
}

}  // namespace

void PaintTiles(const TileArguments &map) noexcept {
    if (!IsUsable(map)) return;
    Range columns, rows;
    {
        const platform::SurfaceAccess target(map.destDC);
        if (!target) return;
        columns = VisibleTiles(map.destX, map.tileWidth, map.columns, target.View().width);
        rows = VisibleTiles(map.destY, map.tileHeight, map.rows, target.View().height);
    }
    TileChoice choice(map.tileList);
    for (int64_t row = rows.first; row < rows.end; ++row) {
        const uint8_t *tiles = map.map + (map.startRow + row) * map.mapWidth + map.startColumn;
        for (int64_t column = columns.first; column < columns.end; ++column)
            if (choice.Contains(tiles[column])) PaintCell(map, column, row, tiles[column]);
    }
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
