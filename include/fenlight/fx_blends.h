/* SPDX-License-Identifier: Zlib */
/* FX effects that blend two pictures, and water.
 *
 * SemiTrans fades one picture into another, AlphaTrans does so under a mask, byte by byte, Merge lays one
 * over another but for a key colour, and Water makes frames of a picture that ripples.
 *
 * Those with a context `dc` paint their outcome there, the whole picture of the size of `fx` with its top
 * left corner at (x, y), converted to the context's format; what lies outside the context is not drawn, and a
 * dead context changes nothing. The buffers then stay as they were, so the call can be repeated. With 0 for
 * `dc` nothing is painted, and each function tells what changes instead.
 *
 * The buffers of a blend should be of one size and one row layout: bytes or pixels of one belong to those at
 * the same place of the others' blocks. Where one buffer is smaller the blend ends with it, as told at each
 * function; nothing outside any buffer is read or written. One buffer may be given for several arguments.
 *
 * The handle 0 makes each function do nothing. Any other value that is no FX handle, and the handle of a
 * freed buffer, must not be passed. A buffer that is changed is for one thread at a time; several threads may
 * read one. Effects that paint need memory for their outcome; without it they change nothing. */
#ifndef FENLIGHT_FX_BLENDS_H
#define FENLIGHT_FX_BLENDS_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Paints a picture on its way into another. Both lose brightness by subtraction, the first one 256 * percent
/// / 100 in each byte, the other 256 * (100 - percent) / 100 (rounded down, and 255 for 256), stopping at 0,
/// and the two rests are added. So in between, what is darker than the loss drops out of a picture. 0 shows
/// `fx`, 100 shows `other`.
/// @param dc       context to paint on; 0 makes the call do nothing
/// @param x, y     pixels, top left corner in the context
/// @param fx       FX handle of the first picture; gives the size, stays as it was
/// @param other    FX handle of the second; stays as it was. What a smaller one does not reach is black.
/// @param percent  0 to 100, clamped to that range
/// @return 0
FENLIGHT_API int32_t SemiTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                               int32_t percent) FENLIGHT_NOEXCEPT;

/// Blends two pictures under a mask, each of the three colours of a pixel by its own byte of the mask. With
/// q = mask * 100 / 255 per cent, rounded down, a byte becomes ((100 - q) * fx + q * other) / 100, rounded
/// down: a black mask shows `fx`, a white one `other`, a coloured one blends the colours differently.
/// @param dc    context to paint on; 0 puts the outcome into `fx`
/// @param x, y  pixels, top left corner in the context
/// @param fx    FX handle of the first picture; gives the size. Changed only if `dc` is 0.
/// @param other FX handle of the second picture
/// @param mask  FX handle of the mask. What a smaller mask or `other` does not reach becomes black.
/// @return 0
FENLIGHT_API int32_t AlphaTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                                uintptr_t mask) FENLIGHT_NOEXCEPT;

/// Lays a picture over another, leaving out its key colour, which is that of the last three bytes of its
/// block: of the last pixel, where the width is a multiple of 4 or the rows are packed. The n-th pixel of the
/// one belongs to the n-th of the other, in rows taken as packed.
///
/// Pixels at the edge, with a pixel of the key colour to the right or left of them, below or above, can be
/// treated by themselves. Rows follow each other without a gap for this: the last pixel of one row is the
/// left neighbour of the first pixel of the next. The neighbour above counts only if it begins behind the
/// first byte of the block, the one below only if it ends before the last byte; the left one only if the same
/// holds for the pixel a row above it, the right one if it holds for the pixel a row below it. So in the
/// first row left and above never count, in the last row right and below.
/// @param fx      FX handle of the picture on top; stays as it was
/// @param target  FX handle of the other, which is changed as far as both buffers go. Given twice, a buffer
///                stays as it was.
/// @param flags   bit 0 clear: all pixels but those of the key colour are copied. 1: pixels at the edge are
///                the average of both pictures, rounded down in each byte. 3: `target` keeps its own there.
///                Other bits are ignored.
FENLIGHT_API void Merge(uintptr_t fx, uintptr_t target, int32_t flags) FENLIGHT_NOEXCEPT;

/// Makes the next frame of a picture that ripples like water. Each row is shifted sideways by an entry of a
/// wave table, calmly at the top: the first 64 rows by half of it, the first 32 by half of that, the first 16
/// by half again, halves being (shift + 1) / 2 rounded towards 0. The five pixels at both ends of a row keep
/// to their places, but those at the left give way to what is shifted over them; a gap that they do not fill
/// is black. Then some rows are dropped and more are doubled, by a fixed pattern of 108 rows. The last row of
/// the picture is left out, and rows of the frame that get none are black.
///
/// Each call moves the wave one row down and the pattern one row up, whatever its buffer and table. The two
/// positions are kept for the whole process: a wave table of N entries is back after N + 1 calls, the
/// pattern after 107. The first call begins with the first entry of both.
/// @param dc         context to paint on; 0 puts the frame into `fx`, so that the next call distorts it more
/// @param x, y       pixels, top left corner in the context
/// @param fx         FX handle, rows taken as packed; changed only if `dc` is 0. Rows of a picture less than
///                   6 pixels wide are not shifted.
/// @param waveTable  shifts in pixels, one for each row, positive to the right, of any size; ended by 255.
///                   That end stands for a row without a shift, and then the table starts again. After 65536
///                   entries without a 255 it is taken to end. An address below 16, such as 0, selects the
///                   library's own table of 119 entries.
/// @param calmRows   so many rows at the top are neither dropped nor doubled; 0 or less for none
/// @return 0
/// @note May be called on several threads at once for different buffers; each call gets its own position.
/// @note Without memory for the frame only the wave's position changes. Without memory for the order of its
///       rows the frame has them shifted but all in their places; it is painted, or lost if `dc` is 0.
FENLIGHT_API int32_t Water(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, const int32_t *waveTable,
                           int32_t calmRows) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
