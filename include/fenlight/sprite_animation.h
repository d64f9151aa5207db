/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_ANIMATION_H
#define FENLIGHT_SPRITE_ANIMATION_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sprites: animation. */

FENLIGHT_API int32_t SetSpriteAnim(uintptr_t sprite, int32_t sourceX, int32_t sourceY, int32_t width,
                                   int32_t height, int32_t frameCount, int32_t startFrame,
                                   int32_t delay) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetSpriteAnimMove(uintptr_t sprite, int32_t direction, int32_t sourceX,
                                       int32_t sourceY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetSpriteAnimMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteAnimModeStatus(uintptr_t sprite) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
