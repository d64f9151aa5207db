/* SPDX-License-Identifier: Zlib */
/* Painting on device contexts. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_PAINTING_H
#define FENLIGHT_PAINTING_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t PaintImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t width, int32_t height,
                                uintptr_t srcDC, int32_t srcX, int32_t srcY, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API void Frame(uintptr_t dc, uint32_t colourTopLeft, uint32_t colourBottomRight, int32_t left,
                        int32_t top, int32_t right, int32_t bottom, int32_t thickness) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Curve(uintptr_t dc, int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t x3,
                           int32_t y3) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
