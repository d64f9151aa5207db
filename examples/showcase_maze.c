/* SPDX-License-Identifier: Zlib */
/* The maze is a grid of cells, whose odd columns and rows are rooms and the others hedges or gaps between
 * rooms. A picture of it, white where one may go, is the map in which the way is searched. */
#include "showcase_maze.h"

#include <fenlight/fenlight.h>
#include <string.h>

enum { kLeft = 480, kTop = 215, kCell = 12, kColumns = 17, kRows = 13 };
enum { kPoolLeft = 4, kPoolTop = 4, kPoolRight = 13, kPoolBottom = 9 }; /* cells, the rim among them */
enum { kStartColumn = 0, kStartRow = 1, kGoalColumn = 15, kGoalRow = 11 };
enum { kStars = 1000, kStarReach = 64 /* pixels */, kRest = 60 /* calls */, kFeetX = 16, kFeetY = 36 };
enum { kHedge, kFloor, kPool };
enum { kLeafColour = 0x388838 /* 0x00BBGGRR */, kRise = 3 /* pixels: height of a hedge */ };

static uint8_t cells[kRows][kColumns];
static int16_t way[2 * (kRows * kColumns + 2)];
static int32_t points, restingCalls;
static uintptr_t walker, effects;

static void Fill(HDC context, int32_t x, int32_t y, int32_t width, int32_t height, COLORREF colour) {
    const RECT rectangle = {x, y, x + width, y + height};
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &rectangle, brush);
    DeleteObject(brush);
}

/* From room to room while there is a new one, else back; the same maze at each start. */
static void Dig(int column, int row) {
    static const int steps[4][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    static uint32_t number = 1;
    number = number * 1664525u + 1013904223u;
    const uint32_t first = number >> 24;
    cells[row][column] = kFloor;
    for (uint32_t i = 0; i < 4; ++i) {
        const int *step = steps[(first + i * (first & 16 ? 3 : 1)) % 4];
        const int x = column + 2 * step[0], y = row + 2 * step[1];
        if (x < 0 || x >= kColumns || y < 0 || y >= kRows || cells[y][x] != kHedge) continue;
        cells[row + step[1]][column + step[0]] = kFloor;
        Dig(x, y);
    }
}

/* Hedges join where they are neighbours, and are thinner by `inset` pixels on each side than a cell. */
static void DrawHedges(HDC world, int32_t inset, int32_t rise, COLORREF colour) {
    const int32_t size = kCell - 2 * inset;
    for (int row = 0; row < kRows; ++row)
        for (int column = 0; column < kColumns; ++column) {
            const int32_t x = kLeft + kCell * column + inset, y = kTop + kCell * row + inset - rise;
            if (cells[row][column] != kHedge) continue;
            const int isRight = column + 1 < kColumns && cells[row][column + 1] == kHedge;
            const int isDown = row + 1 < kRows && cells[row + 1][column] == kHedge;
            Fill(world, x, y, isRight ? kCell + size : size, size, colour);
            Fill(world, x, y, size, isDown ? kCell + size : size, colour);
        }
}

static void DrawLeaves(HDC world) {
    uint32_t number = 1;
    for (int32_t i = 0; i < kCell * kCell * kRows * kColumns; ++i) {
        const int32_t x = kLeft + i % (kCell * kColumns), y = kTop + i / (kCell * kColumns) - kRise;
        number = number * 1664525u + 1013904223u;
        const uint32_t chance = number >> 24;
        if (chance < 50 && GetPixel(world, x, y) == kLeafColour)
            SetPixel(world, x, y, chance % 2 ? 0x58B868 : 0x286828);
    }
}

static void DrawPool(HDC world) {
    const int32_t x = kLeft + kCell * kPoolLeft, y = kTop + kCell * kPoolTop;
    const int32_t width = kCell * (kPoolRight - kPoolLeft), height = kCell * (kPoolBottom - kPoolTop);
    Fill(world, x + 2, y + 2, width - 4, height - 4, 0x506070);
    Fill(world, x + 3, y + 3, width - 6, height - 6, 0xB0C0C8);
    Fill(world, x + 7, y + 7, width - 14, height - 14, 0x506070);
    Fill(world, x + 8, y + 8, width - 16, height - 16, 0); /* stars show on black only */
}

static int32_t Middle(int cell) { return kCell * cell + kCell / 2; }

/* Waypoints in the world with Y growing downwards; in a map it counts from the bottom row. */
static int FindWay(HDC screen) {
    const int32_t height = kCell * kRows;
    const uintptr_t map = CreateImage(screen, kCell * kColumns, height);
    for (int i = 0; i < kRows * kColumns; ++i)
        if (cells[i / kColumns][i % kColumns] == kFloor)
            Fill(map, kCell * (i % kColumns), kCell * (i / kColumns), kCell, kCell, 0xFFFFFF);
    const uintptr_t fx = InitFX(map);
    const int32_t bytes = FindPath(way, fx, kCell, Middle(kStartColumn), height - 1 - Middle(kStartRow),
                                   Middle(kGoalColumn), height - 1 - Middle(kGoalRow), 0);
    FreeFX(fx);
    FreeImage(map);
    points = bytes > 0 ? bytes / 4 : 0;
    for (int32_t i = 0; i < points; ++i) {
        const int32_t isCorner = i > 0 && i < points - 1; /* of a cell; the ends are as they were given */
        way[2 * i] = (int16_t)(kLeft + way[2 * i] + isCorner * kCell / 2);
        way[2 * i + 1] = (int16_t)(kTop + height - 1 - way[2 * i + 1] - isCorner * kCell / 2);
    }
    return points > 0;
}

int PaintMaze(HDC screen, HDC world) {
    memset(cells, kHedge, sizeof cells);
    for (int row = kPoolTop; row < kPoolBottom; ++row)
        memset(cells[row] + kPoolLeft, kPool, kPoolRight - kPoolLeft);
    Dig(kStartColumn + 1, kStartRow);
    cells[kStartRow][kStartColumn] = kFloor; /* the gate */
    Fill(world, kLeft + 2, kTop + 2, kCell * kColumns - 4, kCell * kRows - 4, 0x98C8D8);
    DrawPool(world);
    Fill(world, kLeft + kCell * kGoalColumn, kTop + kCell * kGoalRow, kCell, kCell, 0x30B0F0);
    DrawHedges(world, 1, 0, 0x204820);
    DrawHedges(world, 2, kRise, kLeafColour);
    DrawLeaves(world);
    return FindWay(screen);
}

static void SendToGoal(void) {
    const int32_t x = way[0] - kFeetX, y = way[1] - kFeetY;
    SetSpritePos(walker, x, y, x, y);
    MoveSpriteWithTable(walker, way, points, -kFeetX, -kFeetY, 0);
    restingCalls = 0;
}

uintptr_t PutMazeWalker(uintptr_t strips, HDC screen, HDC back, HDC clean) {
    const int32_t x = kLeft + kCell * kColumns / 2, y = kTop + kCell * kRows / 2;
    walker = InitSprite(strips, screen, back, clean, 0, 0, 32, 40, 4, 1, 7, way[0] - kFeetX, way[1] - kFeetY,
                        2, 2);
    for (int32_t facing = 0; facing <= 8; ++facing) SetSpriteAnimMove(walker, facing, 0, 40 * facing);
    SpriteTableMode(walker, 1);
    SendToGoal();
    /* Most are launched beside the pool, where nothing is black, and are not seen there. */
    Stars(back, clean, x - kStarReach, y - kStarReach, x + kStarReach, y + kStarReach, kStars, 20, 1);
    effects = InitPixelEffects();
    return walker;
}

void KeepMazeWalker(HDC back, HDC clean) {
    const int32_t x = way[2 * points - 2], y = way[2 * points - 1];
    if (GetSpriteX(walker) != x - kFeetX || GetSpriteY(walker) != y - kFeetY) return;
    if (restingCalls++ % 15 == 0) SetPixelEffect(back, clean, x, y, 0x60E0FF, 4, 5, 2, 600, 2, 30);
    if (restingCalls > kRest) SendToGoal();
}

void CloseMaze(void) {
    NoStars(1);
    DeInitPixelEffects();
    if (effects != 0) WaitForSingleObject(effects, 1000);
    for (int i = 0; i < 100 && StatusStars() == 0; ++i) Sleep(10);
}
