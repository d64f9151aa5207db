/* SPDX-License-Identifier: Zlib */
/* FX effects: filters that look at one pixel.
 *
 * Brightness, grey, threshold, contrast, fading from one picture into another, colours exchanged and shifted:
 * each byte or pixel of an FX buffer changes by itself, with no look at its neighbours. Darken, Lighten,
 * Sharpen and ColorMove change every byte of a buffer, the others its first width * height groups of three
 * bytes, blue, green, red. At a width that is no multiple of 4 in a buffer from InitFX, whose rows are filled
 * up, these groups fall out of step with the pixels from the second row on: there Grey and the like change
 * other bytes than one would want. Widths that are multiples of 4 have no such trap.
 *
 * The effects end by painting the buffer onto a context: `dc` is the one to draw on, for instance an image;
 * 0 paints nothing, and so does a dead one. `x` and `y` tell in pixels where the top left corner of the
 * picture comes to lie there; what lies outside the context is not drawn.
 *
 * `fx` is an FX handle; 0 changes and paints nothing. Any other value that is no handle, and the handle of a
 * freed buffer, must not be passed. A buffer is for one thread at a time; calls on different buffers may run
 * side by side. */
#ifndef FENLIGHT_FX_FILTERS_H
#define FENLIGHT_FX_FILTERS_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Takes an amount off every byte of a buffer; 0 is the least that is left. Then paints it.
/// @param amount  0 to 255; of other values the lowest 8 bits
/// @return 0
FENLIGHT_API int32_t Darken(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                            int32_t amount) FENLIGHT_NOEXCEPT;

/// Adds an amount to every byte of a buffer, up to 255. Then paints it.
/// @param amount  0 to 255; of other values the lowest 8 bits
/// @return 0
FENLIGHT_API int32_t Lighten(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                             int32_t amount) FENLIGHT_NOEXCEPT;

/// Makes every pixel grey and paints the buffer: each colour becomes a third of the sum of the three, rounded
/// down.
/// @return 0
FENLIGHT_API int32_t Grey(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Makes every pixel black or white. With a context the outcome is painted and the buffer keeps its picture,
/// so that other thresholds can be tried on it; with `dc` 0 the buffer takes the outcome.
/// @param threshold  pixels of this brightness and above turn white. Brightness is (blue + green + red + 127)
///                   / 4, rounded down: 31 for black to 223 for white. From 31 down all turns white, from 224
///                   up all black.
/// @return 0. Without memory for the outcome nothing is painted.
FENLIGHT_API int32_t BlackWhite(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                                int32_t threshold) FENLIGHT_NOEXCEPT;

/// Raises the contrast by one step and paints the buffer: bytes below 127 go down by 1, others up by 1; 0 and
/// 255 stay.
/// @return 0
FENLIGHT_API int32_t Sharpen(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Moves the picture of a buffer towards that of another, byte by byte and never past it, and paints it.
/// Repeated, it fades the one into the other, until both are equal.
/// @param target  FX handle of the picture to come to, which does not change; 0 changes and paints nothing.
///                It should have the size of `fx`: only the bytes that both have are looked at.
/// @param step    most that a byte moves, 0 to 255; what lies outside is taken as the nearer end
/// @return 0
FENLIGHT_API int32_t ColorMove(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t target,
                               int32_t step) FENLIGHT_NOEXCEPT;

/// Gives another colour to all pixels of one colour and paints the buffer.
/// @param oldColor  0x00BBGGRR; with a highest byte other than 0 it is no pixel's colour
/// @param newColor  0x00BBGGRR; the highest byte is ignored
/// @return 0
FENLIGHT_API int32_t ExchangeColor(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t oldColor,
                                   uint32_t newColor) FENLIGHT_NOEXCEPT;

/// Adds a number to each colour of every pixel, kept within 0 to 255, and paints the buffer.
/// @param red, green, blue  any numbers, negative ones take away; 0 leaves that colour as it is
/// @return 0
FENLIGHT_API int32_t ExchangeRgb(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, int32_t red, int32_t green,
                                 int32_t blue) FENLIGHT_NOEXCEPT;

/// Fills a buffer with one colour, without painting it: width * height groups of three bytes from the start
/// of the pixels. Where rows are filled up to a multiple of 4 bytes the end of the buffer keeps its bytes.
/// @param colour  0x00BBGGRR; the highest byte is ignored
FENLIGHT_API void ColorFill(uintptr_t fx, uint32_t colour) FENLIGHT_NOEXCEPT;

/// Follows a black line and lists points on it, as MoveSpriteWithTable and FindPath have them: two 16-bit
/// numbers each, X from 1 for the leftmost column, Y from 0 for the last row of the buffer upwards. Only
/// pixels of 0, 0, 0 are black.
///
/// The line begins at the last black pixel of the buffer. From each pixel it goes on to the first neighbour
/// that is black and was not visited, tried in this order: left, left and up, up, right and up, right, right
/// and down, down, left and down. It ends where there is none; other branches and other lines are left out.
/// A row's neighbour beyond the left edge is the last pixel of the row above, and beyond the right edge the
/// first of the row below: X then counts on to 0 or to width + 1, and further.
///
/// Of the buffer's header three fields tell about the call: biXPelsPerMeter the number of pixels looked at,
/// biYPelsPerMeter the result, biClrUsed the pixels of the line behind the last point.
/// @param destination  room for 4 bytes for each point, at most 4 * (width * height / step) bytes; 0 changes
///                     nothing
/// @param step         pixels of the line from one point to the next, the first point being the `step`-th
///                     pixel. Below 1 no point is written.
/// @return bytes written. Without memory 0, and the header stays as it was.
/// @note ChangeLongSequence turns the list round.
FENLIGHT_API int32_t PixelToMemory(uintptr_t fx, int16_t *destination, int32_t step) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
