/* SPDX-License-Identifier: Zlib */
/* Windows whose context is a bitmap, the screen's context, and message boxes. */
#ifndef FENLIGHT_PLATFORM_WINDOWS_H
#define FENLIGHT_PLATFORM_WINDOWS_H
#include "types.h"

#define MB_OK 0u
#define MB_ICONINFORMATION 64u
#define IDOK 1

FENLIGHT_BEGIN_C

FENLIGHT_API HWND OpenWindow(const char *title, int32_t width, int32_t height) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL IsWindow(HWND window) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL DestroyWindow(HWND window) FENLIGHT_NOEXCEPT;
FENLIGHT_API HDC GetDC(HWND window) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ReleaseDC(HWND window, HDC context) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MessageBoxA(HWND owner, const char *text, const char *caption,
                                 UINT type) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
