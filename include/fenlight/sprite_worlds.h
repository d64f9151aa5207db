/* SPDX-License-Identifier: Zlib */
/* Sprites: backgrounds and views.
 *
 * Sprites are drawn into backDC, and there are two ways from there to screenDC. The plain way is the one
 * from the start: both have the same coordinates, and the rectangles of the sprites are copied. In the view
 * way backDC and cleanDC are a world larger than the screen, and in each frame a view of it, at a scroll
 * position, is copied to the top left corner of the screen. Scrolling moves no pixel of the world.
 *
 * Seven settings decide this. They are 0 when the library is loaded, belong to no sprite, and stay when the
 * last sprite goes. The sprite thread reads them at the start of a frame and then adds the steps to the
 * position, so scrolling rests while there is no sprite. The contexts of the view are those of the first
 * sprite of the list.
 *
 * World coordinates are those in backDC, view coordinates those on the screen. A sprite is in the world and
 * leaves the view when that scrolls on, unless SpriteScrollMode ties it to the view. In view mode a caller
 * that paints the background paints cleanDC and backDC alike: only what a sprite covers goes from the first
 * to the second. */
#ifndef FENLIGHT_SPRITE_WORLDS_H
#define FENLIGHT_SPRITE_WORLDS_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Sets how the background is shown and scrolled, from the next frame on. Each argument of 888888 leaves its
/// setting as it was, so that this number itself can't be set.
/// @param backgroundMode            0: the sprites' rectangles go to the screen; any other value: the view
/// @param viewWidth, viewHeight     size of the view in pixels; 0 or below: the screen is left unchanged
/// @param scrollX, scrollY          top left corner of the view in backDC, in pixels. What of the view lies
///                                  outside the bitmap leaves the screen there as it was.
/// @param scrollStepX, scrollStepY  pixels added to the position in each frame; may be below 0. The position
///                                  has no limit: set it or the steps again where the world ends or repeats.
/// @return 0
/// @note Any thread, with or without sprites. Settings are written one by one: a frame that starts meanwhile
///       can show the old scrollX with the new scrollY.
FENLIGHT_API int32_t InitSpriteBackground(int32_t backgroundMode, int32_t viewWidth, int32_t viewHeight,
                                          int32_t scrollX, int32_t scrollY, int32_t scrollStepX,
                                          int32_t scrollStepY) FENLIGHT_NOEXCEPT;

/// Reads the settings. The position is that of the next frame, one step ahead of what the screen shows.
/// @param buffer  seven numbers, written in the order of InitSpriteBackground's arguments; 0: nothing is
///                written
/// @return `buffer`
/// @note Any thread, with or without sprites.
FENLIGHT_API int32_t *GetBackgroundInfos(int32_t *buffer) FENLIGHT_NOEXCEPT;

/// Ties a sprite to the world or to the view.
/// @param sprite  live handle from InitSprite or CopySprite; 0 changes nothing
/// @param mode    0: position and target are in world coordinates (the state of a new sprite). Any other
///                value: in view coordinates, so that it keeps its place on the screen; give 1, the value
///                that MouseOverSprite knows. Its cage is in view coordinates too, its moving rectangle and
///                its waypoints stay in world coordinates. With background mode 0 it is drawn and shown at
///                its place plus the scroll position.
/// @return 0
/// @note Any thread; takes effect in the sprite's next pass. While a frame runs, position and target of such
///       a sprite are world coordinates for everybody: a getter can read them so, a copy made then keeps
///       them, and what MoveSprite or SetSpritePos writes then counts as world coordinates. So give it its
///       place before its mode.
FENLIGHT_API int32_t SpriteScrollMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;

/// Shows the sprites of a table that are inside a rectangle and takes the others out of the drawing: calls
/// SetSpriteFixMode with 0 for each sprite whose top left corner lies inside, with 1 for each other. The
/// sprite's size plays no part, so one vanishes as soon as its corner has left the rectangle.
/// @param table                     sprite handles; each 0 or live, which is not checked. 0 are skipped. The
///                                  table is only read during the call; 0: nothing happens.
/// @param tableBytes                size of the table in bytes: the number of handles times the size of
///                                  uintptr_t. A remainder is left out; less than one handle does nothing.
/// @param left, top, right, bottom  the rectangle, in the coordinates of the sprites' positions; left and top
///                                  are inside, right and bottom outside
/// @return 0
/// @note Any thread; takes effect in each sprite's next pass.
FENLIGHT_API int32_t VisualTableFix(const uintptr_t *table, int32_t tableBytes, int32_t left, int32_t top,
                                    int32_t right, int32_t bottom) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
