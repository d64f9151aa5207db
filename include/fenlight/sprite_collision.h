/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_COLLISION_H
#define FENLIGHT_SPRITE_COLLISION_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sprites: collision.
 *
 * Sprites against sprites are asked for: each function looks once, on the caller's thread, at the sprites as
 * they stand, and changes nothing. Sprites against the background are not asked for: SetBackAutoCollision
 * gives a sprite a mask of the world and a reaction, and the sprite thread does the rest.
 *
 * Two boxes meet if they overlap or touch: a box reaches from X to X + width and from Y to Y + height, both
 * ends included, so that sprites that only lie edge to edge meet. Positions are compared as they are, without
 * regard to the scrolled view: a sprite that is fixed to the view (SpriteScrollMode) is compared by its place
 * in the view. What can be part of a test:
 *
 *   Collide, Collision               both must be alive (ExistSprite gives 0)
 *   CollideMore, CollideAll          the sprite asked for need not be alive, those that are found must be
 *   CollideUnknown                   both must be alive and drawn (GetSpriteFixMode gives 0)
 *
 * In every function a sprite is a live handle from InitSprite or CopySprite; 0 meets nothing. A handle whose
 * record was freed (by CleanUp, or when all sprites were gone) must not be used.
 *
 * Any thread may call these functions beside the sprite thread, which goes on moving sprites meanwhile: a
 * test can see a new X with an old Y. */

/// Tells whether two sprites' boxes meet.
/// @param spriteA, spriteB  in either order
/// @return 1 or 0; a living sprite meets itself
FENLIGHT_API int32_t Collide(uintptr_t spriteA, uintptr_t spriteB) FENLIGHT_NOEXCEPT;

/// Looks for the first sprite of a table whose box meets the sprite's.
/// @param table  `count` sprite handles; entries of 0 are passed over. 0: gives 0
/// @param count  entries; below 1: gives 0
/// @return the handle from the table, or 0. The sprite itself is found if it stands in the table.
FENLIGHT_API uintptr_t CollideMore(uintptr_t sprite, const uintptr_t *table, int32_t count) FENLIGHT_NOEXCEPT;

/// Looks for the first sprite of all, in the order of drawing, whose box meets the sprite's.
/// @return its handle, never `sprite` itself, or 0
FENLIGHT_API uintptr_t CollideAll(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Tells whether two sprites meet pixel by pixel: whether an opaque pixel of each lies on the same point.
/// Opaque are the pixels of the frame now shown that differ from the colour of its top right pixel. What
/// reaches over the edge of the picture is opaque, unless that top right pixel does too: then the picture
/// itself is opaque and the rest is not.
/// @param stepX, stepY  1: every pixel counts. Above: of the sprite with the larger area, or of `spriteB` if
///                      both are of one size, only every stepX-th column and stepY-th row counts, the first
///                      ones included; that can miss a contact and never invents one. Below 1: gives 0.
/// @return 1, or 0; also 0 if the boxes do not meet (no pixel is looked at then), if a context is dead, or if
///         a sprite has no width or height
/// @note A sprite that reaches over X = 111111 is looked at only up to there. The pictures of both sprites
///       are locked for the time of the call.
FENLIGHT_API int32_t Collision(uintptr_t spriteA, uintptr_t spriteB, int32_t stepX,
                               int32_t stepY) FENLIGHT_NOEXCEPT;

/// Finds all pairs of sprites whose boxes meet, among those that SetCollideUnknownSprite asks for.
/// @param pairs  filled with two handles for each pair, the one drawn first before the other; pairs are
///               ordered by the place of the first in the order of drawing, then by that of the second. The
///               caller makes it large enough: n sprites can make n * (n - 1) / 2 pairs. 0: gives 0
/// @return the number of pairs; behind them nothing is written
/// @note Takes memory for the time of the call; without, it takes longer.
FENLIGHT_API int32_t CollideUnknown(uintptr_t *pairs) FENLIGHT_NOEXCEPT;

/// Says which sprites CollideUnknown is asked about. All four values are replaced.
/// @param filter1, filter2, filter3  sprites, or 0
/// @param filter4                    a sprite: only pairs with one of the four are found. 0, the state at the
///                                   start: all pairs are, whatever the other three hold.
/// @note The handles are only compared, so they may be dead. Set them on the thread that calls
/// CollideUnknown.
FENLIGHT_API void SetCollideUnknownSprite(uintptr_t filter1, uintptr_t filter2, uintptr_t filter3,
                                          uintptr_t filter4) FENLIGHT_NOEXCEPT;

/// Looks for the first sprite of a table that lies under a point of the view. Here the right and the bottom
/// edge do not belong to the box.
/// @param table           `count` sprite handles; entries of 0 are passed over. 0: gives 0
/// @param count           entries; below 1: gives 0
/// @param mouseX, mouseY  the point, in pixels from the view's top left corner
/// @return the handle from the table, or 0. The sprites in the table need not be alive, but while the first
///         sprite of all is being deleted, or finished, the result is always 0.
FENLIGHT_API uintptr_t MouseOverSprite(const uintptr_t *table, int32_t count, int32_t mouseX,
                                       int32_t mouseY) FENLIGHT_NOEXCEPT;

/// Makes a sprite react to black in a mask of the world. In each frame the sprite thread looks at twelve
/// points along the edges of where the sprite's next step would bring it, three at each edge: first the top
/// edge, then right, left and bottom. A point that is exactly black (0) in the mask is a hit. Outside the
/// mask nothing is hit.
/// @param maskDC      a context or image in the size of the world, kept as long as it is in use; it may be
///                    painted on at any time. Dead: nothing is hit.
/// @param mode        0: off, the other values do not matter.
///                    1: at the first hit the sprite's position becomes its target, so that it stops.
///                    2: it turns round: a hit at the top makes `bottom` its target Y, at the bottom `top`,
///                    at the right `left` its target X, at the left `right`. 3, 4, 5, 6: as 2, and in each
///                    frame it first heads for `top`, `right`, `bottom` or `left`, so that a hit turns it for
///                    one frame. 7: at the first hit it stands still and shows the explosion once; then it is
///                    deleted, in the first frame that still has a hit. The mode becomes 1111 meanwhile.
///                    Others up to 7: only the sound is played. Others: nothing happens.
/// @param left, top, right, bottom       modes 2 to 6: targets in pixels, as a rule the edges of the world or
///                                       beyond. Mode 7: X and Y in the sprite's picture of the first frame
///                                       of the explosion, width and height of its frames; smaller ones than
///                                       the sprite's leave traces of it on the screen.
/// @param frameCount, frame, frameDelay  mode 7: number of frames, frame to start with (counted from 1), and
///                                       frames of the sprite thread for each of them
/// @param sound       a sound of DSoundLoad whose next voice is started at each hit that the sprite reacts to
///                    (up to twelve in a frame in modes 2 to 6), kept as long as it is in use; 0: none
/// @return 0
/// @note The thread sees the old ten values or the new ones, never a mixture.
FENLIGHT_API int32_t SetBackAutoCollision(uintptr_t sprite, uintptr_t maskDC, int32_t mode, int32_t left,
                                          int32_t top, int32_t right, int32_t bottom, int32_t frameCount,
                                          int32_t frame, int32_t frameDelay,
                                          uintptr_t sound) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
