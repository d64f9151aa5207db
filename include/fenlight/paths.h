/* SPDX-License-Identifier: Zlib */
/* Paths. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_PATHS_H
#define FENLIGHT_PATHS_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t FindPath(int16_t *pathArray, uintptr_t fx, int32_t cellSize, int32_t startX,
                              int32_t startY, int32_t endX, int32_t endY, int32_t flags) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SmoothPath(int16_t *pathArray, int32_t byteCount, int32_t passes) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
