/* SPDX-License-Identifier: Zlib */
/* Sprites: collision. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_SPRITE_COLLISION_H
#define FENLIGHT_SPRITE_COLLISION_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t Collide(uintptr_t spriteA, uintptr_t spriteB) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t CollideMore(uintptr_t sprite, const uintptr_t *table, int32_t count) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t CollideAll(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Collision(uintptr_t spriteA, uintptr_t spriteB, int32_t stepX,
                               int32_t stepY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CollideUnknown(uintptr_t *pairs) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetCollideUnknownSprite(uintptr_t filter1, uintptr_t filter2, uintptr_t filter3,
                                          uintptr_t filter4) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t MouseOverSprite(const uintptr_t *table, int32_t count, int32_t mouseX,
                                       int32_t mouseY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetBackAutoCollision(uintptr_t sprite, uintptr_t maskDC, int32_t mode, int32_t left,
                                          int32_t top, int32_t right, int32_t bottom, int32_t frameCount,
                                          int32_t frame, int32_t frameDelay,
                                          uintptr_t sound) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
