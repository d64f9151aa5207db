/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_FX_GEOMETRY_H
#define FENLIGHT_FX_GEOMETRY_H
#include "types.h"

FENLIGHT_BEGIN_C

/* FX effects: mirror, turn, roll.
 *
 * Functions that move pixels and change none. FlipX, FlipY and Rotate180 are exact and work in place on an FX
 * buffer. Rotate lays one buffer, turned by any angle, over another, and paints what comes out. RotateImage
 * turns straight from one context to another, without a buffer. RotateMem rolls any bytes.
 *
 * Free rotation goes by whole degrees, with sines and cosines in units of 1/1024, and is the same on every
 * machine. Each source pixel is drawn where it lands and on the pixel beside it, which closes the gaps;
 * pixels are taken in a fixed order, and later ones cover earlier ones. Nothing is interpolated, and a turned
 * picture is a thousandth smaller than it was. In formulas (n >> 10) is n / 1024 rounded down, C and S are
 * 1024 * cos(a * 0.017456) and 1024 * sin(a * 0.017456) cut towards zero, for an angle a from 1 to 360.
 *
 * Rows of FX buffers are taken as packed, 3 * biWidth bytes each, where nothing else is said. That is what
 * they are where the width is a multiple of 4; at other widths the rows of a buffer from InitFX drift, and
 * the picture comes out sheared. An FX handle of 0 is refused; handles of freed buffers must not be passed.
 * Nothing here keeps state. Any thread; a buffer is for one thread at a time. */

/// Mirrors a buffer from left to right, and paints it. Called twice, it gives the first picture back.
/// @param dc    context to draw on, for instance an image; 0 and dead contexts are left out
/// @param x, y  pixels, where the top left corner comes to lie; what lies outside the context is not drawn
/// @param fx    FX handle, changed in place with any `dc`; 0 does nothing
/// @return 0
FENLIGHT_API int32_t FlipX(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Mirrors a buffer from top to bottom, and paints it. The lowest row is the one that ends with the block.
/// @param dc, x, y  as in FlipX
/// @param fx        FX handle, changed in place with any `dc`; 0 does nothing
/// @return 0
FENLIGHT_API int32_t FlipY(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Turns a buffer by 180 degrees, and paints it. The first three bytes of the block change places with the
/// last three, the next with those before, and so on to the middle, padding of rows included. If biSizeImage
/// is no multiple of 3, threes overlap in the middle, and are swapped byte by byte from the first on.
/// @param dc, x, y  as in FlipX
/// @param fx        FX handle, changed in place with any `dc`; 0 does nothing
/// @return 0
FENLIGHT_API int32_t Rotate180(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Paints a buffer, turned about its centre, over another one. Neither is changed.
///
/// With a = 360 - `angle`, W and H the size of `background`, cx = W / 2 and cy = H / 2 rounded down, pixel
/// (x, y) of `fx` lands at
///   X = ((C * x - S * y) >> 10) + cx - (((C * cx) >> 10) - ((S * cy) >> 10))
///   Y = ((S * x + C * y) >> 10) + cy - (((S * cx) >> 10) + ((C * cy) >> 10))
/// in 32 bits, and is drawn there and at (X + 1, Y), row after row from the top left, if both are inside.
/// @param dc          context to draw on; for 0 and dead contexts nothing happens
/// @param x, y        pixels, where the top left corner comes to lie; what lies outside is not drawn
/// @param background  FX handle of the picture behind; 0 does nothing
/// @param fx          FX handle of the picture to be turned, of the same size: otherwise its pixels are taken
///                    one after the other as if they had that size. 0 does nothing.
/// @param angle       degrees, against the clock; full turns are taken off, also below 0
/// @param mode        -1 leaves out pixels of the colour of the last pixel of `fx`; any other value draws all
/// @return 0
/// @note Without memory nothing is painted.
FENLIGHT_API int32_t Rotate(uintptr_t dc, int32_t x, int32_t y, uintptr_t background, uintptr_t fx,
                            int32_t angle, int32_t mode) FENLIGHT_NOEXCEPT;

/// Draws a rectangle of one context, turned about its centre, on another or on the same one. The result is
/// that of GetPixel and SetPixel for one pixel after the other, with both contexts locked once.
///
/// Rows are taken from the last to the second and pixels in them from the last to the second; the first row
/// and column are not drawn. With a = `angle`, cx = `width` / 2 and cy = `height` / 2 rounded down, pixel
/// (i, k) of the rectangle lands at
///   X = ((C * i) >> 10) - ((S * k) >> 10) + cx - (((C * cx) >> 10) - ((S * cy) >> 10)) + x
///   Y = ((S * i) >> 10) + ((C * k) >> 10) + cy - (((S * cx) >> 10) + ((C * cy) >> 10)) + y
/// and is drawn there and at (X - 1, Y). What lies outside `dc` is not drawn; what lies outside `sourceDC` is
/// CLR_INVALID, which draws white.
/// @param dc                context to draw on; on a dead one nothing is drawn
/// @param x, y              pixels, where the rectangle's top left corner would lie without the turn
/// @param width, height     size of the rectangle in pixels; below 2 nothing is drawn. Of more than 2^21 the
///                          first 2^21 are.
/// @param sourceDC          context of the rectangle, may be `dc`: pixels that were drawn are then read
///                          again further on
/// @param sourceX, sourceY  its top left corner there
/// @param angle             degrees, with the clock; full turns are taken off, also below 0
/// @param mode              -1 leaves out pixels of the key colour; any other value draws all
/// @return the key colour: that of the rectangle's top right pixel before anything is drawn, 0x00BBGGRR;
///         CLR_INVALID if that lies outside `sourceDC` or the context is dead
/// @note Other libraries export this name too.
FENLIGHT_API uint32_t RotateImage(uintptr_t dc, int32_t x, int32_t y, int32_t width, int32_t height,
                                  uintptr_t sourceDC, int32_t sourceX, int32_t sourceY, int32_t angle,
                                  int32_t mode) FENLIGHT_NOEXCEPT;

/// Rolls bytes: what leaves at one end comes back at the other. Takes no memory.
/// @param base       address; 0 does nothing
/// @param offset     bytes from `base` to the first one, may be below 0
/// @param length     bytes; below 1 nothing happens
/// @param amount     bytes to roll by. From `length` on nothing changes; below 0 it goes the other way, and
///                   from -`length` down nothing changes either.
/// @param direction  0: upwards, byte i ends at (i + `amount`) mod `length`; any other value: downwards
FENLIGHT_API void RotateMem(void *base, int32_t offset, int32_t length, int32_t amount,
                            int32_t direction) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
