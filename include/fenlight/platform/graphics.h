/* SPDX-License-Identifier: Zlib */
/* Device contexts, bitmaps, pens and brushes in plain memory.
 *
 * A caller makes a context (CreateCompatibleDC), selects a bitmap into it (SelectObject) and draws on the
 * context: pixels, lines, filled rectangles, block transfers. Coordinates count pixels from the top left
 * corner of the bitmap; any 32-bit number is allowed, and what lies outside the bitmap is neither read nor
 * drawn.
 *
 * Objects stay until the caller deletes them: contexts by DeleteDC, all others by DeleteObject. A handle that
 * is dead, 0, or of another kind makes a call return its failure value and change nothing.
 *
 * Every function may be called on any thread, also for one context or bitmap from several threads at once:
 * each call is done as a whole before the next one sees that bitmap, and a call that is under way when
 * another thread deletes its objects ends first. Only the address that CreateDIBSection gives out is outside
 * this order. On a thread that SuspendThread has stopped, a call waits for its resumption before it begins.
 */
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
#define COLORRES 108

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

/// Makes a memory context: one black monochrome pixel as its bitmap, a black pen, a white brush, background
/// white, text black, stretch mode BLACKONWHITE, position 0, 0.
/// @param context  any live context, or 0 for the screen; only tested
/// @return the context, to be ended by DeleteDC; 0 if `context` is no live context, or memory or handles ran
///         out
FENLIGHT_API HDC CreateCompatibleDC(HDC context) FENLIGHT_NOEXCEPT;

/// Ends a memory context. What is selected into it is released, not deleted. 0 is allowed and does nothing.
/// @return 1; 0 if it is no live memory context. The contexts of windows and of the screen are not ended
///         here.
FENLIGHT_API BOOL DeleteDC(HDC context) FENLIGHT_NOEXCEPT;

/// Makes a black bitmap of the format, and with the colours, of the bitmap that is selected into a context. A
/// fresh memory context has a monochrome one: pass the screen's or a window's context for a bitmap in colour.
/// @param width   pixels; with `height` at most 2^28 pixels and 2 GB together; 0 gives one monochrome pixel,
///                as published
/// @param height  pixels, as `width`
/// @return the bitmap, to be deleted by DeleteObject; 0 for a dead context, a negative or too large size, or
///         where memory or handles ran out
FENLIGHT_API HBITMAP CreateCompatibleBitmap(HDC context, int32_t width, int32_t height) FENLIGHT_NOEXCEPT;

/// Makes a bitmap of a given depth.
/// @param width     pixels, limits as for CreateCompatibleBitmap
/// @param height    pixels, as `width`
/// @param planes    1
/// @param bitCount  1 (monochrome), 4 or 8 (standard colours), 24 or 32
/// @param bits      the rows from the top, each filled up to 2 bytes; NULL for a black bitmap. Only read
///                  here.
/// @return the bitmap, to be deleted by DeleteObject; 0 for other planes, depths and sizes, or where memory
///         or handles ran out
FENLIGHT_API HBITMAP CreateBitmap(int32_t width, int32_t height, UINT planes, UINT bitCount,
                                  const void *bits) FENLIGHT_NOEXCEPT;

/// Makes a black bitmap whose pixels the caller may reach by address, in the layout of a header: rows of
/// whole 4 bytes, bottom row first, or top row first where biHeight is negative.
/// @param context  0 or any live context; only tested
/// @param info     uncompressed, 1 plane, 1, 4, 8, 24 or 32 bits, at most 2^28 pixels; for 1, 4 and 8 bits
///                 followed by biClrUsed colours (0 means all that the depth allows), the missing ones are
///                 black
/// @param usage    DIB_RGB_COLORS
/// @param bits     where the address of the first row in memory is stored, or NULL. It is valid until the
///                 bitmap is deleted. Stores through it are not ordered with drawing on other threads.
/// @param section  0
/// @param offset   0
/// @return the bitmap, to be deleted by DeleteObject; 0 (and the address NULL) for anything else, a dead
/// context, or
///         where memory or handles ran out
FENLIGHT_API HBITMAP CreateDIBSection(HDC context, const BITMAPINFO *info, UINT usage, void **bits,
                                      HANDLE section, DWORD offset) FENLIGHT_NOEXCEPT;

/// Selects a bitmap, pen or brush into a context. It stays selected until another one replaces it or the
/// context ends, and cannot be deleted meanwhile. A bitmap can be in one context at a time, a pen or brush in
/// any number.
/// @param context  any live context for pens and brushes, a memory context for bitmaps
/// @param object   what to select, or what an earlier call returned
/// @return what was selected before, also for a fresh context never 0; 0 if the context or the object is not
/// alive,
///         the bitmap is selected elsewhere, or the context belongs to a window or the screen; nothing
///         changes then
FENLIGHT_API HGDIOBJ SelectObject(HDC context, HGDIOBJ object) FENLIGHT_NOEXCEPT;

/// Deletes a bitmap, pen or brush. 0 is allowed and does nothing.
/// @return 1; 0 if the object is not alive or is selected into a context, and it stays then. The default
/// objects of
///         fresh contexts give 1 and stay.
FENLIGHT_API BOOL DeleteObject(HGDIOBJ object) FENLIGHT_NOEXCEPT;

/// Makes a pen for lines of one pixel.
/// @param style   PS_SOLID
/// @param width   0 or 1, both one pixel
/// @param colour  0x00BBGGRR; the high byte is ignored
/// @return the pen, to be deleted by DeleteObject; 0 for other styles and widths, or where memory or handles
/// ran out
FENLIGHT_API HPEN CreatePen(int32_t style, int32_t width, COLORREF colour) FENLIGHT_NOEXCEPT;

/// Makes a brush of one colour.
/// @param colour  0x00BBGGRR; the high byte is ignored
/// @return the brush, to be deleted by DeleteObject; 0 where memory or handles ran out
FENLIGHT_API HBRUSH CreateSolidBrush(COLORREF colour) FENLIGHT_NOEXCEPT;

/// Sets the background colour: in transfers from monochrome to colour a 1 becomes the background colour of
/// the target's context, and in transfers from colour to monochrome the pixels of the background colour of
/// the source's context become 1, all others 0.
/// @param colour  0x00BBGGRR; the high byte is ignored
/// @return the colour before; CLR_INVALID for a dead context
FENLIGHT_API COLORREF SetBkColor(HDC context, COLORREF colour) FENLIGHT_NOEXCEPT;

/// Sets the text colour: what a 0 becomes in transfers from monochrome to colour.
/// @param colour  0x00BBGGRR; the high byte is ignored
/// @return the colour before; CLR_INVALID for a dead context
FENLIGHT_API COLORREF SetTextColor(HDC context, COLORREF colour) FENLIGHT_NOEXCEPT;

/// Sets how StretchBlt scales onto this context.
/// @param mode  COLORONCOLOR; BLACKONWHITE, the mode of a fresh context, is taken too. Both drop or repeat
///              pixels.
/// @return the mode before; 0 for other modes or a dead context, and nothing changes then
FENLIGHT_API int32_t SetStretchBltMode(HDC context, int32_t mode) FENLIGHT_NOEXCEPT;

/// Tells a property of a context's device.
/// @param index  LOGPIXELSX or LOGPIXELSY, dots per inch; COLORRES, bits of colour in a pixel of the screen
/// @return 96 for the first two, 24 for the third; 0 for any other index or a dead context
FENLIGHT_API int32_t GetDeviceCaps(HDC context, int32_t index) FENLIGHT_NOEXCEPT;

/// Reads one pixel.
/// @return its colour as 0x00BBGGRR; CLR_INVALID outside the bitmap or for a dead context
FENLIGHT_API COLORREF GetPixel(HDC context, int32_t x, int32_t y) FENLIGHT_NOEXCEPT;

/// Sets one pixel.
/// @param colour  0x00BBGGRR; the high byte is ignored. A bitmap with a colour table gets its nearest colour,
///                a monochrome one black or white.
/// @return the colour that the pixel has now; CLR_INVALID outside the bitmap or for a dead context
FENLIGHT_API COLORREF SetPixel(HDC context, int32_t x, int32_t y, COLORREF colour) FENLIGHT_NOEXCEPT;

/// Fills a rectangle.
/// @param rectangle  right and bottom are excluded; one whose right is not greater than its left, or whose
/// bottom is
///                   not greater than its top, paints nothing
/// @param brush      need not be selected
/// @return 1; 0 for a dead context, a dead brush or a NULL rectangle
FENLIGHT_API int32_t FillRect(HDC context, const RECT *rectangle, HBRUSH brush) FENLIGHT_NOEXCEPT;

/// Sets the position at which the next LineTo begins.
/// @param old  gets the position before; may be NULL
/// @return 1; 0 for a dead context, and `*old` is left unchanged
FENLIGHT_API BOOL MoveToEx(HDC context, int32_t x, int32_t y, POINT *old) FENLIGHT_NOEXCEPT;

/// Draws a line with the selected pen from the position to x, y, without that end point, which becomes the
/// position. One pixel for each step along the longer axis; of two equally near the one further up or left.
/// @return 1; 0 for a dead context
FENLIGHT_API BOOL LineTo(HDC context, int32_t x, int32_t y) FENLIGHT_NOEXCEPT;

/// Draws cubic curves with the selected pen, each from the end of the last one. A curve is a chain of lines
/// through points on it, rounded to whole pixels, that leaves the curve by at most a quarter of a pixel
/// besides. The end point is left out. The position is neither used nor changed.
/// @param points  start, two control points, end; then two control points and an end for each further curve
/// @param count   points: 3 for each curve, and 1
/// @return 1; 0 for a dead context, NULL points or another count, and nothing is drawn then
FENLIGHT_API BOOL PolyBezier(HDC context, const POINT *points, DWORD count) FENLIGHT_NOEXCEPT;

/// Tells whether a point lies in a rectangle, whose right and bottom are excluded.
/// @return 1 or 0; 0 for a NULL rectangle
FENLIGHT_API BOOL PtInRect(const RECT *rectangle, POINT point) FENLIGHT_NOEXCEPT;

/// Transfers a block of pixels. Each target pixel becomes what the raster code's truth table makes of the
/// target's selected brush, the source pixel and the target pixel. Clipped to both bitmaps: where the source
/// has no pixel, the target keeps its own. Source and target may be one context, and the blocks may overlap.
/// Formats are converted; SetBkColor tells how to and from monochrome.
/// @param width       pixels, both in target and source
/// @param height      pixels
/// @param source      for codes that need no source it is ignored, and so are its coordinates
/// @param rasterCode  bits 16 to 23 count, all 256 tables are allowed
/// @return 1; 0 for a dead target, or a dead source where the code needs one. Nothing is drawn then.
FENLIGHT_API BOOL BitBlt(HDC target, int32_t targetX, int32_t targetY, int32_t width, int32_t height,
                         HDC source, int32_t sourceX, int32_t sourceY, DWORD rasterCode) FENLIGHT_NOEXCEPT;

/// As BitBlt, from a block of one size to a block of another. Pixels are dropped or repeated, never blended.
/// @param targetWidth  pixels; if the signs of the two widths differ, the block is mirrored left to right,
///                     and so for the heights, top to bottom
/// @return 1; 0 as for BitBlt
FENLIGHT_API BOOL StretchBlt(HDC target, int32_t targetX, int32_t targetY, int32_t targetWidth,
                             int32_t targetHeight, HDC source, int32_t sourceX, int32_t sourceY,
                             int32_t sourceWidth, int32_t sourceHeight, DWORD rasterCode) FENLIGHT_NOEXCEPT;

/// As StretchBlt with SRCCOPY, but pixels of the source that have the key colour leave the target as it is.
/// The target changes in one step: no other thread sees it half drawn. Of a monochrome source the white
/// pixels leave the target, whatever the key, and the black ones are painted black. In a monochrome target
/// pixels of the source's background colour become white, all others black.
/// @param keyColour  0x00BBGGRR
/// @return 1; 0 for a dead target or source
FENLIGHT_API BOOL TransparentBlt(HDC target, int32_t targetX, int32_t targetY, int32_t targetWidth,
                                 int32_t targetHeight, HDC source, int32_t sourceX, int32_t sourceY,
                                 int32_t sourceWidth, int32_t sourceHeight, UINT keyColour) FENLIGHT_NOEXCEPT;

/// An addition of our own: copies the union of rectangles from source to target, at equal coordinates, each
/// pixel once. The outcome is that of one SRCCOPY transfer for each rectangle.
/// @param rectangles  right and bottom are excluded; empty and inverted ones count for nothing
/// @param count       rectangles, 0 or more
/// @return 1; 0 for a dead target or source, a negative count, or NULL with a count above 0
FENLIGHT_API BOOL CopyRectangles(HDC target, HDC source, const RECT *rectangles,
                                 int32_t count) FENLIGHT_NOEXCEPT;

/// Describes a bitmap or copies its pixels out of it.
/// With `bits` NULL and biBitCount 0, it fills in the header but for biSize: width, height (positive for
/// bitmaps of either row order), planes, bit count, compression, biSizeImage, and 0 for the rest. With
/// `bits`, it copies lines in the layout of the header, converted to its depth: rows of whole 4 bytes, bottom
/// row first, or top row first where biHeight is negative. Columns that the bitmap does not have, and the
/// bytes that fill up a row, become 0. For 1, 4 and 8 bits the colour table behind the header is written: the
/// bitmap's own for its own depth, else standard colours. With `bits` NULL and a depth, it writes the colour
/// table only. In both, biSizeImage is set.
/// @param context    any live context; only tested
/// @param bitmap     may be selected or not
/// @param firstLine  counted in the header's order: from the bottom of a bottom-up, from the top of a
/// top-down header
/// @param lineCount  lines wanted; those beyond the header's or the bitmap's height are not copied
/// @param bits       room for the lines
/// @param info       as for CreateDIBSection, with room for biClrUsed colours (0: all) where the depth has a
///                   table
/// @param usage      DIB_RGB_COLORS
/// @return lines copied, the bitmap's height where `bits` is NULL; 0 for a dead context or bitmap or an
///         unusable header, and nothing is written then
FENLIGHT_API int32_t GetDIBits(HDC context, HBITMAP bitmap, UINT firstLine, UINT lineCount, void *bits,
                               BITMAPINFO *info, UINT usage) FENLIGHT_NOEXCEPT;

/// Draws pixels from memory, converted to the target's format.
/// @param x          left edge of the drawn rectangle on the target
/// @param y          its top edge
/// @param width      pixels of the rectangle, as in the picture
/// @param height     rows of the rectangle
/// @param sourceX    left edge of the rectangle in the picture
/// @param sourceY    its lower edge, counted from the bottom, in a bottom-up picture; its upper edge, counted
///                   from the top, in a top-down one (biHeight negative)
/// @param firstLine  number of the line at which `bits` begins, in the header's order
/// @param lineCount  lines that `bits` holds; what the rectangle has beyond them is not drawn
/// @param bits       the lines, each of whole 4 bytes, of the header's width. Must not lie in the target's
/// bitmap.
/// @param info       as for CreateDIBSection, describing the whole picture
/// @param usage      DIB_RGB_COLORS
/// @return lines of the buffer that the rectangle takes in, clipped by the target or not; 0 for a dead
/// context, NULL
///         bits or an unusable header
FENLIGHT_API int32_t SetDIBitsToDevice(HDC context, int32_t x, int32_t y, DWORD width, DWORD height,
                                       int32_t sourceX, int32_t sourceY, UINT firstLine, UINT lineCount,
                                       const void *bits, const BITMAPINFO *info,
                                       UINT usage) FENLIGHT_NOEXCEPT;

/// Finishes drawing that waits to be done. There is none here: every call has drawn when it returns.
/// @return 1
FENLIGHT_API BOOL GdiFlush(void) FENLIGHT_NOEXCEPT;

/// Makes a bitmap of the type "BITMAP" (integer 2) among a module's resources: a whole BMP file or one
/// without its 14 bytes of file header, uncompressed. It has the resource's depth and colours; 1 bit with the
/// colours black and white becomes monochrome.
/// @param module  0 for the program itself, or the handle of a loaded module
/// @param name    as for FindResourceA
/// @return the bitmap, to be deleted by DeleteObject; 0 if there is no such resource, its bytes are no such
/// bitmap or
///         fewer than its header announces, or memory or handles ran out
FENLIGHT_API HBITMAP LoadBitmapA(HINSTANCE module, const char *name) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
