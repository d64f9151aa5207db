/* SPDX-License-Identifier: Zlib */
/* FX effects: filters that look at one pixel. Not yet part of the library: declared so that the types are
 * settled, not exported. */
#ifndef FENLIGHT_FX_FILTERS_H
#define FENLIGHT_FX_FILTERS_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t Darken(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                            int32_t amount) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Lighten(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                             int32_t amount) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Grey(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t BlackWhite(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                                int32_t threshold) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Sharpen(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ColorMove(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t target,
                               int32_t step) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ExchangeColor(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t oldColor,
                                   uint32_t newColor) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ExchangeRgb(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, int32_t red, int32_t green,
                                 int32_t blue) FENLIGHT_NOEXCEPT;
FENLIGHT_API void ColorFill(uintptr_t fx, uint32_t colour) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t PixelToMemory(uintptr_t fx, int16_t *destination, int32_t step) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
