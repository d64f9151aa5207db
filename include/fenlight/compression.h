/* SPDX-License-Identifier: Zlib */
/* Data: compression. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_COMPRESSION_H
#define FENLIGHT_COMPRESSION_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t Pack(const void *source, void *destination, int32_t length,
                          const char *password) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DePack(void *source, void *destination, const char *password) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetOriginalSize(void *source) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
