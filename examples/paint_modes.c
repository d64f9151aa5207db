/* SPDX-License-Identifier: Zlib */
/* A balloon painted over a landscape in every mode of PaintImage, side by side, with borders and curves
 * below. The landscape is a tile map, and so is all text.
 *
 *   paint_modes [FILE.png]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>

#include "picture_file.h"
#include "tile_letters.h"

#ifndef FENLIGHT_ASSETS
#define FENLIGHT_ASSETS "assets/"
#endif

enum { kColumns = 6, kCellWidth = 116, kCellHeight = 142, kWidth = kColumns * kCellWidth, kHeight = 504 };
enum { kLandWidth = 80, kLandHeight = 112, kBalloonWidth = 68, kBalloonHeight = 104, kTile = 16 };
enum { kTransparent = -1 };

static const char *const kNames[] = {"SRCCOPY",    "SRCAND",      "SRCPAINT",  "SRCINVERT",  "DSTINVERT",
                                     "NOTSRCCOPY", "NOTSRCERASE", "MERGECOPY", "MERGEPAINT", "PATCOPY",
                                     "PATPAINT",   "PATINVERT",   "SRCERASE",  "BLACKNESS",  "WHITENESS"};

static HDC picture, land, balloon, font;

static void FillArea(HDC dc, COLORREF colour, int x, int y, int width, int height) {
    ColorFillImage(dc, colour, x, y, x + width, y + height);
}

static void Write(const char *text, int x, int y) { WriteText(picture, font, text, x, y); }

/* Sky, a hill's left and right side, its inside, meadow. */
static int DrawLand(void) {
    static const uint8_t kMap[7 * 5] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 0, 0, 1, 3,
                                        3, 2, 1, 3, 3, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};
    HDC tiles = CreateImage(GetDC(0), 5 * kTile, kTile);
    if (!tiles) return 0;
    FillArea(tiles, 0xF0C890, 0, 0, 3 * kTile, kTile);
    FillArea(tiles, 0x60A070, 3 * kTile, 0, kTile, kTile);
    FillArea(tiles, 0x40B860, 4 * kTile, 0, kTile, kTile);
    for (int i = 0; i < kTile; ++i) {
        FillArea(tiles, 0x60A070, kTile + i, kTile - 1 - i, 1, 1 + i);
        FillArea(tiles, 0x60A070, 2 * kTile + i, i, 1, kTile - i);
        FillArea(tiles, 0x308048, 4 * kTile + i * 7 % kTile, i, 2, 1);
    }
    SetTiles(tiles, 0, 5, 7, kTile, kTile, kMap, 5, 0, 0, land, 0, 0, 0, 0);
    return FreeImage(tiles);
}

static void ShowMode(int cell, const char *name, HDC first, int mode, HDC second) {
    const int x = cell % kColumns * kCellWidth + 16, y = cell / kColumns * kCellHeight + 10;
    char label[20];
    PaintImage(picture, x, y, kLandWidth, kLandHeight, first, 0, 0, 0);
    if (second) PaintImage(picture, x + 6, y + 4, kBalloonWidth, kBalloonHeight, second, 0, 0, mode);
    Frame(picture, 0x808080, 0xFFFFFF, x - 1, y - 1, x + kLandWidth, y + kLandHeight, 2); /* sunken */
    if (second)
        snprintf(label, sizeof label, "%d %s", mode, name);
    else
        snprintf(label, sizeof label, "%s", name);
    Write(label, x + kLandWidth / 2 - (int)strlen(label) * kLetterWidth / 2, y + kLandHeight + 8);
}

static void ShowBordersAndCurves(int y) {
    HPEN pen = CreatePen(PS_SOLID, 1, 0x2020C0);
    HGDIOBJ before = SelectObject(picture, pen);
    Frame(picture, 0xFFFFFF, 0x808080, 40, y + 10, 110, y + 40, 3);
    Write("RAISED", 52, y + 20);
    Frame(picture, 0x808080, 0xFFFFFF, 150, y + 10, 220, y + 40, 3);
    Write("SUNKEN", 162, y + 20);
    Frame(picture, 0xFFFFFF, 0x808080, 262, y + 14, 332, y + 36, 10);
    Write("THICK", 278, y + 20);
    for (int i = 0; i < 9; ++i) Curve(picture, 390, y + 26, 470, y - 6 + 8 * i, 560, y + 26);
    Write("CURVES", 580, y + 20);
    SelectObject(picture, before);
    DeleteObject(pen);
}

int main(int count, char **arguments) {
    HDC screen = GetDC(0), strip = LoadFileImage(FENLIGHT_ASSETS "balloon.png");
    picture = CreateImage(screen, kWidth, kHeight);
    land = CreateImage(screen, kLandWidth, kLandHeight);
    balloon = CreateImage(screen, kBalloonWidth, kBalloonHeight);
    font = MakeLetters(0x402000);
    if (!strip || !picture || !land || !balloon || !font || !DrawLand()) return 1;
    SizeImage(balloon, 0, 0, kBalloonWidth, kBalloonHeight, strip, 0, 0, kBalloonWidth / 2,
              kBalloonHeight / 2, 0);

    HBRUSH brush = CreateSolidBrush(0x3090F0); /* the pattern of PATCOPY and its kin: orange */
    HGDIOBJ before = SelectObject(picture, brush);
    FillArea(picture, 0xD8DCE0, 0, 0, kWidth, kHeight);
    ShowMode(0, "TARGET", land, 0, 0);
    FillArea(picture, 0xC0C0C0, kCellWidth + 16, 10, kLandWidth, kLandHeight);
    ShowMode(1, "SOURCE", balloon, 0, 0);
    ShowMode(2, "TRANSPARENT", land, kTransparent, balloon);
    for (int mode = 0; mode < 15; ++mode) ShowMode(3 + mode, kNames[mode], land, mode, balloon);
    ShowBordersAndCurves(3 * kCellHeight + 16);

    const char *file = count > 1 ? arguments[1] : "paint_modes.png";
    const int isWritten = WritePicture(file, picture, kWidth, kHeight);
    if (!isWritten) fprintf(stderr, "paint_modes: cannot write %s\n", file);
    SelectObject(picture, before);
    DeleteObject(brush);
    FreeAllImages();
    return isWritten ? 0 : 1;
}
