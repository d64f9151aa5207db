/* SPDX-License-Identifier: Zlib */
/* Particles. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_PARTICLES_H
#define FENLIGHT_PARTICLES_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API void *Stars(uintptr_t destDC, uintptr_t backgroundDC, int32_t left, int32_t top, int32_t right,
                         int32_t bottom, int32_t count, int32_t frameDelay, int32_t flags) FENLIGHT_NOEXCEPT;
FENLIGHT_API void NoStars(int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t StatusStars(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API void OptionStars(int32_t originX, int32_t originY, int32_t biasX, int32_t biasY,
                              int32_t frameDelay) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t InitPixelEffects(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeInitPixelEffects(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API void *SetPixelEffect(uintptr_t destDC, uintptr_t backgroundDC, int32_t x, int32_t y,
                                  uint32_t colour, int32_t radius, int32_t speedRange, int32_t gravityMode,
                                  int32_t particleCount, int32_t colourMode,
                                  int32_t lifeFrames) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
