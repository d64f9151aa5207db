/* SPDX-License-Identifier: Zlib */
/* Data: cipher, checksum, whole files. Not yet part of the library: declared so that the types are settled,
 * not exported. */
#ifndef FENLIGHT_FILES_H
#define FENLIGHT_FILES_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API void Crypt(void *memory, int32_t length, const void *key, int32_t keyLength) FENLIGHT_NOEXCEPT;
FENLIGHT_API uint32_t GenerateChecksum(const void *memory, int32_t length,
                                       uint32_t startValue) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ReadFileFast(const char *fileName, void *memory, int32_t offset,
                                  int32_t size) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ReadFilePieceFast(const char *fileName, void *memory, int32_t offset, int32_t size,
                                       int32_t filePosition) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t WriteFileFast(const char *fileName, const void *memory, int32_t offset,
                                   int32_t size) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Examine(const char *text) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
