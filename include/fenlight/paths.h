/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_PATHS_H
#define FENLIGHT_PATHS_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Paths: a way through a map, and rounder corners for it.
 *
 * A map is an FX buffer, cut into square cells of `cellSize` pixels. A cell is free if all its pixels are
 * pure white; a single byte below 255 blocks it. Y counts from the last row of pixels in the buffer's block
 * towards the first, so in the map of an image, which has its top row first, y = 0 is the bottom edge, and a
 * sprite's Y is biHeight - 1 - y. Rows are taken as packed, 3 * biWidth bytes each, and counted back from
 * Pixels + biSizeImage; so choose widths that are multiples of 4, where buffers have no other rows. Pixels
 * that fill no cell, at the right and at the start of the block, are not looked at.
 *
 * A path is an array of points without header and end mark, each an X and a Y in pixels as words of 16 bits.
 * It is what MoveSpriteWithTable takes, with FindPath's result / 4 as the number of entries. Maps of more
 * than 32767 pixels an edge have positions that do not fit a sprite's waypoints, those of more than 65535
 * positions that do not fit a word.
 *
 * The search is a walk, not a search for the shortest way: the walker goes to the one of its four neighbours
 * that it has left least often, and what it walked is cut short afterwards. It is fast and always goes the
 * same way on the same map, but the path is longer than the shortest, and it may give up on a very tangled
 * map: docs/paths.md has numbers. Nothing is kept between calls. */

/// Looks for a way from one position to another in steps to the right, left, up and down, and writes it with
/// all loops and corners between neighbouring cells cut out. Two points that follow each other are at most
/// two cells apart on each axis. The line between them is not looked at: it may touch the corner of a blocked
/// cell, or of two; bit 0 of `flags` keeps a margin.
/// @param pathArray     receives the points: the start as given, then the corner with the lowest
///                      coordinates of each cell on the way, at last of the cell that the end lies in, and
///                      the end as given. Room for (columns * rows + 2) * 4 bytes is enough for any map, with
///                      biWidth / cellSize columns and biHeight / cellSize rows. 0 gives 0.
/// @param fx            FX handle of the map, which is only read; 0 gives 0
/// @param cellSize      edge of a cell in pixels, from 1 to the lesser of the map's edges; else it gives 0
/// @param startX        pixels, 0 to columns * cellSize - 1; else the result is 0
/// @param startY        pixels, 0 to rows * cellSize - 1, from the block's last row on; else the result is 0
/// @param endX, endY    in the same ranges. If it lies in the start's cell, the walker leaves and comes back.
/// @param flags         bit 0 blocks the eight neighbours of each blocked cell too, also under start and
///                      end; other bits mean nothing
/// @return bytes written, 4 for each point and at least 12. 0 if start or end is blocked, if no
///         straight steps lead from one to the other, if the walker came to a cell that it had left 32 times,
///         or if the header's biSizeImage is less than its sizes need. -1 without memory, of which about 9
///         bytes a cell are taken. The array is unchanged in all these cases.
/// @note Any thread, and several at once on one map if none changes it. Handles of freed buffers must not be
///       passed. The time is bounded by 32 steps for each cell.
FENLIGHT_API int32_t FindPath(int16_t *pathArray, uintptr_t fx, int32_t cellSize, int32_t startX,
                              int32_t startY, int32_t endX, int32_t endY, int32_t flags) FENLIGHT_NOEXCEPT;

/// Rounds the corners of a path: each point between the ends becomes the average, rounded down, of the one
/// before it, which has been averaged already, itself and the one behind it. First all X are gone through and
/// then all Y; the last point but one keeps its X. Points move off the cells of the map, so keep a margin.
/// @param pathArray  points as FindPath writes them, changed in place, taken as unsigned words; 0: nothing
/// @param byteCount  4 for each point, a remainder is ignored; fewer than 3 points stay as they are. With 3
///                   points the middle one is averaged on both axes.
/// @param passes     how often; 0 does nothing, below 0 counts as 1
/// @return 0
/// @note Any thread, but one at a time for one array.
FENLIGHT_API int32_t SmoothPath(int16_t *pathArray, int32_t byteCount, int32_t passes) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
