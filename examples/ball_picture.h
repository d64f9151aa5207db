/* SPDX-License-Identifier: Zlib */
/* Draws shaded balls with a rolling stripe, for the programs in which balls bounce. */
#ifndef BALL_PICTURE_H
#define BALL_PICTURE_H
#include <fenlight/platform.h>
#include <stdint.h>

enum { kBallKey = 0x00400000, kBallFrames = 4 };

static int32_t Shade(COLORREF colour, int shift, int32_t light) {
    const int32_t value =
        (int32_t)(colour >> shift & 0xFF) * light / 256 + (light > 256 ? (light - 256) / 2 : 0);
    return (value < 1 ? 1 : value > 255 ? 255 : value) << shift;
}

/* One row of frames of `size` x `size` pixels from (0, y) on, lit from the top left. */
static void DrawBallFrames(HDC context, int32_t y, int32_t size, COLORREF colour, COLORREF stripe) {
    for (int32_t row = 0; row < size; ++row)
        for (int32_t x = 0; x < size * kBallFrames; ++x) {
            const int32_t dx = 2 * (x % size) - size + 1, dy = 2 * row - size + 1;
            const int32_t distance = dx * dx + dy * dy;
            const int32_t light = 290 - 100 * (dx + dy) / size - 90 * distance / (size * size);
            const int32_t phase = (2 * (dx + size) / size + x / size) % kBallFrames;
            const COLORREF base = phase == 0 ? stripe : colour;
            const int32_t shaded = Shade(base, 0, light) | Shade(base, 8, light) | Shade(base, 16, light);
            SetPixel(context, x, y + row, distance < size * size - size ? (COLORREF)shaded : kBallKey);
        }
}

#endif
