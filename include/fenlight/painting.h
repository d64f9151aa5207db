/* SPDX-License-Identifier: Zlib */
/* Painting on device contexts: copies with a raster operation or a transparent colour, borders and curves.
 *
 * Any context serves, one of an image, of a window or of the caller's own; none is looked up among the
 * images. Coordinates are pixels of the context, any 32-bit number; what lies outside a context is neither
 * read nor painted.
 *
 * The transparent colour of a picture is not an argument but a part of it: the colour of the top right pixel
 * of the rectangle that is painted. So every frame of a strip may have its own. Sprites and tile maps follow
 * the same rule.
 */
#ifndef FENLIGHT_PAINTING_H
#define FENLIGHT_PAINTING_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Paints a rectangle of one context on another.
/// @param destDC  context to paint on
/// @param destX   left edge of the painted rectangle
/// @param destY   its top edge
/// @param width   pixels; below 1 nothing is painted
/// @param height  pixels, as `width`
/// @param srcDC   context to read; may be destDC, and the rectangles may overlap. Not asked for by modes
///                that need no source.
/// @param srcX    left edge of the rectangle there; where the source has no pixels, the target keeps its own
/// @param srcY    its top edge
/// @param mode    0 SRCCOPY, 1 SRCAND, 2 SRCPAINT, 3 SRCINVERT, 4 DSTINVERT, 5 NOTSRCCOPY, 6 NOTSRCERASE,
///                7 MERGECOPY, 8 MERGEPAINT, 9 PATCOPY, 10 PATPAINT, 11 PATINVERT, 12 SRCERASE,
///                13 BLACKNESS, 14 WHITENESS; -1: pixels of the colour at (srcX + width - 1, srcY) leave the
///                target as it is, all others are copied; any other number is the code of a raster operation
/// @return non-zero; 0 for a dead context, and nothing is painted then
/// @note With -1 the target changes in one step. If the top right pixel lies outside the source, no colour is
///       transparent. Of a monochrome source the white pixels are, and the black ones are painted black. On a
///       monochrome target pixels of the source's background colour become white, all others black. That
///       colour stays as it was.
/// @note Any thread.
FENLIGHT_API int32_t PaintImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t width, int32_t height,
                                uintptr_t srcDC, int32_t srcX, int32_t srcY, int32_t mode) FENLIGHT_NOEXCEPT;

/// Draws a border on a rectangle and outward from it. Light above and dark below looks raised, the other way
/// round sunken.
/// @param dc                 context to draw on; a dead one changes nothing
/// @param colourTopLeft      0x00BBGGRR, of the top and the left side
/// @param colourBottomRight  0x00BBGGRR, of the bottom and the right side, drawn over the others
/// @param left               the column of the innermost line on the left
/// @param top                the row of the innermost line at the top
/// @param right              the column of the innermost line on the right, itself drawn
/// @param bottom             the row of the innermost line at the bottom, itself drawn
/// @param thickness          lines, each one pixel further out; below 1 nothing is drawn. Without memory for
///                           a pen the border stays unfinished.
/// @note The context keeps its pen; its position (MoveToEx) is undefined afterwards.
/// @note Any thread, but one at a time for a context.
FENLIGHT_API void Frame(uintptr_t dc, uint32_t colourTopLeft, uint32_t colourBottomRight, int32_t left,
                        int32_t top, int32_t right, int32_t bottom, int32_t thickness) FENLIGHT_NOEXCEPT;

/// Draws a curve with the selected pen: the cubic Bezier curve whose two control points are both the middle
/// one. It does not touch the middle point.
/// @param dc      context to draw on; a dead one changes nothing
/// @param x1, y1  where it starts
/// @param x2, y2  what it is pulled towards; on the line between the others the curve is that line
/// @param x3, y3  where it ends; that pixel itself is left out
/// @return always 0
/// @note The context's position is neither used nor changed. Any thread.
FENLIGHT_API int32_t Curve(uintptr_t dc, int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t x3,
                           int32_t y3) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
