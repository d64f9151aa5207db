/* SPDX-License-Identifier: Zlib */
#include "showcase_yard.h"

#include <fenlight/fenlight.h>
#include <stdio.h>
#include <stdlib.h>

#include "ball_picture.h"
#include "showcase_world.h"

enum { kLeft = 712, kTop = 582, kRight = 812, kBottom = 672, kWall = 6 };
enum { kBall = 16, kMine = 24, kBurst = 48, kBurstFrames = 10, kFar = 9000 /* a target never reached */ };
enum { kLoudest = -1500, kSoftest = -10000, kFadePerPixel = 5 /* hundredths of a decibel */ };

static const RECT walls[] = {{kLeft, kTop, kRight, kTop + kWall},
                             {kLeft, kBottom - kWall, kRight, kBottom},
                             {kLeft, kTop, kLeft + kWall, kBottom},
                             {kRight - kWall, kTop, kRight, kBottom},
                             {kLeft + 47, kTop + 36, kLeft + 53, kBottom}};

static uintptr_t mask, sheet, bounce, bang, mine;

static void Fill(HDC context, RECT rectangle, int inset, COLORREF colour) {
    const RECT inside = {rectangle.left + inset, rectangle.top + inset, rectangle.right - inset,
                         rectangle.bottom - inset};
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &inside, brush);
    DeleteObject(brush);
}

static uintptr_t LoadSound(const char *folder, const char *name) {
    char path[1024];
    snprintf(path, sizeof path, "%s%s", folder, name);
    return DSoundLoad(path);
}

int PaintYard(HDC screen, HDC world, HDC bursts, const char *folder) {
    const RECT all = {0, 0, kWorldWidth, kWorldHeight}, yard = {kLeft, kTop, kRight, kBottom};
    mask = CreateImage(screen, kWorldWidth, kWorldHeight);
    sheet = CreateImage(screen, kMine * kBurstFrames, 2 * kBall + 2 * kMine);
    if (mask == 0 || sheet == 0) return 0;
    Fill(mask, all, 0, 0xFFFFFF);
    Fill(world, yard, 0, 0x90C8E0);
    for (size_t i = 0; i < sizeof walls / sizeof *walls; ++i) {
        Fill(mask, walls[i], 0, 0);
        Fill(world, walls[i], 0, 0x305878);
    }
    for (size_t i = 0; i < sizeof walls / sizeof *walls; ++i) Fill(world, walls[i], 2, 0x68A0C8);
    DrawBallFrames(sheet, 0, kBall, 0xE08040, 0xF0F0F0);
    DrawBallFrames(sheet, kBall, kBall, 0x40C040, 0xF0F0F0);
    DrawBallFrames(sheet, 2 * kBall, kMine, 0x404040, 0x2040E0);
    StretchBlt(sheet, 0, 2 * kBall + kMine, kMine * kBurstFrames, kMine, bursts, 0, 0, kBurst * kBurstFrames,
               kBurst, SRCCOPY);
    if (DSoundInit(0) == 0) {
        bounce = LoadSound(folder, "bounce.wav");
        bang = LoadSound(folder, "explosion.wav");
    }
    return 1;
}

int PutBalls(HDC screen, HDC back, HDC clean) {
    for (int i = 0; i < 2; ++i) {
        const uintptr_t ball = InitSprite(sheet, screen, back, clean, 0, i * kBall, kBall, kBall, kBallFrames,
                                          1 + i, 6, kLeft + 12 + 60 * i, kTop + 62 - 22 * i, 1, 1);
        MoveSprite(ball, i ? -kFar : kFar, -kFar);
        SetBackAutoCollision(ball, mask, 2, -kFar, -kFar, kFar, kFar, 0, 0, 0, bounce);
    }
    return 2;
}

int KeepMine(HDC screen, HDC back, HDC clean) {
    /* Its explosion may reach nothing black; then it is not deleted by itself. */
    if (mine != 0 && GetSpriteAnimModeStatus(mine)) DeleteSprite(mine);
    if (mine != 0 && ExistSprite(mine) == 0) return 0;
    mine = InitSprite(sheet, screen, back, clean, 0, 2 * kBall, kMine, kMine, kBallFrames, 1, 6, kLeft + 64,
                      kTop + 10, 1, 1);
    MoveSprite(mine, -kFar, kFar);
    SetBackAutoCollision(mine, mask, 7, 0, 2 * kBall + kMine, kMine, kMine, kBurstFrames, 1, 5, bang);
    return 1;
}

void HearYardFrom(int32_t x, int32_t y) {
    const int32_t distance = abs(x - (kLeft + kRight) / 2) + abs(y - (kTop + kBottom) / 2);
    const int32_t volume = kLoudest - kFadePerPixel * distance;
    DSoundSetGlobalVolume(volume < kSoftest ? kSoftest : volume);
}

void CloseYard(void) {
    DSoundUnLoad(bounce);
    DSoundUnLoad(bang);
    DSoundDeInit();
}
