// SPDX-License-Identifier: Zlib
// The PNG codec of the alpha images and the JPEG codec of saving, behind entry points that are bound as a
// group at process attach.
//
// The entry points are written at attach and by tests that take the codec away, never while other calls run;
// they are read without a lock.
#pragma once

#include <cstdint>

#include "fenlight/platform/graphics.h"

namespace fenlight {

// All return 0 or LodePNG's error number. Pixels are 8-bit red, green, blue, alpha, rows from the top, no
// padding. On failure of a decode the width, the pixel block and the size are 0 and the height is left alone;
// on failure of an encode both outputs are 0. Blocks go back through FreePNGBuffer.
using DecodePngEntry = uint32_t (*)(int32_t *width, int32_t *height, const uint8_t *file, int32_t fileBytes,
                                    uint8_t **pixels, int32_t *pixelBytes) noexcept;
using EncodePngEntry = uint32_t (*)(int32_t width, int32_t height, const uint8_t *pixels, uint8_t **stream,
                                    int32_t *streamBytes) noexcept;
using FreePngBufferEntry = void (*)(uint8_t *block) noexcept;

extern DecodePngEntry DecodePNG;
extern EncodePngEntry EncodePNG;
extern FreePngBufferEntry FreePNGBuffer;

// 1 when the file was written, else 0; 0 for the bitmap 0. See jpeg_codec.h.
using Dib2JpgEntry = uint32_t (*)(HBITMAP bitmap, const char *fileName, int32_t quality) noexcept;

extern Dib2JpgEntry Dib2Jpg;

void BindCodecs() noexcept;
void UnbindCodecs() noexcept;

}  // namespace fenlight
