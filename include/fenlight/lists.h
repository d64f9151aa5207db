/* SPDX-License-Identifier: Zlib */
/* Data: lists and streams. Not yet part of the library: declared so that the types are settled, not exported.
 */
#ifndef FENLIGHT_LISTS_H
#define FENLIGHT_LISTS_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t SetBytes(void *memory, int32_t offset, const char *text) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetWords(void *memory, int32_t offset, const char *text) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetLongs(void *memory, int32_t offset, const char *text) FENLIGHT_NOEXCEPT;
FENLIGHT_API void DataMem(void *memory) FENLIGHT_NOEXCEPT;
FENLIGHT_API void DataPos(int32_t position) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DataBytes(const char *text) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t OemBytes(const char *text) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
