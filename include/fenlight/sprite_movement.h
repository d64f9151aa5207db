/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_MOVEMENT_H
#define FENLIGHT_SPRITE_MOVEMENT_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sprites: movement. */

FENLIGHT_API int32_t MoveSprite(uintptr_t sprite, int32_t x, int32_t y) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetSpritePos(uintptr_t sprite, int32_t x, int32_t y, int32_t targetX,
                                  int32_t targetY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetSpriteSpeed(uintptr_t sprite, int32_t speedX, int32_t speedY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t HasSpriteArrived(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteMoveX(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteMoveY(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteMoveXY(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SlowDownSprite(uintptr_t sprite, int32_t periodX, int32_t periodY) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetSpriteMovingMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SpriteMovingRect(uintptr_t sprite, int32_t left, int32_t top, int32_t right,
                                      int32_t bottom) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetSpriteCage(uintptr_t sprite, int32_t left, int32_t top, int32_t right, int32_t bottom,
                                   int32_t homeX, int32_t homeY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MoveSpriteWithTable(uintptr_t sprite, const int16_t *table, int32_t entries,
                                         int32_t baseX, int32_t baseY, int32_t startEntry) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SpriteTableMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t AttachSprite(uintptr_t sprite, uintptr_t other, int32_t offsetX,
                                  int32_t offsetY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t AttachSpriteAnim(uintptr_t sprite, uintptr_t other) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ChangeSpritePara(uintptr_t sprite, int32_t position, intptr_t value) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
