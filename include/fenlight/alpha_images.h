/* SPDX-License-Identifier: Zlib */
/* Alpha images. Not yet part of the library: declared so that the types are settled, not exported. */
#ifndef FENLIGHT_ALPHA_IMAGES_H
#define FENLIGHT_ALPHA_IMAGES_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API uint8_t *ImportPng(const char *fileName, int32_t *widthOut, int32_t *heightOut,
                                int32_t *bytesOut) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t ExportPng(const uint8_t *image, const char *fileName, int32_t width,
                               int32_t height) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t FreePng(uint8_t *image) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t PaintPng(const uint8_t *image, int32_t bytes, uintptr_t dc, int32_t x, int32_t y,
                              int32_t width, int32_t height, uintptr_t backdrop) FENLIGHT_NOEXCEPT;
FENLIGHT_API uint8_t *FXToPng(uintptr_t fx, int32_t *widthOut, int32_t *heightOut, int32_t *bytesOut,
                              uintptr_t alphaFx) FENLIGHT_NOEXCEPT;
FENLIGHT_API uintptr_t PngToFX(const uint8_t *image, int32_t width, int32_t height, int32_t bytes,
                               uintptr_t *alphaFxOut) FENLIGHT_NOEXCEPT;
FENLIGHT_API void InvertChannelPng(uint8_t *image, int32_t bytes) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MergeChannelPng(uint8_t *image, const uint8_t *goal, int32_t bytes,
                                     int32_t steps) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MergeImagePng(uint8_t *image, const uint8_t *goal, int32_t bytes,
                                   int32_t steps) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
