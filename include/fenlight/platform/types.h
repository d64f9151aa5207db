/* SPDX-License-Identifier: Zlib */
/* Types of the platform layer. Handles are numbers as wide as an address: opaque, never 0, never 3, positive
 * also as a 32-bit number. A dead, foreign or wrong-kind handle makes a call return its failure value. */
#ifndef FENLIGHT_PLATFORM_TYPES_H
#define FENLIGHT_PLATFORM_TYPES_H
#include <stddef.h>

#include "../types.h"

typedef uintptr_t HANDLE;
typedef uintptr_t HGDIOBJ;
typedef uintptr_t HDC;
typedef uintptr_t HBITMAP;
typedef uintptr_t HPEN;
typedef uintptr_t HBRUSH;
typedef uintptr_t HWND;
typedef uintptr_t HMODULE;
typedef uintptr_t HINSTANCE;
typedef uintptr_t HRSRC;
typedef uintptr_t HGLOBAL;

typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t UINT;
typedef int32_t HRESULT;

/* A colour as 0x00BBGGRR: red in the low byte. */
typedef uint32_t COLORREF;

/* A rectangle; right and bottom are excluded. */
typedef struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT;

typedef struct POINT {
    LONG x;
    LONG y;
} POINT;

#endif
