/* SPDX-License-Identifier: Zlib */
/* Types of the platform layer. Handles are numbers as wide as an address: opaque, never 0, never 3, positive
 * also as a 32-bit number. A dead, foreign or wrong-kind handle makes a call return its failure value. */
#ifndef FENLIGHT_PLATFORM_TYPES_H
#define FENLIGHT_PLATFORM_TYPES_H
#include <stddef.h>

#include "../types.h"

typedef uintptr_t HANDLE;  /* a thread, semaphore or file */
typedef uintptr_t HGDIOBJ; /* a bitmap, pen or brush */
typedef uintptr_t HDC;     /* a device context: what is drawn on */
typedef uintptr_t HBITMAP;
typedef uintptr_t HPEN;
typedef uintptr_t HBRUSH;
typedef uintptr_t HWND;
typedef uintptr_t HMODULE; /* what dlopen gave, or 0 for the program; the same for HINSTANCE */
typedef uintptr_t HINSTANCE;
typedef uintptr_t HRSRC;
typedef uintptr_t HGLOBAL;

/* Whole numbers of fixed width, whatever the machine: LONG has 32 bits. A BOOL is 0 or not. */
typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t UINT;
typedef int32_t HRESULT;

/* A colour as 0x00BBGGRR: red in the low byte. */
typedef uint32_t COLORREF;

/* A rectangle in pixels; the column `right` and the row `bottom` are excluded. */
typedef struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT;

/* A place in pixels, from the left and from the top. */
typedef struct POINT {
    LONG x;
    LONG y;
} POINT;

#endif
