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
FENLIGHT_API void BitBltArray(uintptr_t destFX, int32_t destX, int32_t destY, int32_t width, int32_t height,
                              uintptr_t srcFX, int32_t srcX, int32_t srcY, int32_t mode,
                              uintptr_t parameter) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
