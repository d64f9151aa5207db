/* SPDX-License-Identifier: Zlib */
/* A walk over the hills: a world of tiles, five times as wide as the window, scrolls past a wanderer who goes
 * to its end and back again and collects coins. Clouds drift more slowly; the purse stays on the screen. Run
 * it in the project's folder; without a display it ends after five seconds.
 *
 *   scroller [--picture FILE]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "picture_file.h"

enum { kTile = 32, kColumns = 100, kRows = 15, kWidth = 640, kHeight = 480, kCoins = 22, kStays = 888888 };
enum { kInside, kFlat, kUp, kDown, kBelowUp, kBelowDown, kAir = 255 }; /* the tiles of a hill */
enum { kSkyStrip = 0, kFarStrip = kTile, kNearStrip = 2 * kTile };     /* where they lie in the picture */

static uint8_t map[kRows][kColumns];
static HDC screen;
static uintptr_t tiles, clean, back;

static uint8_t Height(const char *profile, int column) { return (uint8_t)(profile[column % 50] - 'a'); }

/* Paints hills whose heights, in tiles at the columns' left edges, are given by letters. The inside covers
 * what lies behind it; surfaces are transparent above the grass. */
static void PaintHills(const char *profile, int32_t strip) {
    static const uint16_t solid[] = {kInside, kBelowUp, kBelowDown, 1111},
                          surfaces[] = {kFlat, kUp, kDown, 1111};
    for (int column = 0; column < kColumns; ++column) {
        const int left = Height(profile, column), right = Height(profile, column + 1);
        const int top = kRows - (left > right ? left : right); /* row of the surface */
        const uint8_t surface = left < right ? kUp : left > right ? kDown : kFlat;
        for (int row = 0; row < kRows; ++row)
            map[row][column] = row < top ? kAir : row > top ? kInside : surface;
        if (surface != kFlat && top + 1 < kRows) map[top + 1][column] = surface + kBelowUp - kUp;
    }
    SetTiles(tiles, strip, kColumns, kRows, kTile, kTile, map[0], kColumns, 0, 0, clean, 0, 0, 0, solid);
    SetTiles(tiles, strip, kColumns, kRows, kTile, kTile, map[0], kColumns, 0, 0, clean, 0, 0, -1, surfaces);
}

static const char nearHills[] = "ccccddeeeedccccccbbbccddddeeffffeeddcccbbbbccddddc";
static const char farHills[] = "ffgghhiijjjiihhgggffffgghhhhhggffeeeffgghhiihhggff";

static void PaintWorld(void) {
    for (int row = 0; row < kRows; ++row) memset(map[row], row, kColumns); /* one sky tile for each row */
    SetTiles(tiles, kSkyStrip, kColumns, kRows, kTile, kTile, map[0], kColumns, 0, 0, clean, 0, 0, 0, 0);
    PaintHills(farHills, kFarStrip);
    PaintHills(nearHills, kNearStrip);
    BitBlt(back, 0, 0, kTile * kColumns, kHeight, clean, 0, 0, SRCCOPY);
}

static uintptr_t Put(uintptr_t strip, int32_t width, int32_t height, int32_t frames, int32_t delay, int32_t x,
                     int32_t y, int32_t speed) {
    return InitSprite(strip, screen, back, clean, 0, 0, width, height, frames, 1, delay, x, y, speed, speed);
}

static int32_t GroundAt(int column) { return kHeight - kTile * Height(nearHills, column) + 2; }

/* Over all columns to the end and back, a waypoint at each. */
static uintptr_t SendWanderer(uintptr_t strips) {
    int16_t way[2 * 2 * (kColumns - 8)];
    const int count = 2 * (kColumns - 8);
    for (int i = 0; i < count; ++i) {
        const int column = 4 + (i < count / 2 ? i : count - 1 - i);
        way[2 * i] = (int16_t)(kTile * column - 16);
        way[2 * i + 1] = (int16_t)(GroundAt(column) - 36);
    }
    const uintptr_t wanderer = Put(strips, 32, 40, 4, 6, way[0], way[1], 2);
    for (int facing = 0; facing <= 8; ++facing) {
        const int shown = facing >= 1 && facing <= 3   ? 2
                          : facing >= 5 && facing <= 7 ? 6
                                                       : 0; /* from the side */
        SetSpriteAnimMove(wanderer, facing, 0, 40 * shown);
    }
    MoveSpriteWithTable(wanderer, way, count, 0, 0, 0);
    return wanderer;
}

/* The view goes after the wanderer and stops at the ends of the world. */
static void Follow(uintptr_t wanderer) {
    int32_t infos[7];
    GetBackgroundInfos(infos);
    int32_t goal = GetSpriteX(wanderer) + 16 - kWidth / 2;
    if (goal < 0) goal = 0;
    if (goal > kTile * kColumns - kWidth) goal = kTile * kColumns - kWidth;
    InitSpriteBackground(kStays, kStays, kStays, kStays, kStays, (goal - infos[3]) / 16, 0);
}

int main(int argumentCount, char **arguments) {
    HWND window = OpenWindow("Scroller", kWidth, kHeight);
    screen = GetDC(window);
    tiles = LoadFileImage("assets/hill_tiles.png");
    clean = CreateImage(screen, kTile * kColumns, kHeight);
    back = CreateImage(screen, kTile * kColumns, kHeight);
    const uintptr_t strips = LoadFileImage("assets/walker_red.png"), gold = LoadFileImage("assets/coin.png");
    const uintptr_t white = LoadFileImage("assets/cloud.png");
    if (!window || !tiles || !clean || !back || !strips || !gold || !white) return 1;
    PaintWorld();
    InitSpriteBackground(1, kWidth, kHeight, 0, 0, 0, 0); /* the view, at the world's left end */

    for (int i = 0; i < 16; ++i) {
        const int32_t x = 230 * i, y = 20 + 53 * i % 120;
        const uintptr_t cloud = Put(white, 96, 48, 1, 0, x, y, 1);
        SetSpriteAnim(cloud, 96 * (i % 2), 0, 96, 48, 1, 1, 0);
        SlowDownSprite(cloud, i % 3, 0);
        SpriteMovingRect(cloud, -96, -1, kTile * kColumns, -1);
        MoveSprite(cloud, kTile * kColumns, y);
    }
    uintptr_t coins[kCoins];
    for (int i = 0; i < kCoins; ++i) {
        const int column = 9 + 4 * i;
        coins[i] = Put(gold, 18, 18, 6, 6, kTile * column, GroundAt(column) - 26, 0);
    }
    const uintptr_t wanderer = SendWanderer(strips);

    const int isShown = getenv("DISPLAY") != NULL;
    const DWORD start = GetTickCount();
    int collected = 0;
    while (IsWindow(window) && (isShown || GetTickCount() - start < 5000)) {
        Follow(wanderer);
        if (collected < kCoins && GetSpriteX(coins[collected]) < GetSpriteX(wanderer) + 20) {
            DeleteSprite(coins[collected]);
            SpriteScrollMode(Put(gold, 18, 18, 6, 6, 12 + 20 * collected++, 12, 0), 1); /* into the purse */
        }
        Sleep(20);
    }

    StopAllSprites(1); /* a picture of one moment */
    const int isPicture = argumentCount == 3 && strcmp(arguments[1], "--picture") == 0;
    const int isWritten = !isPicture || WritePicture(arguments[2], screen, kWidth, kHeight);
    StopAllSprites(0);
    DeleteAllSprites();
    FreeAllImages();
    DestroyWindow(window);
    return isWritten ? 0 : 1;
}
