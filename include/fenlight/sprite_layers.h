/* SPDX-License-Identifier: Zlib */
/* Sprites: layers, marks, bulk deletion. Not yet part of the library: declared so that the types are settled,
 * not exported. */
#ifndef FENLIGHT_SPRITE_LAYERS_H
#define FENLIGHT_SPRITE_LAYERS_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t SetSpriteLayer(uintptr_t sprite, int32_t layer) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t BringSpriteToTop(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t BringSpriteToBottom(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteLayer(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SwapSpriteLayers(uintptr_t spriteA, uintptr_t spriteB) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MarkSprite(uintptr_t sprite, int32_t mark) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteMark(uintptr_t sprite) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteSpritesMark(int32_t mark) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteSpritesIfAnimReady(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteAllXSprites(int32_t x) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteAllYSprites(int32_t y) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetSpriteFixMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSpriteFixMode(uintptr_t sprite) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
