/* SPDX-License-Identifier: Zlib */
/* FX effects: filters that make a byte of its neighbours. Every channel is filtered by itself.
 *
 * Rows are taken as packed, 3 * width bytes each: at a width that is a multiple of 4 this is what every
 * buffer has. At another width the neighbours of padded rows are those bytes that lie 3 and 3 * width bytes
 * away, and nothing outside the block is ever read or written.
 *
 * Every effect changes its buffer and then, if it was given a context, paints the new picture as CopyFX does.
 * With memory lacking nothing is changed and nothing painted. A buffer is for one thread at a time; handles
 * of freed buffers must not be passed. */
#ifndef FENLIGHT_FX_SMOOTHING_H
#define FENLIGHT_FX_SMOOTHING_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Blurs a buffer in place: from the second row to the last but one, from left to right, each byte becomes
/// the mean, rounded down, of the four beside, above and below it, two of which are new already. So the
/// picture trails to the right and downwards. The outermost pixels stay; below 3 x 3 pixels all do.
/// @param dc    context to paint on; 0 only changes the buffer
/// @param x, y  pixels, where the top left corner is painted
/// @param fx    FX handle; 0 does nothing
/// @return 0
/// @note A buffer is for one thread at a time.
FENLIGHT_API int32_t Blur(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Smooths the bytes that a mask chooses: each becomes the mean, rounded down, of its eight neighbours as
/// they were; its own value has no part in it.
/// @param dc    context to paint on; 0 only changes the buffers
/// @param x, y  pixels, where the top left corner is painted
/// @param fx    FX handle of the picture; 0 does nothing
/// @param mask  FX handle of a buffer of the same size and row layout; 0 does nothing. Its outermost pixels
///              are made black first. Then a byte of 0 keeps the byte of the picture at the same place, any
///              other value smooths it: blue, green and red of a pixel are three separate switches. What lies
///              behind the end of a smaller mask is kept, and so are bytes that have no eight neighbours in
///              the block. May be `fx`.
/// @return 0
/// @note A buffer is for one thread at a time, the mask too.
FENLIGHT_API int32_t Smooth(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx,
                            uintptr_t mask) FENLIGHT_NOEXCEPT;

/// Smooths as Smooth does, but at random puts another byte in the place of the right neighbour: in 1 of 80
/// cases that of `source` at the smoothed byte's place, in 3 of 80 the value 255. Called again and again,
/// bright spots spread and fade and the source creeps in. Each byte that the mask chooses draws one number
/// from the library's random generator, in rising order.
/// @param dc      context to paint on; 0 only changes the buffers
/// @param x, y    pixels, where the top left corner is painted
/// @param source  FX handle of the picture that shows through, not changed; 0 does nothing
/// @param fx      FX handle of the haze, which is changed; 0 does nothing
/// @param mask    FX handle; 0 does nothing. Used and changed as in Smooth.
/// @return 0
/// @note The three have the same size and row layout, and may be one buffer in several roles. Otherwise bytes
///       behind the end of the smallest stay, and the picture is painted in the size of `source`. Each is for
///       one thread at a time; other threads may draw random numbers meanwhile and so change which come up.
FENLIGHT_API int32_t Fog(uintptr_t dc, int32_t x, int32_t y, uintptr_t source, uintptr_t fx,
                         uintptr_t mask) FENLIGHT_NOEXCEPT;

/// Smooths a picture inside its outermost pixels, near a key colour or everywhere. Each pass reads the
/// picture as the pass before left it.
/// @param dc           context to paint on; 0 only changes the buffer
/// @param x, y         pixels, where the top left corner is painted
/// @param fx           FX handle; 0 does nothing. Below 3 x 3 pixels nothing is smoothed.
/// @param key          0x00BBGGRR; 0xFFFFFFFF takes the colour of the block's last pixel, before the first
///                     pass. Any other value from 0x01000000 on is the colour of no pixel.
/// @param flags        bit 0 clear: the mean of left and right and that of above and below, each rounded
///                     down, and of these two the mean, rounded down. Set: the sum of the pixel and these
///                     four, divided by 5 and rounded down; for blue the pixel counts twice and 6 divides.
///                     Bit 1 clear: only pixels with the key colour one or two steps away in their row or
///                     column, or one step diagonally, are smoothed, and all that lie next to the outermost
///                     ones. Set: all. Other bits are ignored.
/// @param extraPasses  passes after the first, any number: once pictures come again, whole rounds are skipped
/// @return 0
/// @note A buffer is for one thread at a time.
FENLIGHT_API int32_t Antialiasing(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t key,
                                  int32_t flags, uint32_t extraPasses) FENLIGHT_NOEXCEPT;

/// Overwrites every pixel with black or white noise, made from the first bytes of the pixels so far. The
/// first pixel is left to chance, all others depend on the picture alone; a second call goes on from what the
/// first one left. Pixels are taken one after the other, three bytes each, whatever padding there is.
/// @param dc    context to paint on; 0 only changes the buffer
/// @param x, y  pixels, where the top left corner is painted
/// @param fx    FX handle; 0 does nothing
/// @return 0
/// @note A buffer is for one thread at a time.
FENLIGHT_API int32_t Rustle(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
