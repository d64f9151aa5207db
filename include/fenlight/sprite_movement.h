/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_MOVEMENT_H
#define FENLIGHT_SPRITE_MOVEMENT_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sprites: movement.
 *
 * A sprite has a position and a target, both in pixels with Y growing downwards, and the sprite thread
 * carries it towards the target a little in every frame. These functions set the target, the speed and
 * what happens on the way; a setting lasts until it is set again or the sprite goes. All speeds and
 * periods count frames of the sprite thread, not time. What is set while a frame runs takes effect in that
 * frame or the next.
 *
 * In every function `sprite` is a live handle from InitSprite or CopySprite. 0 changes nothing and gives
 * 0. A handle whose record was freed (by CleanUp, or when all sprites were gone) must not be used.
 *
 * Any thread may call these functions beside the sprite thread, which they never wait for. Numbers are
 * written one by one, so that the thread may see a new X with an old Y for one frame. Positions near the
 * ends of the 32-bit range wrap round. */

/// Sets where a sprite is heading.
/// @param x, y  target of the frame's top left corner, in pixels
/// @return 0
/// @note Without any sprite in the list it does nothing, whatever the handle.
FENLIGHT_API int32_t MoveSprite(uintptr_t sprite, int32_t x, int32_t y) FENLIGHT_NOEXCEPT;

/// Puts a sprite somewhere at once and sets where it is heading from there.
/// @param x, y              new position in pixels
/// @param targetX, targetY  new target in pixels; equal to the position: the sprite stands
/// @return 0
/// @note In line mode, points of the running path still overrule the new position until the path has run
///       out; SetSpriteMovingMode empties it at once.
FENLIGHT_API int32_t SetSpritePos(uintptr_t sprite, int32_t x, int32_t y, int32_t targetX,
                                  int32_t targetY) FENLIGHT_NOEXCEPT;

/// Sets a sprite's speed. It never runs past its target: a shorter remainder is its last step.
/// @param speedX, speedY  pixels per step on each axis, independent of each other. 0: never gets there;
///                        below 0: runs away from the target. In line mode `speedX` is the number of
///                        points per frame: more than 15 counts as 16, one of which is the point that the
///                        sprite stands on; below 1 uses up what is left of the path and makes no new one;
///                        `speedY` is not used.
/// @return 0
FENLIGHT_API int32_t SetSpriteSpeed(uintptr_t sprite, int32_t speedX, int32_t speedY) FENLIGHT_NOEXCEPT;

/// Tells whether a sprite stands on its target.
/// @return 1 if both coordinates are equal, else 0
/// @note Between the waypoints of a running table it gives 0 in stepwise mode, because the next target is
///       set in the frame of arrival; in line mode it can give 1 for the time between two frames.
FENLIGHT_API int32_t HasSpriteArrived(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Tells where the target lies on the X axis.
/// @return 1 to the right of the sprite, -1 to the left, 0 level with it
FENLIGHT_API int32_t GetSpriteMoveX(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Tells where the target lies on the Y axis.
/// @return 1 below the sprite, -1 above, 0 level with it
FENLIGHT_API int32_t GetSpriteMoveY(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Tells in which of eight directions a sprite is heading.
/// @return 0 standing, 1 up and right, 2 right, 3 down and right, 4 down, 5 down and left, 6 left, 7 up
///         and left, 8 up. These are the directions of SetSpriteAnimMove.
FENLIGHT_API int32_t GetSpriteMoveXY(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Lets a sprite step in fewer frames. Has no effect in line mode.
/// @param periodX, periodY  frames to skip between two steps on that axis; 0 and below: a step in every
///                          frame
/// @return 0
FENLIGHT_API int32_t SlowDownSprite(uintptr_t sprite, int32_t periodX, int32_t periodY) FENLIGHT_NOEXCEPT;

/// Chooses how a sprite gets to its target, and forgets the line path that it was on.
/// @param mode  0: stepwise, each axis on its own, so diagonally first and then straight on. Any other
///              value: on a straight line, point by point; it rests for one point at each 16th, where the
///              line is taken up anew towards the target of that moment. A line can't pass through X =
///              11111.
/// @note Line mode must be switched on here and not through ChangeSpritePara, which leaves the path
///       unprepared. AttachSprite and SlowDownSprite have no effect in line mode.
FENLIGHT_API void SetSpriteMovingMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;

/// Makes a sprite patrol: where it stands on or beyond a side, the opposite side becomes its target. Give
/// it a first target to start it.
/// @param left, top, right, bottom  sides in pixels, for the sprite's position; -1 switches that side off.
///                                  With one side of a pair on and the other off, the target beyond the
///                                  first is -1.
/// @return 0
FENLIGHT_API int32_t SpriteMovingRect(uintptr_t sprite, int32_t left, int32_t top, int32_t right,
                                      int32_t bottom) FENLIGHT_NOEXCEPT;

/// Keeps a sprite in a cage: once its position is not strictly inside, it is put home and stands there.
/// The edges themselves are outside.
/// @param left, top, right, bottom  edges in pixels; four zeros: no cage, whatever the home
/// @param homeX, homeY              where it is put, in pixels
/// @return 0
/// @note The thread sees the old cage or the new one, never a mixture. A home outside the cage puts the
///       sprite there anew in each frame.
FENLIGHT_API int32_t SetSpriteCage(uintptr_t sprite, int32_t left, int32_t top, int32_t right, int32_t bottom,
                                   int32_t homeX, int32_t homeY) FENLIGHT_NOEXCEPT;

/// Gives a sprite a table of waypoints in place of the one that it had: each time it stands on its target,
/// the next waypoint becomes its target.
/// @param table         pairs of X and Y, `entries` of them, low byte first; copied, so that the array can
///                      go when the call returns. 0 takes the table away, and the sprite keeps its present
///                      target.
/// @param entries       number of pairs; below 1 counts as no table
/// @param baseX, baseY  pixels added to each waypoint
/// @param startEntry    first waypoint to go to, counted from 0; outside 0 to `entries` - 1 it counts as 0
/// @return 0, also without memory for the copy: the sprite then has no table
/// @note The thread sees the old table or the new one, never a mixture, and it may run or be stopped. The
///       table goes with the sprite. It reads inside the table only, whatever ChangeSpritePara wrote: a
///       written TableLength can shorten the table (below 1: the sprite stays where it is) and a
///       TableIndex outside counts as 0.
FENLIGHT_API int32_t MoveSpriteWithTable(uintptr_t sprite, const int16_t *table, int32_t entries,
                                         int32_t baseX, int32_t baseY, int32_t startEntry) FENLIGHT_NOEXCEPT;

/// Says what follows the last waypoint.
/// @param mode  1: the sprite stays there. Any other value: the first waypoint again (the state of a new
///              sprite).
FENLIGHT_API void SpriteTableMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;

/// Makes a sprite follow another one: in each frame its target becomes the other's position plus an
/// offset. It follows at its own speed. Has no effect in line mode.
/// @param other             live handle of the leader, the sprite itself allowed; 0 ends the attachment. A
///                          finished leader is followed to its last position; when CleanUp frees it the
///                          attachment ends.
/// @param offsetX, offsetY  pixels from the leader's position
/// @return 0
FENLIGHT_API int32_t AttachSprite(uintptr_t sprite, uintptr_t other, int32_t offsetX,
                                  int32_t offsetY) FENLIGHT_NOEXCEPT;

/// Makes a sprite show in each frame what another one shows: strip, size, frame count, frame and delay are
/// taken over, the context with the pictures is not, so both must use the same one.
/// @param other  live handle of the leader, the sprite itself allowed; 0 ends it, and the values stay as
///               they are. When CleanUp frees the leader, it ends too.
/// @return 0
FENLIGHT_API int32_t AttachSpriteAnim(uintptr_t sprite, uintptr_t other) FENLIGHT_NOEXCEPT;

/// Writes any word of a sprite's record.
/// @param position  byte position of the word as documented for TestSprite: 0 to 1020, a multiple of 4;
///                  any other value changes nothing. 4 (SourceX) and 8 (SourceY) write the nine origins of
///                  SetSpriteAnimMove too. 88 (Next), 120 (Self) and 320 (Table) hold the library's own
///                  addresses and are left unchanged.
/// @param value     the new value; words that hold no handle take its low 32 bits. A sprite handle written
///                  to AttachedTo (484) or AnimFrom (544) must be live or 0.
/// @return 0
FENLIGHT_API int32_t ChangeSpritePara(uintptr_t sprite, int32_t position, intptr_t value) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
