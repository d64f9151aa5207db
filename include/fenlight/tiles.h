/* SPDX-License-Identifier: Zlib */
/* Tile maps: large scenes out of few small pictures.
 *
 * A strip holds the tiles side by side in a context: tile n starts at x = n * tileWidth. A map in the
 * caller's memory holds one byte for each tile of the scene, the tile's number, row by row; no number has a
 * meaning of its own. A call paints a section of the map. Scrolling by whole tiles is a call with another
 * section, scrolling by pixels one with a position before the edge of the target.
 *
 * The library keeps neither copy nor reference of map and list beyond the call.
 */
#ifndef FENLIGHT_TILES_H
#define FENLIGHT_TILES_H
#include "types.h"

/* The arguments of SetTiles in their order. */
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

/// Paints a section of a map, row by row from the top, each row from the left. The picture is that of one
/// PaintImage for each tile.
/// @param tileDC       context that holds the strip; may be destDC
/// @param tileY        top edge of the strip there, in pixels
/// @param columns      tiles to paint across
/// @param rows         tiles to paint down
/// @param tileWidth    pixels of a tile; if one of these four is below 1, nothing is painted
/// @param tileHeight   pixels of a tile
/// @param map          tile numbers; 0 paints nothing. Only the section is read, and of it what the target
///                     shows.
/// @param mapWidth     bytes of a row of the map
/// @param startColumn  column of the map at which the section begins
/// @param startRow     row of the map at which it begins. The section must lie within the map: its size is
///                     the caller's business.
/// @param destDC       context to paint on
/// @param destX        left edge of the section's first tile there; any number, what lies outside is clipped
/// @param destY        top edge of the first tile
/// @param mode         as for PaintImage; -1 takes the transparent colour of each tile from its own top right
///                     pixel
/// @param tileList     16-bit numbers of the tiles to be painted, ended by 1111; all others are left out, and
///                     what lies under them stays. 0 paints all.
/// @note What of a tile lies beyond the strip's context is not painted. A dead context paints nothing.
/// @note Any thread. With modes 0 and -1 most tiles of a large section appear in one step, otherwise each for
///       itself.
FENLIGHT_API void SetTiles(uintptr_t tileDC, int32_t tileY, int32_t columns, int32_t rows, int32_t tileWidth,
                           int32_t tileHeight, const uint8_t *map, int32_t mapWidth, int32_t startColumn,
                           int32_t startRow, uintptr_t destDC, int32_t destX, int32_t destY, int32_t mode,
                           const uint16_t *tileList) FENLIGHT_NOEXCEPT;
/// The same with one argument.
/// @param block  the 15 arguments of SetTiles; only read. 0 paints nothing.
/// @note As SetTiles.
FENLIGHT_API void SetTiles5(const struct TileArguments *block) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
