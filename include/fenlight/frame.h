/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_FRAME_H
#define FENLIGHT_FRAME_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Frame and numbers. */

FENLIGHT_API int32_t Version(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetVersion(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Random(int32_t *buffer, int32_t last, int32_t base, int32_t range) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
