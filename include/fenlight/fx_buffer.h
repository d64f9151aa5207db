/* SPDX-License-Identifier: Zlib */
/* FX buffers: pictures in plain memory. Not yet part of the library: declared so that the types are settled,
 * not exported. */
#ifndef FENLIGHT_FX_BUFFER_H
#define FENLIGHT_FX_BUFFER_H
#include "types.h"

/* What an FX handle is the address of: a bitmap header with rows that go down, and the address of its pixels,
 * three bytes each, blue, green, red. A caller may read all of it and write the pixels, and changes nothing
 * else. */
struct FXHeader {
    uint32_t biSize;
    int32_t biWidth;
    int32_t biHeight;
    uint16_t biPlanes;
    uint16_t biBitCount;
    uint32_t biCompression;
    uint32_t biSizeImage;
    int32_t biXPelsPerMeter;
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed;
    uint32_t biClrImportant;
    uint8_t *Pixels;
};

FENLIGHT_BEGIN_C

FENLIGHT_API uintptr_t InitFX(uintptr_t image) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t CreateExtFX(int32_t width, int32_t height) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t CloneFX(uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FreeFX(uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CopyFX(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SaveFX(uintptr_t fx, const char *fileName, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SaveToMemoryFX(uintptr_t fx, void *destination, int32_t mode) FENLIGHT_NOEXCEPT;

/// Copies a rectangle from one FX buffer to another, or within one. Rows are taken as packed, 3 times biWidth
/// bytes each, whatever padding a buffer has; the two agree where the width is a multiple of 4. Pixels are
/// taken one after the other, from the top left: where source, mask and target overlap in one buffer, what
/// was written is read again further on.
/// @param destFX     FX handle of the target; 0 does nothing
/// @param destX      left column of the rectangle in the target, in pixels
/// @param destY      top row of it. What lies outside either buffer is neither read nor written.
/// @param width      pixels; below 1 nothing happens
/// @param height     rows; below 1 nothing happens
/// @param srcFX      FX handle of the source, may be `destFX`; 0 does nothing
/// @param srcX       left column of the rectangle in the source
/// @param srcY       top row of it
/// @param mode       1 leaves out the pixels of a key colour; 2 mixes through a mask; any other value copies
/// @param parameter  for mode 1 the key colour as 0x00BBGGRR, higher bits ignored. For mode 2 the FX handle
///                   of the mask, whose bytes count from its start as rows of exactly 3 times `width`, a row
///                   for each row of the rectangle before it was cut to the buffers. With m the mask's byte,
///                   each byte of the target becomes (target * m + source * (255 - m)) / 255, rounded down:
///                   255 keeps the target, 0 takes the source. Where the mask has ended the target stays; 0
///                   does nothing. Else not looked at.
/// @note A buffer is for one thread at a time. Handles of freed buffers must not be passed.
FENLIGHT_API void BitBltArray(uintptr_t destFX, int32_t destX, int32_t destY, int32_t width, int32_t height,
                              uintptr_t srcFX, int32_t srcX, int32_t srcY, int32_t mode,
                              uintptr_t parameter) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
