/* SPDX-License-Identifier: Zlib */
/* FX effects: blends and water. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_FX_BLENDS_H
#define FENLIGHT_FX_BLENDS_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t SemiTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                               int32_t percent) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t AlphaTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                                uintptr_t mask) FENLIGHT_NOEXCEPT;
FENLIGHT_API void Merge(uintptr_t fx, uintptr_t target, int32_t flags) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Water(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, const int32_t *waveTable,
                           int32_t calmRows) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
