/* SPDX-License-Identifier: Zlib */
/* Sprites: backgrounds and views. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_SPRITE_WORLDS_H
#define FENLIGHT_SPRITE_WORLDS_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t InitSpriteBackground(int32_t backgroundMode, int32_t viewWidth, int32_t viewHeight,
                                          int32_t scrollX, int32_t scrollY, int32_t scrollStepX,
                                          int32_t scrollStepY) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t *GetBackgroundInfos(int32_t *buffer) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SpriteScrollMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t VisualTableFix(const uintptr_t *table, int32_t tableBytes, int32_t left, int32_t top,
                                    int32_t right, int32_t bottom) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
