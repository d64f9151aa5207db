/* SPDX-License-Identifier: Zlib */
/* Alpha images on a landscape: the sun turns into the moon above the hills, a balloon fades away, a lens with
 * a soft edge shows a tree three times as large, and the corners lie in the shade. The picture is written as
 * a PNG file.
 *
 *   soft_edges [FILE.png]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifndef FENLIGHT_ASSETS
#define FENLIGHT_ASSETS "assets/"
#endif

enum { kWidth = 640, kHeight = 480, kPixel = 4 };
enum { kDisc = 88, kLens = 180, kLensZoom = 3, kBalloonWidth = 68, kBalloonHeight = 104 };

static HDC picture;

static void Paint(const uint8_t *image, int x, int y, int width, int height) {
    PaintPng(image, kPixel * width * height, picture, x, y, width, height, 0);
}

/* 255 inside an oval of that size, from `core` of its radius on less and less, 0 at its edge and outside. */
static uint8_t OvalAt(int x, int y, int width, int height, double core) {
    const double u = (2 * x + 1 - width) / (double)width, v = (2 * y + 1 - height) / (double)height;
    const double shown = (1 - u * u - v * v) / (1 - core * core);
    return (uint8_t)(shown <= 0 ? 0 : shown >= 1 ? 255 : 255 * shown);
}

/* The block is the caller's own, so anything may fill it. */
static uint8_t *MakeOval(int width, int height, double core, COLORREF colour) {
    uint8_t *image = malloc((size_t)(kPixel * width * height)), *pixel = image;
    for (int i = 0; image && i < width * height; ++i, pixel += kPixel) {
        for (int channel = 0; channel < 3; ++channel) pixel[channel] = (uint8_t)(colour >> 8 * channel);
        pixel[3] = OvalAt(i % width, i / width, width, height, core);
    }
    return image;
}

static int ShowSkies(void) {
    uint8_t *sun = MakeOval(kDisc, kDisc, 0.6, 0x30A0FF), *moon = MakeOval(kDisc, kDisc, 0.85, 0xF4ECE8);
    const int isMade = sun && moon;
    for (int i = 0; isMade && i < 6; ++i) {
        Paint(sun, 12 + 106 * i, 40 + 6 * (i - 2) * (i - 3), kDisc, kDisc);
        MergeImagePng(sun, moon, kPixel * kDisc * kDisc, 32); /* by 33 at most, the colours */
        MergeChannelPng(sun, moon, kPixel * kDisc * kDisc, 32);
    }
    free(sun);
    free(moon);
    return isMade;
}

/* The first balloon of the strip at twice its size; the strip's yellow becomes clear. */
static uint8_t *LoadBalloon(void) {
    int32_t width, height, bytes;
    uint8_t *strip = ImportPng(FENLIGHT_ASSETS "balloon.png", &width, &height, &bytes);
    uint8_t *image = malloc(kPixel * kBalloonWidth * kBalloonHeight);
    for (int i = 0; strip && image && i < kBalloonWidth * kBalloonHeight; ++i) {
        const int x = i % kBalloonWidth / 2, y = i / kBalloonWidth / 2;
        const uint8_t *source = strip + kPixel * (y * width + x);
        memcpy(image + kPixel * i, source, kPixel);
        if (source[0] == 255 && source[1] == 255 && source[2] == 0) image[kPixel * i + 3] = 0;
    }
    if (!strip) {
        free(image);
        image = NULL;
    }
    FreePng(strip);
    return image;
}

static int ShowBalloons(void) {
    static const uint8_t clear[kPixel * kBalloonWidth * kBalloonHeight];
    uint8_t *balloon = LoadBalloon();
    if (!balloon) return 0;
    for (int i = 0; i < 5; ++i) {
        Paint(balloon, 70 + 84 * i, 330 - 16 * i, kBalloonWidth, kBalloonHeight);
        MergeChannelPng(balloon, clear, sizeof clear, 24);
        MergeChannelPng(balloon, clear, sizeof clear, 24);
    }
    free(balloon);
    return 1;
}

/* A part of the picture, enlarged, with a grey picture for its alpha. */
static int ShowLens(int fromX, int fromY, int x, int y) {
    const HDC part = CreateImage(picture, kLens, kLens);
    SizeImage(part, 0, 0, kLens, kLens, picture, fromX, fromY, kLens / kLensZoom, kLens / kLensZoom, 0);
    const uintptr_t colours = InitFX(part), mask = CreateExtFX(kLens, kLens);
    uint8_t *lens = NULL;
    if (colours && mask) {
        for (int i = 0; i < kLens * kLens; ++i)
            memset(((struct FXHeader *)mask)->Pixels + 3 * i, OvalAt(i % kLens, i / kLens, kLens, kLens, 0.9),
                   3);
        int32_t width, height, bytes;
        lens = FXToPng(colours, &width, &height, &bytes, mask);
        uint8_t *rim = MakeOval(kLens + 16, kLens + 16, 0.8, 0x102030);
        if (rim) Paint(rim, x - 8, y - 8, kLens + 16, kLens + 16);
        if (lens) Paint(lens, x, y, width, height);
        free(rim);
    }
    const int isShown = lens != NULL;
    FreePng(lens);
    FreeFX(colours);
    FreeFX(mask);
    FreeImage(part);
    return isShown;
}

static int ShadeCorners(void) {
    uint8_t *shade = MakeOval(kWidth * 5 / 4, kHeight * 5 / 4, 0.72, 0x201008);
    const int width = kWidth * 5 / 4, height = kHeight * 5 / 4;
    if (!shade) return 0;
    InvertChannelPng(shade, kPixel * width * height);
    Paint(shade, -kWidth / 8, -kHeight / 8, width, height);
    free(shade);
    return 1;
}

static int WritePng(const char *fileName) {
    const uintptr_t fx = InitFX(picture);
    int32_t width, height, bytes;
    uint8_t *image = FXToPng(fx, &width, &height, &bytes, 0);
    remove(fileName); /* that no file can be made is not told */
    ExportPng(image, fileName, width, height);
    FreePng(image);
    FreeFX(fx);
    uint8_t *back = ImportPng(fileName, &width, &height, &bytes);
    FreePng(back);
    return back != NULL;
}

int main(int count, char **arguments) {
    const char *file = count > 1 ? arguments[1] : "soft_edges.png";
    const HDC photo = LoadFileImage(FENLIGHT_ASSETS "meadow.jpg");
    picture = CreateImage(GetDC(0), kWidth, kHeight);
    if (!photo || !picture) return 1;
    SizeImage(picture, 0, 0, kWidth, kHeight, photo, 0, 0, GetWidthImage(photo), GetHeightImage(photo), 0);
    const int isShown = ShowSkies() && ShowLens(4, 222, 440, 280) && ShowBalloons() && ShadeCorners();
    const int isWritten = isShown && WritePng(file);
    if (!isWritten) fprintf(stderr, "soft_edges: cannot make %s\n", file);
    FreeAllImages();
    return isWritten ? 0 : 1;
}
