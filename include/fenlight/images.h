/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_IMAGES_H
#define FENLIGHT_IMAGES_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Images. */

FENLIGHT_API uintptr_t CreateImage(uintptr_t dc, int32_t width, int32_t height) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FreeImage(uintptr_t image) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FreeAllImages(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetWidthImage(uintptr_t image) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetHeightImage(uintptr_t image) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetInfosImage(uintptr_t image, void *info) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ColorFillImage(uintptr_t dc, uint32_t colour, int32_t left, int32_t top, int32_t right,
                                    int32_t bottom) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SizeImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t destWidth,
                               int32_t destHeight, uintptr_t srcDC, int32_t srcX, int32_t srcY,
                               int32_t srcWidth, int32_t srcHeight, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t LoadFileImage(const char *fileName) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t LoadMemoryImage(const void *data, int32_t size) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t LoadResourceImage(uintptr_t module, const char *name) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t PaintImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t width, int32_t height,
                                uintptr_t srcDC, int32_t srcX, int32_t srcY, int32_t mode) FENLIGHT_NOEXCEPT;
FENLIGHT_API void BitBltArray(uintptr_t destFX, int32_t destX, int32_t destY, int32_t width, int32_t height,
                              uintptr_t srcFX, int32_t srcX, int32_t srcY, int32_t mode,
                              uintptr_t parameter) FENLIGHT_NOEXCEPT;
FENLIGHT_API void Frame(uintptr_t dc, uint32_t colourTopLeft, uint32_t colourBottomRight, int32_t left,
                        int32_t top, int32_t right, int32_t bottom, int32_t thickness) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t Curve(uintptr_t dc, int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t x3,
                           int32_t y3) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t SaveImage(uintptr_t image, const char *fileName, int32_t format,
                               int32_t quality) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
