/* SPDX-License-Identifier: Zlib */
/* A caller in C that knows nothing but the public headers: one sprite from a painted strip walks over a
 * window's picture, is watched through the screen's pixels, and goes again. */
#include <stdio.h>
#include <string.h>

#include "fenlight/fenlight.h"
#include "fenlight/platform.h"

static int failures = 0;

static void Check(int holds, const char *claim) {
    if (holds) return;
    fprintf(stderr, "not so: %s\n", claim);
    ++failures;
}

/* Waits until the screen shows `colour` at a place; the deadline only bounds a failing run. */
static int ScreenShows(HDC screen, int32_t x, int32_t y, COLORREF colour) {
    for (int tries = 0; tries < 2000; ++tries) {
        if (GetPixel(screen, x, y) == colour) return 1;
        Sleep(5);
    }
    return 0;
}

static int Waits(int32_t (*question)(uintptr_t), uintptr_t handle, int32_t answer) {
    for (int tries = 0; tries < 2000; ++tries) {
        if (question(handle) == answer) return 1;
        Sleep(5);
    }
    return 0;
}

int main(void) {
    const COLORREF key = 0x00FF00FF, body = 0x0000C8FF, sky = 0x00804020;
    Check(GetVersion() == 3000, "the version is 3000");
    int32_t numbers[11];
    memset(numbers, 0, sizeof numbers);
    Random(numbers, 9, 1, 6);
    Check(numbers[0] >= 1 && numbers[9] <= 6 && numbers[10] == 0, "ten numbers from 1 to 6");

    HWND window = OpenWindow("C caller", 160, 120);
    HDC screen = GetDC(window);
    uintptr_t back = CreateImage(screen, 160, 120), clean = CreateImage(screen, 160, 120);
    uintptr_t strip = CreateImage(screen, 16, 8);
    Check(window && screen && back && clean && strip, "window and images come into being");
    Check(GetWidthImage(strip) == 16 && GetHeightImage(strip) == 8, "the strip has its size");
    ColorFillImage(clean, sky, 0, 0, 160, 120);
    BitBlt(back, 0, 0, 160, 120, clean, 0, 0, SRCCOPY);
    BitBlt(screen, 0, 0, 160, 120, clean, 0, 0, SRCCOPY);
    ColorFillImage(strip, key, 0, 0, 16, 8);
    ColorFillImage(strip, body, 2, 2, 6, 8);

    uintptr_t sprite = InitSprite(strip, screen, back, clean, 0, 0, 8, 8, 1, 1, 1, 10, 20, 3, 3);
    Check(sprite != 0 && ExistSprite(sprite) == 0, "a sprite lives");
    Check(ScreenShows(screen, 13, 24, body), "the sprite's body is on the screen");
    Check(GetPixel(screen, 10, 20) == sky, "its key colour is not");
    MoveSprite(sprite, 100, 80);
    Check(Waits(HasSpriteArrived, sprite, 1), "it arrives");
    Check(ScreenShows(screen, 103, 84, body), "and is shown there");
    Check(ScreenShows(screen, 13, 24, sky), "and no longer at its start");
    DeleteAllSprites();
    Check(GetPixel(screen, 103, 84) == sky, "it is wiped when it is deleted");
    Check(CountAllSprites() == 1, "an empty list counts 1");
    Check(FreeAllImages() == 3, "three images go back");
    Check(DestroyWindow(window) != 0 && !IsWindow(window), "the window closes");
    if (failures == 0) printf("all claims hold\n");
    return failures != 0;
}
