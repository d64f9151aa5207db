/* SPDX-License-Identifier: Zlib */
/* Images: off-screen pictures to draw from and to draw on.
 *
 * The library keeps up to 32 images. The handle of an image is a device context with the image's bitmap
 * selected into it, so it stands wherever a context is asked for: as the picture strip of a sprite, as source
 * or target of every drawing call of the platform layer. Only what must find the bitmap behind the context
 * (sizes, header, freeing) insists on a handle of this table; the drawing functions take any context.
 *
 * The library owns context and bitmap of an image until FreeImage or FreeAllImages: a caller neither deletes
 * them nor selects another bitmap into the context. Images are not counted: delete the sprites that draw from
 * an image before the image. What is left at the end of the process is cleaned up with it.
 *
 * All functions here are for one thread of the caller's at a time. The sprite thread may draw from images
 * meanwhile.
 */
#ifndef FENLIGHT_IMAGES_H
#define FENLIGHT_IMAGES_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Makes an image in the lowest free slot. What it shows at first is undefined: fill it.
/// @param dc      live context whose pixel format the image takes; GetDC(0) for the 32 bits of the screen
/// @param width   pixels, passed on to CreateCompatibleBitmap as it stands
/// @param height  pixels, likewise
/// @return the image's handle; 0 if all 32 slots are in use, `dc` is no live context, a size is negative or
///         too large, or memory ran out. All slots are as before then.
/// @note One calling thread.
FENLIGHT_API uintptr_t CreateImage(uintptr_t dc, int32_t width, int32_t height) FENLIGHT_NOEXCEPT;

/// Releases an image with its context and bitmap; the handle is dead from then on. Sprites that still draw
/// from it become invisible.
/// @param image  image handle; 0 answers as the first free slot would and releases nothing
/// @return 4 times the slot's index plus 1, so 1, 5, 9 to 125; 0 if `image` is not in the table, and nothing
///         changes then
/// @note One calling thread; does not wait for the sprite thread.
FENLIGHT_API int32_t FreeImage(uintptr_t image) FENLIGHT_NOEXCEPT;

/// Releases every image.
/// @return how many there were, 0 to 32
/// @note One calling thread; does not wait for the sprite thread.
FENLIGHT_API int32_t FreeAllImages(void) FENLIGHT_NOEXCEPT;

/// The width of an image, asked of its bitmap on every call.
/// @param image  image handle
/// @return pixels; -1 if `image` is not in the table. Mind that GetHeightImage answers 0 then.
/// @note One calling thread.
FENLIGHT_API int32_t GetWidthImage(uintptr_t image) FENLIGHT_NOEXCEPT;

/// The height of an image, asked of its bitmap on every call.
/// @param image  image handle
/// @return pixels; 0 if `image` is not in the table. Mind that GetWidthImage answers -1 then.
/// @note One calling thread.
FENLIGHT_API int32_t GetHeightImage(uintptr_t image) FENLIGHT_NOEXCEPT;

/// Copies the header of an image's bitmap.
/// @param image  image handle
/// @param info   takes the 40 bytes of a BITMAPINFOHEADER; must have room for them
/// @return 1; 0 if `image` is not in the table or `info` is 0, and `info` is not touched then
/// @note One calling thread.
FENLIGHT_API int32_t GetInfosImage(uintptr_t image, void *info) FENLIGHT_NOEXCEPT;

/// Fills a rectangle with one colour.
/// @param dc      any context; a dead one changes nothing
/// @param colour  0x00BBGGRR, red in the low byte
/// @param left    first column, in pixels; what lies outside the context is clipped
/// @param top     first row
/// @param right   the column behind the last one; equal to `left` fills nothing
/// @param bottom  the row below the last one
/// @return always 0
/// @note One calling thread.
FENLIGHT_API int32_t ColorFillImage(uintptr_t dc, uint32_t colour, int32_t left, int32_t top, int32_t right,
                                    int32_t bottom) FENLIGHT_NOEXCEPT;

/// Stretches or shrinks a rectangle into another, with pixels repeated or dropped. Both contexts keep the
/// stretch mode COLORONCOLOR afterwards.
/// @param destDC      any context to draw on
/// @param destX       left edge of the target rectangle, in pixels; parts outside the context are not drawn
/// @param destY       top edge of the target rectangle
/// @param destWidth   its width; a sign other than that of `srcWidth` mirrors
/// @param destHeight  its height; a sign other than that of `srcHeight` mirrors
/// @param srcDC       any context to read; may be destDC; not asked for by modes without a source
/// @param srcX        left edge of the source rectangle; what lies outside the source is not transferred
/// @param srcY        top edge of the source rectangle
/// @param srcWidth    its width
/// @param srcHeight   its height
/// @param mode        0 SRCCOPY, 1 SRCAND, 2 SRCPAINT, 3 SRCINVERT, 4 DSTINVERT, 5 NOTSRCCOPY, 6 NOTSRCERASE,
///                    7 MERGECOPY, 8 MERGEPAINT, 9 PATCOPY, 10 PATPAINT, 11 PATINVERT, 12 SRCERASE,
///                    13 BLACKNESS, 14 WHITENESS; any other number is the code of a raster operation
/// @return non-zero; 0 for a dead context, and nothing is drawn then
/// @note One calling thread.
FENLIGHT_API int32_t SizeImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t destWidth,
                               int32_t destHeight, uintptr_t srcDC, int32_t srcX, int32_t srcY,
                               int32_t srcWidth, int32_t srcHeight, int32_t mode) FENLIGHT_NOEXCEPT;

/* Loading. The first four bytes decide: PNG goes to the library's own decoder and keeps its pixel format (1,
 * 4 or 8 bits with palette, 24 or 32 bits), with its size in pixels. BMP, JPEG, GIF (first frame), ICO and
 * CUR (the largest picture), TIFF, TGA, and WebP where the system has a module for it, become images of the
 * screen's format and come out at the size that their stored resolution gives on a screen of 96 dots per
 * inch: a JPEG of 72 dots per inch a third larger than its pixels. Without a stored resolution pixels stay
 * pixels.
 *
 * Transparency is not kept: PNG, BMP and TGA show their colours as stored, transparent parts of the other
 * formats are white. A file that is cut off, announces more than 2^28 pixels, or more than its data could
 * fill, is refused. A failed load takes no slot. */

/// Loads a picture file.
/// @param fileName  path, absolute or relative to the current directory, at most 1023 bytes when absolute
/// @return the image's handle, or 0. GetLastError() then is 2 if there is no such file or no picture in it
///         that can be read, 8 without memory for the path; the code of the failure, 0x80000000 or above, if
///         a picture was read but could not be drawn. It tells nothing for a bad PNG, and is left alone if
///         all slots are in use (the file is not opened then).
/// @note One calling thread.
FENLIGHT_API uintptr_t LoadFileImage(const char *fileName) FENLIGHT_NOEXCEPT;

/// Loads a picture from memory: the bytes of a whole picture file.
/// @param data  the bytes; only read during the call, they stay the caller's
/// @param size  how many; below 4 there is no picture
/// @return the image's handle, or 0. GetLastError() then is 87 if the data is no picture that can be read, or
///         as for LoadFileImage if it could not be drawn; it tells nothing for a bad PNG, and is left alone
///         if all slots are in use.
/// @note One calling thread.
FENLIGHT_API uintptr_t LoadMemoryImage(const void *data, int32_t size) FENLIGHT_NOEXCEPT;

/// Loads a picture from the resources of the calling program: one of the type "IMAGE", which holds a picture
/// file of any format, or else a bitmap resource.
/// @param module  module handle as FindResourceA takes it; 0 for the program itself
/// @param name    resource name, a text or an integer below 65536
/// @return the image's handle, or 0. GetLastError() then is 2 for an empty resource, 87 for one that is no
///         picture; it tells nothing for a bad PNG or where there is no such resource.
/// @note One calling thread.
FENLIGHT_API uintptr_t LoadResourceImage(uintptr_t module, const char *name) FENLIGHT_NOEXCEPT;

/* Saving */

/// Writes an image of any depth to a file, as BMP or as JPEG. An existing file is replaced, and is opened
/// only when the picture is ready: a failure before that leaves it whole. On a full disk what was written
/// stays. Sprites may draw from the image meanwhile.
/// @param image     image handle
/// @param fileName  path, absolute or relative to the current directory
/// @param format    0 BMP of 24 bits, rows from the bottom; 1 JPEG by libjpeg's default settings; any other
///                  value writes nothing
/// @param quality   of a JPEG, 1 to 10, which are libjpeg's 10 to 100; above counts as 10, below as 1. Not
///                  used for BMP.
/// @return for BMP 1, or 0 if `image` is not in the table or memory ran out; for JPEG 1, or 0 in a library
///         without the codec; otherwise `format`. 1 means that writing was tried: it is 1 also where the
///         file could not be opened or written, and for a JPEG of a handle that is not in the table, without
///         memory, or longer than 65500 pixels on a side, and no file is made then.
/// @note One calling thread.
FENLIGHT_API int32_t SaveImage(uintptr_t image, const char *fileName, int32_t format,
                               int32_t quality) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
