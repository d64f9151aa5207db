/* SPDX-License-Identifier: Zlib */
/* Sound. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_SOUND_H
#define FENLIGHT_SOUND_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t DSoundInit(uintptr_t window) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundDeInit(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t DSoundLoad(const char *fileName) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t DSoundLoadMemory(const void *data, int32_t size) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t DSoundLoadResource(uintptr_t module, const char *name) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t DSoundPlay(uintptr_t sound, int32_t flags) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundStop(uintptr_t voice) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundUnLoad(uintptr_t sound) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t DSoundGetNextBuffer(uintptr_t sound) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundSetVolume(uintptr_t voice, int32_t volume) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundSetPan(uintptr_t voice, int32_t pan) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundSetGlobalVolume(int32_t volume) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundSetGlobalPan(int32_t pan) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t DSoundGetStatus(uintptr_t voice) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t DSoundGetInterfaces(uintptr_t *primaryBuffer) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
