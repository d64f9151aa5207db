/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SPRITE_LIST_H
#define FENLIGHT_SPRITE_LIST_H
#include "types.h"

struct SpriteArguments {
    uintptr_t imageDC;
    uintptr_t screenDC;
    uintptr_t backDC;
    uintptr_t cleanDC;
    int32_t sourceX;
    int32_t sourceY;
    int32_t width;
    int32_t height;
    int32_t frameCount;
    int32_t frame;
    int32_t frameDelay;
    int32_t x;
    int32_t y;
    int32_t speedX;
    int32_t speedY;
};

FENLIGHT_BEGIN_C

/* Sprites: record and list. */

FENLIGHT_API uintptr_t InitSprite(uintptr_t imageDC, uintptr_t screenDC, uintptr_t backDC, uintptr_t cleanDC,
                                  int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                                  int32_t frameCount, int32_t frame, int32_t frameDelay, int32_t x, int32_t y,
                                  int32_t speedX, int32_t speedY) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t InitSprite5(const struct SpriteArguments *block) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t CopySprite(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteSprite(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteAllSprites(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountSprites(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountAllSprites(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ExistSprite(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API intptr_t TestSprite(uintptr_t sprite, int32_t position) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t *GetSpriteInfos(uintptr_t sprite, int32_t *buffer) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteX(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteY(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SpriteToHDC(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CleanUp(int32_t mark) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
