/* SPDX-License-Identifier: Zlib */
/* Downloads. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_INTERNET_H
#define FENLIGHT_INTERNET_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t DownloadHttpFile(const char *url, const char *fileName) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t IsInternet(void) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
