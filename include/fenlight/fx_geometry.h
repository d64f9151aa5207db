/* SPDX-License-Identifier: Zlib */
/* FX effects: mirror, turn, roll. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_FX_GEOMETRY_H
#define FENLIGHT_FX_GEOMETRY_H
#include "types.h"

FENLIGHT_BEGIN_C

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

FENLIGHT_END_C
#endif
