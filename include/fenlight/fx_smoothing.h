/* SPDX-License-Identifier: Zlib */
/* FX effects: filters that look at neighbours. Not yet part of the library: declared so that the types are
 * settled, not exported. */
#ifndef FENLIGHT_FX_SMOOTHING_H
#define FENLIGHT_FX_SMOOTHING_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t Blur(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Smooth(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                            uintptr_t mask) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Fog(uintptr_t dc, int32_t x, int32_t y, uintptr_t source, uintptr_t fx,
                         uintptr_t mask) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Antialiasing(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t key,
                                  int32_t flags, uint32_t extraPasses) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Rustle(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
