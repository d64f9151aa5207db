/* SPDX-License-Identifier: Zlib */
/* A maze in the night sky: its floor is white in a picture that FindPath reads, and a wanderer in red walks
 * the way that was found, from the top left corner to the bottom right one, and leaves a trail. Stars fly
 * behind the floor, sparks mark the goal. Run it in the project's folder; it ends a little after the arrival.
 *
 *   maze [--picture FILE]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "picture_file.h"

enum { kWidth = 640, kHeight = 480, kRooms = 13, kRoomRows = 9 };
enum { kPitch = 48, kWall = 16, kTop = 16, kCell = 8 }; /* pixels; walls and corridors are whole cells */
enum { kGround = 0xFFFFFF, kFloor = 0x90B0C8, kEdge = 0x506880, kTrail = 0x2020B8 }; /* 0x00BBGGRR */
enum { kRight = 1, kDown = 2, kSeen = 4 };

static uint8_t rooms[kRoomRows][kRooms]; /* which walls of a room are open */

/* From room to room in a random direction while there is a new one, else back. */
static void Dig(int column, int row) {
    static const int steps[4][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    int32_t first;
    Random(&first, 0, 0, 4);
    rooms[row][column] |= kSeen;
    for (int i = 0; i < 4; ++i) {
        const int x = column + steps[(first + i) % 4][0], y = row + steps[(first + i) % 4][1];
        if (x < 0 || x >= kRooms || y < 0 || y >= kRoomRows || rooms[y][x] & kSeen) continue;
        if (x != column) rooms[row][x < column ? x : column] |= kRight;
        if (y != row) rooms[y < row ? y : row][column] |= kDown;
        Dig(x, y);
    }
}

static void Fill(HDC context, int left, int top, int width, int height, COLORREF colour) {
    const RECT rectangle = {left, top, left + width, top + height};
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &rectangle, brush);
    DeleteObject(brush);
}

/* The floor, smaller by `inset` pixels on each side, on what is there. */
static void DrawFloor(HDC context, COLORREF colour, int inset) {
    const int size = kPitch - kWall - 2 * inset;
    for (int row = 0; row < kRoomRows; ++row)
        for (int column = 0; column < kRooms; ++column) {
            const int x = kWall + kPitch * column + inset, y = kTop + kWall + kPitch * row + inset;
            const uint8_t open = rooms[row][column];
            Fill(context, x, y, size, size, colour);
            if (open & kRight) Fill(context, x + size, y, kPitch - size, size, colour);
            if (open & kDown) Fill(context, x, y + size, size, kPitch - size, colour);
        }
}

static int32_t MiddleX(int column) { return kWall + kPitch * column + (kPitch - kWall) / 2; }
static int32_t MiddleY(int row) { return kTop + kWall + kPitch * row + (kPitch - kWall) / 2; }

/* Waypoints with Y growing downwards, as sprites have it; in a map it counts from the bottom row. */
static int32_t FindWaypoints(uintptr_t picture, int16_t *way) {
    const uintptr_t map = InitFX(picture);
    const int32_t bytes = FindPath(way, map, kCell, MiddleX(0), kHeight - 1 - MiddleY(0), MiddleX(kRooms - 1),
                                   kHeight - 1 - MiddleY(kRoomRows - 1), 1 /* a cell away from walls */);
    FreeFX(map);
    const int32_t points = bytes > 0 ? bytes / 4 : 0;
    for (int32_t i = 0; i < points; ++i) {
        const int isCorner = i > 0 && i < points - 1; /* of a cell; the ends are places as they were given */
        way[2 * i] = (int16_t)(way[2 * i] + (isCorner ? kCell / 2 : 0));
        way[2 * i + 1] = (int16_t)(kHeight - 1 - way[2 * i + 1] - (isCorner ? kCell / 2 : 0));
    }
    SmoothPath(way, 4 * points, 1);
    return points;
}

/* Where his feet are goes into the clean background, which shows as soon as he has moved on. */
static void LeaveTrail(HDC clean, uintptr_t wanderer) {
    Fill(clean, GetSpriteX(wanderer) + 14, GetSpriteY(wanderer) + 34, 4, 4, kTrail);
}

int main(int argumentCount, char **arguments) {
    static int16_t way[2 * ((kWidth / kCell) * (kHeight / kCell) + 2)];
    const HWND window = OpenWindow("Maze", kWidth, kHeight);
    const HDC screen = GetDC(window);
    const uintptr_t clean = CreateImage(screen, kWidth, kHeight), back = CreateImage(screen, kWidth, kHeight);
    const uintptr_t strips = LoadFileImage(FENLIGHT_ASSETS "walker_red.png");
    if (!window || !clean || !back || !strips) return 1;

    Dig(kRooms - 1, 0);
    DrawFloor(clean, kGround, 0);
    const int32_t points = FindWaypoints(clean, way);
    printf("%d points from corner to corner\n", points);
    if (points == 0) return 1;
    DrawFloor(clean, kEdge, 0);
    DrawFloor(clean, kFloor, 2);
    const int32_t goalX = MiddleX(kRooms - 1), goalY = MiddleY(kRoomRows - 1);
    Fill(clean, goalX - 10, goalY - 10, 20, 20, 0x30B0F0);
    BitBlt(back, 0, 0, kWidth, kHeight, clean, 0, 0, SRCCOPY);
    BitBlt(screen, 0, 0, kWidth, kHeight, clean, 0, 0, SRCCOPY);

    Stars(screen, clean, 0, 0, kWidth, kHeight, 400, 20, 1 /* on black only */);
    InitPixelEffects();
    const uintptr_t wanderer =
        InitSprite(strips, screen, back, clean, 0, 0, 32, 40, 4, 1, 6, way[0] - 16, way[1] - 36, 2, 2);
    for (int facing = 0; facing <= 8; ++facing) SetSpriteAnimMove(wanderer, facing, 0, 40 * facing);
    MoveSpriteWithTable(wanderer, way, points, -16, -36, 0);
    SpriteTableMode(wanderer, 1);

    int polls = 0, restingPolls = 0;
    while (IsWindow(window) && ++polls < 10000) {
        LeaveTrail(clean, wanderer);
        if (polls % 60 == 1) SetPixelEffect(screen, clean, goalX, goalY, 0xFFFFFF, 4, 7, 2, 500, 2, 40);
        if (GetSpriteX(wanderer) == goalX - 16 && GetSpriteY(wanderer) == goalY - 36) ++restingPolls;
        if (restingPolls > 60 && polls % 60 == 25) break; /* while sparks fly */
        Sleep(10);
    }

    NoStars(1); /* a picture of one moment: all stay where they are */
    DeInitPixelEffects();
    StopAllSprites(1);
    const int isPicture = argumentCount == 3 && strcmp(arguments[1], "--picture") == 0;
    const int isWritten = !isPicture || WritePicture(arguments[2], screen, kWidth, kHeight);
    StopAllSprites(0);
    DeleteAllSprites();
    while (StatusStars() == 0) Sleep(10);
    FreeAllImages();
    DestroyWindow(window);
    return isWritten ? 0 : 1;
}
