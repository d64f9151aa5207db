/* SPDX-License-Identifier: Zlib */
/* Data: text. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_TEXT_H
#define FENLIGHT_TEXT_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t Replace(const void *source, int32_t sourceLength, void *destination, const void *search,
                             int32_t searchLength, const void *replacement,
                             int32_t replacementLength) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ReplaceTabs(const void *source, void *destination, int32_t sourceLength,
                                 int32_t tabWidth) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountStrings(const void *memory, int32_t offset, int32_t length, const void *pattern,
                                  int32_t patternLength) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DeleteTags(const void *source, int32_t sourceLength, void *destination, int32_t openChar,
                                int32_t closeChar, int32_t flags) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
