/* SPDX-License-Identifier: Zlib */
/* Types and attributes shared by the public headers. */
#ifndef FENLIGHT_TYPES_H
#define FENLIGHT_TYPES_H
#include <stdint.h>

#ifdef __cplusplus
#define FENLIGHT_BEGIN_C extern "C" {
#define FENLIGHT_END_C }
#else
#define FENLIGHT_BEGIN_C
#define FENLIGHT_END_C
#endif

#define FENLIGHT_API __attribute__((visibility("default")))

/* No exception leaves the library. The promise is part of a function's type in C++, so only the library's own
 * build makes it; a caller's declarations stay plain. */
#if defined(__cplusplus) && defined(FENLIGHT_BUILDING)
#define FENLIGHT_NOEXCEPT noexcept
#else
#define FENLIGHT_NOEXCEPT
#endif

#endif
