/* SPDX-License-Identifier: Zlib */
/* Sprites: the thread that draws them.
 *
 * It starts with the first sprite and ends with the last one. In each frame it draws all sprites into the
 * back buffer and moves them, shows the changed rectangles on the screen, and restores the back buffer. A
 * frame takes at least 12 milliseconds. While it draws, it holds a named semaphore ("mysem") that all drawing
 * threads of the library, in all processes of a user, take in turns.
 *
 * The caller may paint on its contexts at any time; painting on screenDC or backDC can be overdrawn by the
 * next frame, painting on cleanDC is what sprites leave behind.
 */
#ifndef FENLIGHT_SPRITE_THREAD_H
#define FENLIGHT_SPRITE_THREAD_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Stops the sprite thread or lets it go on. Stops nest: after two of them it takes two calls with 0. The
/// thread may be stopped in the middle of a frame; stars and pixel effects can then stand still too.
/// @param mode  1 stops, 0 goes on, any other number does nothing
/// @return 0
/// @note One calling thread. Nothing happens while there is no sprite. While the thread is stopped,
///       DeleteAllSprites would wait for good.
FENLIGHT_API int32_t StopAllSprites(int32_t mode) FENLIGHT_NOEXCEPT;

/// Slows the sprites down: a pause before each record of the list in each frame, finished ones included, so a
/// frame lasts at least as many pauses as CountAllSprites tells. Other drawing threads wait meanwhile.
/// @param milliseconds  pause; 0 or below is none
/// @note One calling thread. Nothing happens while there is no sprite; the setting ends with the list.
FENLIGHT_API void SpriteThreadBrake(int32_t milliseconds) FENLIGHT_NOEXCEPT;

/// Slows the sprites down: a pause at the end of each frame, in which other drawing threads can work.
/// @param milliseconds  pause; 0 or below is none
/// @note One calling thread. Nothing happens while there is no sprite; the setting ends with the list.
FENLIGHT_API void SystemThreadBrake(int32_t milliseconds) FENLIGHT_NOEXCEPT;

/// Tells how fast the sprites run: 1000 divided by the length of the last frame in milliseconds, rounded
/// down. The pause of SystemThreadBrake is not counted.
/// @return frames per second, at most 83; 62 before the first frame has ended
/// @note Any thread.
FENLIGHT_API int32_t GetSpritesFps(void) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
