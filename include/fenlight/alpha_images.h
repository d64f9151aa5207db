/* SPDX-License-Identifier: Zlib */
/* Alpha images: pictures with a fourth channel that says how much of each pixel shows.
 *
 * An alpha image is a block of width * height pixels of four bytes, red, green, blue, alpha, from left to
 * right and from the top row down, without padding. Alpha 0 shows nothing, 255 all. Mind that FX buffers have
 * blue first. Where a function takes `bytes`, that is the size of the block, 4 * width * height; a remainder
 * of less than a pixel is not looked at, and below 4 there are no pixels.
 *
 * A block comes from a PNG file (ImportPng) or an FX buffer (FXToPng) and goes back by FreePng. The library
 * keeps nothing of it: the caller holds address, width, height and size, and may read and write the pixels.
 * Blocks of the caller's own, from anywhere, serve as well wherever an image is taken, but FreePng.
 *
 * PNG files are read and written with LodePNG. Whatever they hold becomes 8 bits a channel.
 *
 * All functions may be called on any thread, and at the same time for different images, except PaintPng. */
#ifndef FENLIGHT_ALPHA_IMAGES_H
#define FENLIGHT_ALPHA_IMAGES_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Reads a PNG file of any colour type and depth, interlaced or not.
/// @param fileName   path
/// @param widthOut   takes the width in pixels; may be 0, as the next two
/// @param heightOut  takes the height
/// @param bytesOut   takes the size of the block, 4 * width * height
/// @return the alpha image, for FreePng; 0 on failure. The three outputs are left alone where the file could
///         not be read: missing, a directory, 2^31 bytes or more, no memory for it. All three get 0 where it
///         was read and is no picture: damaged or cut off, more than 2^28 pixels, a size that so few bytes
///         cannot fill, no memory for the pixels.
FENLIGHT_API uint8_t *ImportPng(const char *fileName, int32_t *widthOut, int32_t *heightOut,
                                int32_t *bytesOut) FENLIGHT_NOEXCEPT;

/// Writes an alpha image as a PNG file, in the smallest colour type that keeps all of it.
/// @param image     4 * width * height bytes; 0 writes nothing
/// @param fileName  path; an existing file is replaced
/// @param width     pixels
/// @param height    pixels
/// @return the size of the PNG stream in bytes. So too where the file could not be made or the disk is full:
///         that is not told. Where nothing could be encoded, LodePNG's error number, and no file is made: 93
///         for a size below 1, 92 for more than 2^29 - 1 pixels, 83 without memory. 0 if `image` is 0. A
///         stream has 67 bytes at least and the numbers end before 120: only a picture of a few pixels leaves
///         open which it is.
FENLIGHT_API int32_t ExportPng(const uint8_t *image, const char *fileName, int32_t width,
                               int32_t height) FENLIGHT_NOEXCEPT;

/// Gives an alpha image back.
/// @param image  from ImportPng or FXToPng, not given back before; 0 does nothing. No other address can be
///               recognised.
/// @return 0
FENLIGHT_API int32_t FreePng(uint8_t *image) FENLIGHT_NOEXCEPT;

/// Paints an alpha image over what a context shows, or over a backdrop. With a pixel's alpha a, each byte s
/// of its colour and the byte d of what lies under it give (s * a + d * (255 - a)) / 255, rounded down.
/// @param image     the alpha image, not changed; 0 paints nothing
/// @param bytes     size of the image. Behind it pixels are clear, so that the backdrop shows; what exceeds
///                  4 * width * height is not looked at.
/// @param dc        context to paint on, of any format. Unless it has 32 bits, what lies under the image is
///                  first turned into its format.
/// @param x, y      pixels, where the top left corner comes to lie; what lies outside the context is not
///                  painted
/// @param width     pixels, a multiple of 4
/// @param height    pixels
/// @param backdrop  context to take what lies under the image from, at the same position x, y; 0 means `dc`
///                  itself. The whole rectangle is painted, where the image is clear with the backdrop; what
///                  the backdrop does not have counts as black, all of it if the context is dead.
/// @return 1; 0 with nothing painted if `width` is no multiple of 4, a size is below 1 or there are more than
///         2^28 pixels, if all image slots are in use, `dc` is no live context, or memory ran out
/// @note One thread at a time with all functions that make or free images: a slot may be in use during the
///       call. Sprites may be drawn meanwhile. With 32 bits on both sides the target changes in one step.
FENLIGHT_API int32_t PaintPng(const uint8_t *image, int32_t bytes, uintptr_t dc, int32_t x, int32_t y,
                              int32_t width, int32_t height, uintptr_t backdrop) FENLIGHT_NOEXCEPT;

/// Copies an FX buffer into a new alpha image. Pixels are taken in the order of memory, from one row's end to
/// the next one's start: at widths that are no multiple of 4 a buffer from InitFX comes out sheared.
/// @param fx         FX handle; 0 gives 0, with all sizes 0
/// @param widthOut   takes the width in pixels; may be 0, as the next two. The three are stored even if there
///                   is no memory for the image.
/// @param heightOut  takes the height
/// @param bytesOut   takes the size of the block; 0 for more than 2^29 - 1 pixels, which are refused
/// @param alphaFx    FX handle of a picture whose grey, the sum of the three bytes divided by 3 and rounded
///                   down, becomes the alpha, pixel by pixel in the order of memory; 0 makes the image
///                   opaque, and so do pixels that this picture does not have
/// @return the alpha image, for FreePng; 0 without memory
FENLIGHT_API uint8_t *FXToPng(uintptr_t fx, int32_t *widthOut, int32_t *heightOut, int32_t *bytesOut,
                              uintptr_t alphaFx) FENLIGHT_NOEXCEPT;

/// Copies an alpha image into a new FX buffer with packed rows. They are painted and saved right at widths
/// that are multiples of 4.
/// @param image       the alpha image; 0 gives 0
/// @param width       pixels, at least 1
/// @param height      pixels, at least 1
/// @param bytes       size of the image; pixels behind it are black, and what the buffer has no room for is
///                    left out
/// @param alphaFxOut  takes the FX handle of a second buffer with the alpha as a grey picture; 0 for no such
///                    buffer. Left alone on failure.
/// @return FX handle; 0 for sizes that no buffer has or without memory, and no buffer is made then
FENLIGHT_API uintptr_t PngToFX(const uint8_t *image, int32_t width, int32_t height, int32_t bytes,
                               uintptr_t *alphaFxOut) FENLIGHT_NOEXCEPT;

/// Turns the alpha channel round: a becomes 255 - a. Colours stay.
/// @param image  the alpha image; 0 does nothing
/// @param bytes  size of the image
FENLIGHT_API void InvertChannelPng(uint8_t *image, int32_t bytes) FENLIGHT_NOEXCEPT;

/// Moves the alpha of each pixel towards that of another image, by 1 as often as `steps` says and once more.
/// Colours stay. Called until it returns 0, it fades from one channel to the other.
/// @param image  the alpha image to change; 0 does nothing
/// @param goal   what it is to become, not changed; `image` itself, or a block that does not overlap it. 0
///               does nothing.
/// @param bytes  size of the smaller of the two
/// @param steps  0 to 32; other numbers, also those below 0, count as 32
/// @return how many moves by 1 were made in all, 2^31 - 1 at most; 0 if the channels were equal
FENLIGHT_API int32_t MergeChannelPng(uint8_t *image, const uint8_t *goal, int32_t bytes,
                                     int32_t steps) FENLIGHT_NOEXCEPT;

/// Moves the three colours of each pixel towards those of another image, each by 1 as often as `steps` says
/// and once more. Alpha stays.
/// @param image, goal, bytes, steps  as for MergeChannelPng
/// @return how many moves by 1 were made in all three channels, 2^31 - 1 at most; 0 if the colours were equal
FENLIGHT_API int32_t MergeImagePng(uint8_t *image, const uint8_t *goal, int32_t bytes,
                                   int32_t steps) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
