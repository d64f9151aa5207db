/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_ANIMATION_H
#define FENLIGHT_SPRITE_ANIMATION_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sprites: animation.
 *
 * A sprite's pictures lie side by side in its picture context, as strips of frames of one size: frame n of
 * a strip lies at (sourceX + width * (n - 1), sourceY), n from 1 to the frame count. The top right pixel
 * of a frame gives the colour that is not drawn. The sprite thread shows one frame and goes on to the next
 * after `delay` frames of its own, and it can show another strip for each direction in which the sprite is
 * heading.
 *
 * In every function `sprite` is a live handle from InitSprite or CopySprite. 0 changes nothing and gives
 * 0. A handle whose record was freed must not be used. Any thread may call these functions beside the
 * sprite thread; numbers are written one by one, so that one frame may be drawn with a mixture of old and
 * new. */

/// Gives a sprite a new strip, the same for all directions, and starts its animation anew.
/// @param sourceX, sourceY  origin of frame 1 in the picture context, in pixels
/// @param width, height     size of a frame in pixels; the sprite has this size from now on
/// @param frameCount        number of frames in the strip
/// @param startFrame        frame to begin with, 1 to `frameCount`. Not checked: a frame above the count
///                          goes on counting upwards and shows what lies beyond the strip.
/// @param delay             passes of the sprite thread for which each frame stays; 0 or less: no
///                          animation
/// @return 0
/// @note Whether the animation runs once (SetSpriteAnimMode) stays as it was.
FENLIGHT_API int32_t SetSpriteAnim(uintptr_t sprite, int32_t sourceX, int32_t sourceY, int32_t width,
                                   int32_t height, int32_t frameCount, int32_t startFrame,
                                   int32_t delay) FENLIGHT_NOEXCEPT;

/// Sets the strip to show while the sprite is heading in one direction. Size and frame count are those of
/// all its strips.
/// @param direction         0 standing, 1 up and right, and so on clockwise to 8 up, as GetSpriteMoveXY
///                          gives it; any other value changes nothing
/// @param sourceX, sourceY  origin of frame 1 of that strip, in pixels
/// @return 0
FENLIGHT_API int32_t SetSpriteAnimMove(uintptr_t sprite, int32_t direction, int32_t sourceX,
                                       int32_t sourceY) FENLIGHT_NOEXCEPT;

/// Says whether the animation runs in circles or once.
/// @param mode  0: after the last frame the first one again. Any other value: it comes to rest on the last
///              frame; the sprite stays. SetSpriteAnim starts a single run again.
/// @return 0
FENLIGHT_API int32_t SetSpriteAnimMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;

/// Tells whether a single run has reached its last frame.
/// @return 1 if the animation runs once and its last frame is set, which is one pass before that frame is
///         first drawn; else 0, always for an animation that runs in circles
FENLIGHT_API int32_t GetSpriteAnimModeStatus(uintptr_t sprite) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
