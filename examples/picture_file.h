/* SPDX-License-Identifier: Zlib */
/* Writes what a context shows as a PNG file, with zlib. */
#ifndef PICTURE_FILE_H
#define PICTURE_FILE_H
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zlib.h>

static void PutBigEndian(unsigned char *bytes, uLong number) {
    for (int i = 0; i < 4; ++i) bytes[i] = (unsigned char)(number >> (24 - 8 * i));
}

static int WriteChunk(FILE *file, const char *type, const unsigned char *data, uLong size) {
    unsigned char head[8], tail[4];
    PutBigEndian(head, size);
    memcpy(head + 4, type, 4);
    uLong crc = crc32(0, head + 4, 4);
    if (size != 0) crc = crc32(crc, data, (uInt)size);
    PutBigEndian(tail, crc);
    return fwrite(head, 1, 8, file) == 8 && fwrite(data, 1, size, file) == size &&
           fwrite(tail, 1, 4, file) == 4;
}

/* 1 if the file was written whole. */
static int WritePicture(const char *fileName, HDC context, int32_t width, int32_t height) {
    const size_t rowBytes = 1 + 3 * (size_t)width;
    const uLong rawBytes = (uLong)(rowBytes * (size_t)height);
    uLong packedBytes = compressBound(rawBytes);
    unsigned char *raw = malloc(rawBytes), *packed = malloc(packedBytes);
    FILE *file = fopen(fileName, "wb");
    int written = 0;
    if (raw && packed && file) {
        for (int32_t y = 0; y < height; ++y) {
            unsigned char *row = raw + rowBytes * (size_t)y;
            *row++ = 0; /* no filter */
            for (int32_t x = 0; x < width; ++x) {
                const COLORREF colour = GetPixel(context, x, y);
                *row++ = (unsigned char)colour;
                *row++ = (unsigned char)(colour >> 8);
                *row++ = (unsigned char)(colour >> 16);
            }
        }
        unsigned char header[13] = {0, 0, 0, 0, 0, 0, 0, 0, 8, 2, 0, 0, 0};
        PutBigEndian(header, (uLong)width);
        PutBigEndian(header + 4, (uLong)height);
        written = compress2(packed, &packedBytes, raw, rawBytes, 9) == Z_OK &&
                  fwrite("\x89PNG\r\n\x1a\n", 1, 8, file) == 8 && WriteChunk(file, "IHDR", header, 13) &&
                  WriteChunk(file, "IDAT", packed, packedBytes) && WriteChunk(file, "IEND", raw, 0);
    }
    if (file && fclose(file) != 0) written = 0;
    free(packed);
    free(raw);
    return written;
}

#endif
