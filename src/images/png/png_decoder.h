// SPDX-License-Identifier: Zlib
// A reader that turns a PNG stream into a bitmap which the platform can draw at once.
//
// The steps are called in a fixed order: PngLoaderInit, one of the two load steps, PngLoaderDecode,
// PngLoaderCreateBitmap, PngLoaderCleanup; the last one also after a failure, on every path. The bitmap
// outlives the context and belongs to the caller. One context serves one load at a time on one thread;
// different contexts are independent.
//
// Only pixels are read: no CRC and no Adler-32 is compared, and ancillary chunks have no effect. Nothing is
// blended: the alpha of RGBA stays in the fourth byte of each pixel, other transparency is dropped.
#pragma once

#include <cstdint>

#include "fenlight/platform/types.h"

namespace fenlight {

enum PngError : uint32_t {
    PngErrorNone = 0,
    PngErrorFile = 0x1000,    // the file can't be opened, measured or read
    PngErrorMemory = 0x1001,  // no memory for a buffer
    PngErrorBusy = 0x1002,    // the context already holds a stream
    PngErrorData = 0x2000,    // not a PNG stream, or the compressed data is bad
    PngErrorFormat = 0x2001,  // an unknown critical chunk, or an IHDR that isn't supported
    PngErrorState = 0x2003,   // a step called in the wrong state
    PngErrorBitmap = 0x2006,  // the platform refused the bitmap
};

enum PngState : uint32_t { PngStateEmpty = 0, PngStateHeaderRead = 1, PngStateDecoded = 2 };

// Who owns sourceData: the loader (file) or the caller (memory).
enum PngSource : uint32_t { PngSourceNone = 0, PngSourceFile = 1, PngSourceMemory = 3 };

struct PngContext {
    uint32_t width;
    uint32_t height;
    uint32_t lastError;     // a PngError; a bad filter byte leaves it 0
    uint32_t paletteCount;  // bytes of the first PLTE chunk / 3: may exceed 256
    uint8_t colourType;
    uint8_t bitDepth;
    uint8_t interlace;
    const uint8_t *sourceData;  // the whole stream
    uint32_t sourceSize;
    const uint8_t *chunkPosition;  // the chunk under examination
    uint8_t *rawData;              // the inflated rows, a filter byte before each
    uint32_t rawSize;
    const uint8_t *paletteData;  // payload of the first PLTE chunk, inside sourceData
    uint32_t sourceKind;
    const uint8_t *headerData;      // payload of the IHDR chunk, inside sourceData
    const uint8_t *firstImageData;  // the first IDAT chunk (its length field), inside sourceData
    uint32_t state;
};

// All steps: `context` is never null. 1 for success, 0 for failure with lastError set.

// Zeroes the context. What it held is forgotten, not freed.
int32_t PngLoaderInit(PngContext *context) noexcept;

// Reads the whole file and examines its chunks. On failure the buffer is gone and the file is closed.
int32_t PngLoaderLoadFile(PngContext *context, const char *fileName) noexcept;

// Examines `size` bytes at `address` in place: they must stay unchanged until PngLoaderCleanup.
int32_t PngLoaderLoadMemory(PngContext *context, const void *address, uint32_t size) noexcept;

// Inflates the image data into rawData. A stream that is complete but short leaves zero bytes in the rest;
// what it has beyond the picture is dropped.
int32_t PngLoaderDecode(PngContext *context) noexcept;

// A new top-down section with the picture, or 0. The caller deletes it by DeleteObject.
HBITMAP PngLoaderCreateBitmap(PngContext *context) noexcept;

// Frees the loader's buffers and zeroes the context.
int32_t PngLoaderCleanup(PngContext *context) noexcept;

}  // namespace fenlight
