/* SPDX-License-Identifier: Zlib */
/* One photograph under every FX effect, a labelled tile each. The sheet is written as a PNG file.
 *
 *   fx_gallery [FILE.png]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>

#include "tile_letters.h"

#ifndef FENLIGHT_ASSETS
#define FENLIGHT_ASSETS "assets/"
#endif

enum { kTileWidth = 144, kTileHeight = 108, kPixels = kTileWidth * kTileHeight };
enum { kColumns = 6, kRows = 7, kCellWidth = kTileWidth + 12, kCellHeight = kTileHeight + 26 };
enum { kWidth = kColumns * kCellWidth + 12, kHeight = kRows * kCellHeight + 12 };
enum { kKey = 0x00FFFF, kTransparent = -1 };

static HDC sheet, letters, lake, meadow, balloon, scratch;
static uintptr_t lakeFx, meadowFx, balloonFx, ovalFx, fx; /* the first four stay as they are */
static int cell = -1, x, y;                               /* where the next tile goes */

/* Makes the next cell the current one; `fx` is a fresh copy of the picture there. */
static void Begin(const char *label, uintptr_t picture) {
    FreeFX(fx);
    fx = CloneFX(picture);
    ++cell;
    x = 12 + cell % kColumns * kCellWidth;
    y = 12 + cell / kColumns * kCellHeight;
    WriteText(sheet, letters, label, x + kTileWidth / 2 - (int)strlen(label) * kLetterWidth / 2,
              y + kTileHeight + 5);
}

static uint8_t *PixelsOf(uintptr_t picture) { return ((struct FXHeader *)picture)->Pixels; }

/* A point list of a line through the lake, shown by dots on its points. */
static void ShowPoints(void) {
    static int16_t points[kPixels][2];
    HGDIOBJ before = SelectObject(scratch, CreatePen(PS_SOLID, 1, 0));
    CopyFX(scratch, 0, 0, lakeFx);
    Curve(scratch, 12, 100, 60, -20, 180, 80);
    DeleteObject(SelectObject(scratch, before));
    const uintptr_t drawn = InitFX(scratch);
    const int count = PixelToMemory(drawn, &points[0][0], 8) / (int)sizeof points[0];
    CopyFX(sheet, x, y, drawn);
    for (int i = 0; i < count; ++i) {
        const int pointX = x + points[i][0] - 1, pointY = y + kTileHeight - 1 - points[i][1];
        ColorFillImage(sheet, 0x0000FF, pointX - 1, pointY - 1, pointX + 2, pointY + 2);
    }
    FreeFX(drawn);
}

static void ShowFilters(void) {
    Begin("PHOTOGRAPH", lakeFx);
    CopyFX(sheet, x, y, fx);
    Begin("SECOND PICTURE", meadowFx);
    CopyFX(sheet, x, y, fx);
    Begin("DARKEN 80", lakeFx);
    Darken(sheet, x, y, fx, 80);
    Begin("LIGHTEN 80", lakeFx);
    Lighten(sheet, x, y, fx, 80);
    Begin("GREY", lakeFx);
    Grey(sheet, x, y, fx);
    Begin("BLACKWHITE 120", lakeFx);
    BlackWhite(sheet, x, y, fx, 120);
    Begin("SHARPEN 40 TIMES", lakeFx);
    for (int i = 0; i < 40; ++i) Sharpen(sheet, x, y, fx);
    Begin("COLORMOVE 60", lakeFx);
    ColorMove(sheet, x, y, fx, meadowFx, 60);
    Begin("EXCHANGECOLOR", lakeFx);
    ExchangeColor(sheet, x, y, fx, 0xEEF6FA, 0x00C0FF); /* the sails */
    Begin("EXCHANGERGB", lakeFx);
    ExchangeRgb(sheet, x, y, fx, 70, 0, -70);
    Begin("COLORFILL", lakeFx);
    ColorFill(fx, 0xC08040);
    CopyFX(sheet, x, y, fx);
    Begin("PIXELTOMEMORY 8", lakeFx);
    ShowPoints();
}

static void ShowSmoothing(void) {
    Begin("BLUR 3 TIMES", lakeFx);
    for (int i = 0; i < 3; ++i) Blur(sheet, x, y, fx);
    Begin("SMOOTH 8 TIMES", lakeFx);
    for (int i = 0; i < 8; ++i) Smooth(sheet, x, y, fx, ovalFx);
    Begin("FOG 12 TIMES", lakeFx);
    for (int i = 0; i < 12; ++i) Fog(sheet, x, y, lakeFx, fx, ovalFx);
    Begin("ANTIALIASING KEY", balloonFx);
    Antialiasing(sheet, x, y, fx, 0xFFFFFFFF, 0, 0);
    Begin("ANTIALIASING ALL", balloonFx);
    Antialiasing(sheet, x, y, fx, 0xFFFFFFFF, 3, 1);
    Begin("RUSTLE", lakeFx);
    Rustle(sheet, x, y, fx);
}

static void ShowGeometry(void) {
    Begin("FLIPX", lakeFx);
    FlipX(sheet, x, y, fx);
    Begin("FLIPY", lakeFx);
    FlipY(sheet, x, y, fx);
    Begin("ROTATE180", lakeFx);
    Rotate180(sheet, x, y, fx);
    Begin("ROTATE 30", lakeFx);
    Rotate(sheet, x, y, meadowFx, fx, 30, 0);
    Begin("ROTATE 30 KEY", lakeFx);
    Rotate(sheet, x, y, fx, balloonFx, 30, kTransparent);
    Begin("ROTATEIMAGE 30", lakeFx);
    CopyFX(scratch, 0, 0, meadowFx);
    RotateImage(scratch, 0, 0, kTileWidth, kTileHeight, lake, 0, 0, 30, 0);
    PaintImage(sheet, x, y, kTileWidth, kTileHeight, scratch, 0, 0, 0);
    Begin("ROTATEIMAGE KEY", lakeFx);
    CopyFX(scratch, 0, 0, fx);
    RotateImage(scratch, 0, 0, kTileWidth, kTileHeight, balloon, 0, 0, 30, kTransparent);
    PaintImage(sheet, x, y, kTileWidth, kTileHeight, scratch, 0, 0, 0);
    Begin("ROTATEMEM", lakeFx);
    if (fx) RotateMem(PixelsOf(fx), 0, 3 * kPixels, kPixels, 0); /* by a third of its rows */
    CopyFX(sheet, x, y, fx);
}

static void ShowBlends(void) {
    static const char *const labels[] = {"MERGE 0", "MERGE 1", NULL, "MERGE 3"};
    Begin("SEMITRANS 30", lakeFx);
    SemiTrans(sheet, x, y, fx, meadowFx, 30);
    Begin("SEMITRANS 70", lakeFx);
    SemiTrans(sheet, x, y, fx, meadowFx, 70);
    Begin("ALPHATRANS", lakeFx);
    AlphaTrans(sheet, x, y, fx, meadowFx, ovalFx);
    for (int flags = 0; flags < 4; ++flags) {
        if (!labels[flags]) continue;
        Begin(labels[flags], lakeFx);
        Merge(balloonFx, fx, flags);
        CopyFX(sheet, x, y, fx);
    }
    Begin("BITBLTARRAY KEY", lakeFx);
    BitBltArray(fx, 36, 0, kTileWidth - 36, kTileHeight, balloonFx, 0, 0, 1, kKey);
    CopyFX(sheet, x, y, fx);
    Begin("BITBLTARRAY MASK", lakeFx);
    BitBltArray(fx, 0, 0, kTileWidth, kTileHeight, meadowFx, 0, 0, 2, ovalFx);
    CopyFX(sheet, x, y, fx);
    Begin("WATER", lakeFx);
    Water(sheet, x, y, fx, 0, 0);
    Begin("WATER 54 CALM", lakeFx);
    Water(sheet, x, y, fx, 0, 54);
}

static void ShowAlphaImage(const char *label, const uint8_t *image) {
    Begin(label, lakeFx);
    CopyFX(sheet, x, y, fx);
    PaintPng(image, 4 * kPixels, sheet, x, y, kTileWidth, kTileHeight, 0);
}

static int ShowAlphaImages(void) {
    int32_t width, height, bytes;
    uint8_t *oval = FXToPng(meadowFx, &width, &height, &bytes, ovalFx);
    uint8_t *plain = FXToPng(lakeFx, &width, &height, &bytes, 0);
    uintptr_t alpha = 0, colours = 0;
    const int isMade = oval && plain;
    if (isMade) {
        ShowAlphaImage("PAINTPNG", oval);
        InvertChannelPng(oval, bytes);
        ShowAlphaImage("INVERTCHANNELPNG", oval);
        for (int i = 0; i < 4; ++i) MergeChannelPng(oval, plain, bytes, 32);
        ShowAlphaImage("MERGECHANNELPNG", oval);
        for (int i = 0; i < 2; ++i) MergeImagePng(plain, oval, bytes, 32);
        ShowAlphaImage("MERGEIMAGEPNG", plain);
        colours = PngToFX(oval, width, height, bytes, &alpha);
        Begin("PNGTOFX", lakeFx);
        CopyFX(sheet, x, y, colours);
        Begin("PNGTOFX ALPHA", lakeFx);
        CopyFX(sheet, x, y, alpha);
    }
    FreeFX(colours);
    FreeFX(alpha);
    FreePng(oval);
    FreePng(plain);
    return isMade;
}

/* White inside an oval, black from its edge on, soft between. */
static uintptr_t MakeOval(void) {
    const uintptr_t oval = CreateExtFX(kTileWidth, kTileHeight);
    for (int i = 0; oval && i < kPixels; ++i) {
        const double u = 2.2 * (i % kTileWidth) / kTileWidth - 1.1,
                     v = 2.2 * (i / kTileWidth) / kTileHeight - 1.1;
        const double shown = 2 * (1 - u * u - v * v);
        memset(PixelsOf(oval) + 3 * i, shown <= 0 ? 0 : shown >= 1 ? 255 : (int)(255 * shown), 3);
    }
    return oval;
}

static int MakePictures(void) {
    const HDC photo = LoadFileImage(FENLIGHT_ASSETS "meadow.jpg"),
              strip = LoadFileImage(FENLIGHT_ASSETS "balloon.png");
    lake = LoadFileImage(FENLIGHT_ASSETS "lake.png");
    meadow = CreateImage(GetDC(0), kTileWidth, kTileHeight);
    balloon = CreateImage(GetDC(0), kTileWidth, kTileHeight);
    scratch = CreateImage(GetDC(0), kTileWidth, kTileHeight);
    sheet = CreateImage(GetDC(0), kWidth, kHeight);
    letters = MakeLetters(0x402000);
    if (!photo || !strip || !lake || !meadow || !balloon || !scratch || !sheet || !letters) return 0;
    ColorFillImage(sheet, 0xD8DCE0, 0, 0, kWidth, kHeight);
    ColorFillImage(balloon, kKey, 0, 0, kTileWidth, kTileHeight);
    SizeImage(balloon, 38, 2, 68, 104, strip, 0, 0, 34, 52, 0);
    SizeImage(meadow, 0, 0, kTileWidth, kTileHeight, photo, 0, 0, GetWidthImage(photo), GetHeightImage(photo),
              0);
    lakeFx = InitFX(lake);
    meadowFx = InitFX(meadow);
    Antialiasing(meadow, 0, 0, meadowFx, 0, 2, 0); /* dropped pixels left it rough */
    balloonFx = InitFX(balloon);
    ovalFx = MakeOval();
    return lakeFx && meadowFx && balloonFx && ovalFx;
}

static int WriteSheet(const char *fileName) {
    int32_t width, height, bytes;
    /* Of each colour five bits stay, by the code for pattern and target: the file is half as large then. */
    HGDIOBJ before = SelectObject(sheet, CreateSolidBrush(0xF8F8F8));
    PaintImage(sheet, 0, 0, kWidth, kHeight, 0, 0, 0, 0xA000C9);
    DeleteObject(SelectObject(sheet, before));
    const uintptr_t pixels = InitFX(sheet);
    uint8_t *image = FXToPng(pixels, &width, &height, &bytes, 0), *back;
    remove(fileName); /* that no file can be made is not told */
    ExportPng(image, fileName, width, height);
    back = ImportPng(fileName, &width, &height, &bytes);
    const int isWritten = back != NULL;
    FreePng(back);
    FreePng(image);
    FreeFX(pixels);
    return isWritten;
}

int main(int count, char **arguments) {
    const char *file = count > 1 ? arguments[1] : "fx_gallery.png";
    int isMade = MakePictures();
    if (isMade) {
        ShowFilters();
        ShowSmoothing();
        ShowGeometry();
        ShowBlends();
        isMade = ShowAlphaImages() && WriteSheet(file);
    }
    if (!isMade) fprintf(stderr, "fx_gallery: cannot make %s\n", file);
    FreeFX(lakeFx);
    FreeFX(meadowFx);
    FreeFX(balloonFx);
    FreeFX(ovalFx);
    FreeFX(fx);
    FreeAllImages();
    return isMade ? 0 : 1;
}
