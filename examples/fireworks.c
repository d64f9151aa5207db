/* SPDX-License-Identifier: Zlib */
/* Fireworks over a town at night: stars fly towards the viewer and hide behind the roofs, rockets burst above
 * them. Without a display it ends after five seconds. With --picture it writes six moments of the stars and
 * of one burst into a folder instead, as stars.png and burst.png.
 *
 *   fireworks [--picture FOLDER]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "picture_file.h"

enum { kWidth = 640, kHeight = 480 };
enum { kPart = 300, kPartHeight = 220, kGap = 4 }; /* what --picture shows */

static int32_t Between(int32_t low, int32_t high) {
    int32_t number;
    Random(&number, 0, low, high - low);
    return number;
}

static void Fill(HDC context, int32_t left, int32_t top, int32_t right, int32_t bottom, COLORREF colour) {
    const RECT room = {left, top, right, bottom};
    HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &room, brush);
    DeleteObject(brush);
}

static void PaintTown(HDC context) {
    Fill(context, 0, 0, kWidth, kHeight, 0); /* black, where stars may show */
    for (int32_t x = 0, width; x < kWidth; x += width) {
        const int32_t roof = Between(kHeight - 150, kHeight - 50);
        width = Between(30, 70);
        Fill(context, x, roof, x + width, kHeight, 0x302018);
        for (int32_t y = roof + 10; y < kHeight - 10; y += 18)
            for (int32_t window = x + 7; window + 8 < x + width; window += 14)
                if (Between(0, 3) == 0) Fill(context, window, y, window + 6, y + 8, 0x60B0D0);
    }
}

static void Burst(HDC screen, HDC background, int32_t x, int32_t y) {
    static const COLORREF colours[] = {0x4060FF, 0x60FF80, 0xFF9060, 0x60E0FF, 0xFF80E0};
    const int32_t glitters = Between(0, 4) == 0;
    SetPixelEffect(screen, background, x, y, colours[Between(0, 5)], 5, 8, 2, 400, glitters ? 2 : 0, 45);
}

/* Six moments of a part of a running scene, in two rows of three. */
static int WriteMoments(const char *folder, const char *name, HDC scene, DWORD interval) {
    char path[1024];
    const int32_t width = 3 * kPart + 2 * kGap, height = 2 * kPartHeight + kGap;
    HDC strip = CreateImage(scene, width, height);
    Fill(strip, 0, 0, width, height, 0xFFFFFF);
    for (int i = 0; i < 6; ++i) {
        Sleep(interval);
        BitBlt(strip, i % 3 * (kPart + kGap), i / 3 * (kPartHeight + kGap), kPart, kPartHeight, scene, 0, 0,
               SRCCOPY);
    }
    snprintf(path, sizeof(path), "%s/%s", folder, name);
    return WritePicture(path, strip, width, height);
}

static int WriteStrips(const char *folder, HDC scene, HDC background) {
    if (!Stars(scene, background, 0, 0, kPart, kPartHeight, 1500, 20, 0)) return 0;
    Sleep(6000); /* the stars begin one by one */
    int isWritten = WriteMoments(folder, "stars.png", scene, 100);
    NoStars(2);
    while (!StatusStars()) Sleep(1);
    SetPixelEffect(scene, background, kPart / 2, kPartHeight / 2 - 20, 0x60C0FF, 10, 10, 2, 1500, 0, 45);
    isWritten &= WriteMoments(folder, "burst.png", scene, 140);
    return isWritten;
}

static void Celebrate(HWND window, HDC screen, HDC background) {
    const int isShown = getenv("DISPLAY") != NULL;
    const DWORD start = GetTickCount();
    Stars(screen, background, 0, 0, kWidth, kHeight, 500, 20, 1);
    while (IsWindow(window) && (isShown || GetTickCount() - start < 5000)) {
        Burst(screen, background, Between(80, kWidth - 80), Between(60, 260));
        Sleep((DWORD)Between(150, 700));
    }
    NoStars(3); /* the last ones fly out */
    while (!StatusStars()) Sleep(20);
}

int main(int argumentCount, char **arguments) {
    HWND window = OpenWindow("Fireworks", kWidth, kHeight);
    HDC screen = GetDC(window), background = CreateImage(screen, kWidth, kHeight);
    if (!window || !background) return 1;
    int isDone = 1;
    InitPixelEffects();
    if (argumentCount == 3 && strcmp(arguments[1], "--picture") == 0) {
        Fill(screen, 0, 0, kWidth, kHeight, 0);
        Fill(background, 0, 0, kWidth, kHeight, 0);
        isDone = WriteStrips(arguments[2], screen, background);
    } else {
        PaintTown(background);
        BitBlt(screen, 0, 0, kWidth, kHeight, background, 0, 0, SRCCOPY);
        Celebrate(window, screen, background);
    }
    DeInitPixelEffects();
    FreeAllImages();
    DestroyWindow(window);
    return isDone ? 0 : 1;
}
