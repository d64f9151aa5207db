/* SPDX-License-Identifier: Zlib */
/* Windows, display and stopwatch. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_DESKTOP_H
#define FENLIGHT_DESKTOP_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t ChangeDisplay(int32_t width, int32_t height) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t AddWindowStyle(uintptr_t windowHandle, uint32_t style,
                                    int32_t extended) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SubWindowStyle(uintptr_t windowHandle, uint32_t style,
                                    int32_t extended) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SwitchTaskbar(int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t Tooltip(uintptr_t controlHandle, const char *text, uintptr_t parentHandle,
                               uintptr_t instanceHandle) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t StartWatch(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ReadWatch(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API void WaitWatch(int32_t milliseconds) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
