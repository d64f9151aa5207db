/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_THREAD_H
#define FENLIGHT_SPRITE_THREAD_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sprites: thread. */

FENLIGHT_API int32_t StopAllSprites(int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SpriteThreadBrake(int32_t milliseconds) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SystemThreadBrake(int32_t milliseconds) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpritesFps(void) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
