/* SPDX-License-Identifier: Zlib */
/* FX buffers: pictures in plain memory.
 *
 * An FX buffer is a copy of a picture that effects work on with plain arithmetic: a header, and pixels of
 * three bytes, blue, green, red, from left to right and from the top row down. It has no link to where it
 * came from; to bring an effect's outcome back, paint it onto the image.
 *
 * An FX handle is the address of the header. The caller may read the header and read and write the pixels,
 * biSizeImage bytes from Pixels on; it changes no field and releases nothing but through FreeFX. The library
 * keeps no list of buffers: one that is forgotten stays until the process ends.
 *
 * Rows: in a buffer from InitFX a row takes 3 * width + width % 4 bytes, which is the width in bytes rounded
 * up to a multiple of 4; what fills it up is 0. In a buffer from CreateExtFX rows are packed at 3 * width
 * bytes. Painting and bitmap files always take rows as filled up. So packed rows are for widths that are
 * multiples of 4, where both are the same; at another width they come out sheared, and what the block does
 * not have is painted black.
 *
 * The handle 0 is refused by every function here, as told there. Any other value that is no handle, and the
 * handle of a freed buffer, must not be passed. A buffer is for one thread at a time, but several threads may
 * read one, and painting, cloning and saving only read. */
#ifndef FENLIGHT_FX_BUFFER_H
#define FENLIGHT_FX_BUFFER_H
#include "types.h"

/* What an FX handle is the address of: the published bitmap header, and the address of the pixels. */
struct FXHeader {
    uint32_t biSize;         /* 40 */
    int32_t biWidth;         /* pixels */
    int32_t biHeight;        /* pixels, always positive */
    uint16_t biPlanes;       /* 1 */
    uint16_t biBitCount;     /* 24 */
    uint32_t biCompression;  /* 0 */
    uint32_t biSizeImage;    /* bytes from Pixels on */
    int32_t biXPelsPerMeter; /* this and the next two are 0 until PixelToMemory leaves its counts there */
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed;
    uint32_t biClrImportant; /* 0 */
    uint8_t *Pixels;
};

FENLIGHT_BEGIN_C

/// Copies an image into a new buffer, whatever the image's pixel format.
/// @param image  image handle; may be freed while the buffer lives on
/// @return FX handle; 0 if `image` is in no slot, if its picture would take 2^31 - 54 bytes or more, or
///         without memory. Nothing is made then.
/// @note One thread at a time for all functions that take image handles.
FENLIGHT_API uintptr_t InitFX(uintptr_t image) FENLIGHT_NOEXCEPT;

/// Makes a black buffer with packed rows.
/// @param width   pixels, at least 1; choose a multiple of 4 to have it painted and saved as it is
/// @param height  pixels, at least 1
/// @return FX handle; 0 for a size below 1, from 2^31 - 54 bytes on, or without memory
/// @note Any thread.
FENLIGHT_API uintptr_t CreateExtFX(int32_t width, int32_t height) FENLIGHT_NOEXCEPT;

/// Makes an independent copy: header, row layout and pixels.
/// @param fx  FX handle
/// @return FX handle of the copy; 0 for the handle 0 or without memory
FENLIGHT_API uintptr_t CloneFX(uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Ends a buffer. Its handle and the address of its pixels are dead from then on.
/// @param fx  FX handle; 0 does nothing
/// @return 0
FENLIGHT_API int32_t FreeFX(uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Paints a whole buffer onto a context, converted to the context's format.
/// @param dc    context to draw on, for instance an image; 0 and dead contexts change nothing
/// @param x, y  pixels, where the top left corner comes to lie; what lies outside the context is not drawn
/// @param fx    FX handle; 0 does nothing. The buffer is not changed.
/// @return 0
/// @note Without memory a buffer of packed rows whose width is no multiple of 4 may stay unpainted.
FENLIGHT_API int32_t CopyFX(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) FENLIGHT_NOEXCEPT;

/// Writes a buffer as an uncompressed 24-bit bitmap file: the published file header of 14 bytes, the bitmap
/// header of 40, and the rows as they stand in the buffer. Bitmap files count their rows from the bottom, so
/// the picture stands upside down in other programs unless FlipY turned it before; SaveImage writes images
/// the right way up.
/// @param fx        FX handle; 0 writes nothing
/// @param fileName  path; an existing file is replaced
/// @param mode      0; any other value writes nothing and opens no file
/// @return 54 plus the bytes of the picture that were written: 54 + biSizeImage if all is well. Less, with a
///         file that is cut off, where the disk is full; 0 if the file could not be made.
FENLIGHT_API int32_t SaveFX(uintptr_t fx, const char *fileName, int32_t mode) FENLIGHT_NOEXCEPT;

/// Writes what SaveFX writes to memory.
/// @param fx           FX handle; 0 writes nothing
/// @param destination  room for 54 + biSizeImage bytes, not within the buffer; 0 writes nothing
/// @param mode         0; any other value writes nothing
/// @return bytes written, 0 if nothing was
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
