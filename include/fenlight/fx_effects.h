/* SPDX-License-Identifier: Zlib */
/* Effects on FX buffers. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_FX_EFFECTS_H
#define FENLIGHT_FX_EFFECTS_H
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
FENLIGHT_API int32_t Blur(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Smooth(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                            uintptr_t mask) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Fog(uintptr_t dc, int32_t x, int32_t y, uintptr_t source, uintptr_t fx,
                         uintptr_t mask) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Antialiasing(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t key,
                                  int32_t flags, uint32_t extraPasses) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Rustle(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FlipX(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FlipY(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Rotate180(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Rotate(uintptr_t dc, int32_t x, int32_t y, uintptr_t background, uintptr_t fx,
                            int32_t angle, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API uint32_t RotateImage(uintptr_t dc, int32_t x, int32_t y, int32_t width, int32_t height,
                                  uintptr_t sourceDC, int32_t sourceX, int32_t sourceY, int32_t angle,
                                  int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API void RotateMem(void *base, int32_t offset, int32_t length, int32_t amount,
                            int32_t direction) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SemiTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                               int32_t percent) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t AlphaTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                                uintptr_t mask) FENLIGHT_NOEXCEPT;
FENLIGHT_API void Merge(uintptr_t fx, uintptr_t target, int32_t flags) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Water(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, const int32_t *waveTable,
                           int32_t calmRows) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
