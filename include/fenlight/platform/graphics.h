/* SPDX-License-Identifier: Zlib */
/* Device contexts, bitmaps, pens and brushes in plain memory. */
#ifndef FENLIGHT_PLATFORM_GRAPHICS_H
#define FENLIGHT_PLATFORM_GRAPHICS_H
#include "types.h"

#define CLR_INVALID 0xFFFFFFFFu
#define DIB_RGB_COLORS 0
#define BI_RGB 0
#define PS_SOLID 0
#define BLACKONWHITE 1
#define COLORONCOLOR 3
#define LOGPIXELSX 88
#define LOGPIXELSY 90

/* The named ternary raster operations. Bits 16 to 23 of a code are its truth table over pattern, source and
 * target; any of the 256 tables works. */
#define SRCCOPY 0x00CC0020u
#define SRCPAINT 0x00EE0086u
#define SRCAND 0x008800C6u
#define SRCINVERT 0x00660046u
#define SRCERASE 0x00440328u
#define NOTSRCCOPY 0x00330008u
#define NOTSRCERASE 0x001100A6u
#define MERGECOPY 0x00C000CAu
#define MERGEPAINT 0x00BB0226u
#define PATCOPY 0x00F00021u
#define PATPAINT 0x00FB0A09u
#define PATINVERT 0x005A0049u
#define DSTINVERT 0x00550009u
#define BLACKNESS 0x00000042u
#define WHITENESS 0x00FF0062u

typedef struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
} BITMAPINFOHEADER;

typedef struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
} RGBQUAD;

/* A header and the first entry of its colour table; a table of n entries follows the header in memory. */
typedef struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO;

FENLIGHT_BEGIN_C

FENLIGHT_API HDC CreateCompatibleDC(HDC context) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL DeleteDC(HDC context) FENLIGHT_NOEXCEPT;
FENLIGHT_API HBITMAP CreateCompatibleBitmap(HDC context, int32_t width, int32_t height) FENLIGHT_NOEXCEPT;
FENLIGHT_API HBITMAP CreateBitmap(int32_t width, int32_t height, UINT planes, UINT bitCount,
                                  const void *bits) FENLIGHT_NOEXCEPT;
FENLIGHT_API HBITMAP CreateDIBSection(HDC context, const BITMAPINFO *info, UINT usage, void **bits,
                                      HANDLE section, DWORD offset) FENLIGHT_NOEXCEPT;
FENLIGHT_API HGDIOBJ SelectObject(HDC context, HGDIOBJ object) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL DeleteObject(HGDIOBJ object) FENLIGHT_NOEXCEPT;
FENLIGHT_API HPEN CreatePen(int32_t style, int32_t width, COLORREF colour) FENLIGHT_NOEXCEPT;
FENLIGHT_API HBRUSH CreateSolidBrush(COLORREF colour) FENLIGHT_NOEXCEPT;

FENLIGHT_API COLORREF SetBkColor(HDC context, COLORREF colour) FENLIGHT_NOEXCEPT;
FENLIGHT_API COLORREF SetTextColor(HDC context, COLORREF colour) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetStretchBltMode(HDC context, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetDeviceCaps(HDC context, int32_t index) FENLIGHT_NOEXCEPT;

FENLIGHT_API COLORREF GetPixel(HDC context, int32_t x, int32_t y) FENLIGHT_NOEXCEPT;
FENLIGHT_API COLORREF SetPixel(HDC context, int32_t x, int32_t y, COLORREF colour) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FillRect(HDC context, const RECT *rectangle, HBRUSH brush) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL MoveToEx(HDC context, int32_t x, int32_t y, POINT *old) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL LineTo(HDC context, int32_t x, int32_t y) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL PolyBezier(HDC context, const POINT *points, DWORD count) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL PtInRect(const RECT *rectangle, POINT point) FENLIGHT_NOEXCEPT;

FENLIGHT_API BOOL BitBlt(HDC target, int32_t targetX, int32_t targetY, int32_t width, int32_t height,
                         HDC source, int32_t sourceX, int32_t sourceY, DWORD rasterCode) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL StretchBlt(HDC target, int32_t targetX, int32_t targetY, int32_t targetWidth,
                             int32_t targetHeight, HDC source, int32_t sourceX, int32_t sourceY,
                             int32_t sourceWidth, int32_t sourceHeight, DWORD rasterCode) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL TransparentBlt(HDC target, int32_t targetX, int32_t targetY, int32_t targetWidth,
                                 int32_t targetHeight, HDC source, int32_t sourceX, int32_t sourceY,
                                 int32_t sourceWidth, int32_t sourceHeight, UINT keyColour) FENLIGHT_NOEXCEPT;

/* An addition of our own: copies the union of `count` rectangles from source to target, at equal coordinates,
 * each pixel once, as so many SRCCOPY transfers at equal coordinates would. */
FENLIGHT_API BOOL CopyRectangles(HDC target, HDC source, const RECT *rectangles,
                                 int32_t count) FENLIGHT_NOEXCEPT;

FENLIGHT_API int32_t GetDIBits(HDC context, HBITMAP bitmap, UINT firstLine, UINT lineCount, void *bits,
                               BITMAPINFO *info, UINT usage) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SetDIBitsToDevice(HDC context, int32_t x, int32_t y, DWORD width, DWORD height,
                                       int32_t sourceX, int32_t sourceY, UINT firstLine, UINT lineCount,
                                       const void *bits, const BITMAPINFO *info,
                                       UINT usage) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL GdiFlush(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API HBITMAP LoadBitmapA(HINSTANCE module, const char *name) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
