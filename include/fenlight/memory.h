/* SPDX-License-Identifier: Zlib */
/* Data: memory blocks. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_MEMORY_H
#define FENLIGHT_MEMORY_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t CountBytes(const void *memory, int32_t offset, int32_t count,
                                int32_t value) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountWords(const void *memory, int32_t offset, int32_t count,
                                int32_t value) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountLongs(const void *memory, int32_t offset, int32_t count,
                                int32_t value) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountFirstBytes(const void *memory, int32_t offset, int32_t length,
                                     int32_t value) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CopyMemory(const void *source, int32_t sourceOffset, void *destination,
                                int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CopyMemoryFromBack(const void *source, int32_t sourceOffset, void *destination,
                                        int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ChangeBytesToWords(const void *source, int32_t sourceOffset, void *destination,
                                        int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ChangeWordsToLongs(const void *source, int32_t sourceOffset, void *destination,
                                        int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ClearWith(void *memory, int32_t offset, int32_t value, int32_t count) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FindBytes(const void *memory, int32_t offset, int32_t length, const void *pattern,
                               int32_t patternLength) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FindBytesCount(const void *memory, int32_t offset, int32_t length, const void *pattern,
                                    int32_t patternLength, int32_t index) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CompareBytes(const void *first, const void *second, int32_t count,
                                  int32_t tolerance) FENLIGHT_NOEXCEPT;
FENLIGHT_API void Compute(void *memory, int32_t length, int32_t elementSize, int32_t addend,
                          int32_t subtrahend, int32_t factor, int32_t divisor, int32_t gap) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ChangeLongSequence(void *memory, int32_t byteCount) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t VarToLong4(void *memory, int32_t offset, int32_t v0, int32_t v1, int32_t v2,
                                int32_t v3) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t VarToLong10(void *memory, int32_t offset, int32_t v0, int32_t v1, int32_t v2, int32_t v3,
                                 int32_t v4, int32_t v5, int32_t v6, int32_t v7, int32_t v8,
                                 int32_t v9) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t LongToAddrVar4(const void *memory, int32_t offset, int32_t *p0, int32_t *p1, int32_t *p2,
                                    int32_t *p3) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetAByte(void *address, int32_t value) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetAByte(const void *address) FENLIGHT_NOEXCEPT;
FENLIGHT_API void *GetMemHandle(uintptr_t fx) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
