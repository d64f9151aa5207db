// SPDX-License-Identifier: Zlib
// Two roads from data to a bitmap: PNG through the library's own decoder, every other format through the
// platform's picture loader. The bitmap belongs to the caller of these functions. The caller's thread only,
// one load at a time.
#pragma once

#include <cstdint>

#include "fenlight/platform/types.h"
#include "platform/pictures/picture.h"

namespace fenlight {

// The first four bytes of a PNG file as a little-endian word.
inline constexpr uint32_t PngMagic = 0x474E5089;

// Does data of `size` bytes start like a PNG? Reads nothing of data below 4 bytes.
bool StartsAsPng(const void *data, uint32_t size) noexcept;

// 0 on failure; the last error is left alone.
HBITMAP PngFromFile(const char *path) noexcept;
HBITMAP PngFromMemory(const void *data, uint32_t size) noexcept;

// 0 on failure. Last error 8 without memory for the path, 2 if there is no such file or no picture in it.
HBITMAP PictureFromFile(const char *path) noexcept;
// 0 on failure. Last error 87 if the data is no picture.
HBITMAP PictureFromMemory(const void *data, uint32_t size) noexcept;

// Draws a picture into a bitmap of the screen's format, in the size that it has at the screen's resolution.
// 0 on failure: last error 87 if there is no picture, what Render said if it failed, else left alone.
HBITMAP PictureToBitmap(platform::IPicture *picture) noexcept;

}  // namespace fenlight
