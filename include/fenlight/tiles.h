/* SPDX-License-Identifier: Zlib */
/* Tile maps. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_TILES_H
#define FENLIGHT_TILES_H
#include "types.h"

struct TileArguments {
    uintptr_t tileDC;
    int32_t tileY;
    int32_t columns;
    int32_t rows;
    int32_t tileWidth;
    int32_t tileHeight;
    const uint8_t *map;
    int32_t mapWidth;
    int32_t startColumn;
    int32_t startRow;
    uintptr_t destDC;
    int32_t destX;
    int32_t destY;
    int32_t mode;
    const uint16_t *tileList;
};

FENLIGHT_BEGIN_C

FENLIGHT_API void SetTiles(uintptr_t tileDC, int32_t tileY, int32_t columns, int32_t rows, int32_t tileWidth,
                           int32_t tileHeight, const uint8_t *map, int32_t mapWidth, int32_t startColumn,
                           int32_t startRow, uintptr_t destDC, int32_t destX, int32_t destY, int32_t mode,
                           const uint16_t *tileList) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetTiles5(const struct TileArguments *block) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
