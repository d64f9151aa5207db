/* SPDX-License-Identifier: Zlib */
/* A summer meadow full of sprites: wanderers that face the way they go, fish on patrol in the pond, ladybirds
 * in a cage, butterflies that follow the wanderers, balloons on waypoints, birds on line paths, fireworks
 * that run once, and flowers that are stamped into the ground. With a display it runs until the window is
 * closed, without one for five seconds.
 *
 *   showcase [--picture FILE] [--seconds N] [--assets FOLDER/]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "picture_file.h"

#ifndef FENLIGHT_ASSETS
#define FENLIGHT_ASSETS "assets/"
#endif

enum { kWidth = 800, kHeight = 600, kGround = 345, kLowest = 500 }; /* walkers keep above the flower bed */
enum { kWalkers = 24, kFish = 4, kLadybirds = 5, kButterflies = 6, kBirds = 8, kCoins = 12, kLanterns = 4 };
enum { kPollMs = 20, kHeadlessSeconds = 5 };

static struct {
    uintptr_t walkers[3], fish, bird, butterfly, ladybird, balloon, coin, burst, flower, lantern, clean, back;
    HDC screen;
} stage;

static uintptr_t walkers[kWalkers], birds[kBirds], ladybirds[kLadybirds], coins[kCoins], burst, flower,
    tracer;
static int created, deleted;

static int32_t Between(int32_t lowest, int32_t highest) {
    int32_t number;
    Random(&number, 0, lowest, highest - lowest + 1);
    return number;
}

static uintptr_t Load(const char *folder, const char *name) {
    char path[1024];
    snprintf(path, sizeof path, "%s%s", folder, name);
    const uintptr_t image = LoadFileImage(path);
    if (image == 0) fprintf(stderr, "showcase: cannot load %s\n", path);
    return image;
}

static int LoadStage(const char *folder, HWND window) {
    stage.screen = GetDC(window);
    stage.clean = Load(folder, "meadow.jpg");
    stage.walkers[0] = Load(folder, "walker_red.png");
    stage.walkers[1] = Load(folder, "walker_blue.png");
    stage.walkers[2] = Load(folder, "walker_green.png");
    stage.fish = Load(folder, "fish.png");
    stage.bird = Load(folder, "bird.png");
    stage.butterfly = Load(folder, "butterfly.png");
    stage.ladybird = Load(folder, "ladybird.png");
    stage.balloon = Load(folder, "balloon.png");
    stage.coin = Load(folder, "coin.png");
    stage.burst = Load(folder, "burst.png");
    stage.flower = Load(folder, "flower.png");
    stage.lantern = Load(folder, "lantern.png");
    stage.back = CreateImage(stage.screen, kWidth, kHeight);
    return stage.clean && stage.walkers[0] && stage.walkers[1] && stage.walkers[2] && stage.fish &&
           stage.bird && stage.butterfly && stage.ladybird && stage.balloon && stage.coin && stage.burst &&
           stage.flower && stage.lantern && stage.back;
}

/* A rail round the ladybirds' cage, drawn into the background. */
static void DrawCage(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    const HPEN pens[2] = {CreatePen(PS_SOLID, 1, 0x00305878), CreatePen(PS_SOLID, 1, 0x0068A0C8)};
    for (int32_t i = 0; i < 4; ++i) {
        const HGDIOBJ old = SelectObject(stage.clean, pens[i == 1 || i == 2]);
        MoveToEx(stage.clean, left - i, top - i, NULL);
        LineTo(stage.clean, right + i, top - i);
        LineTo(stage.clean, right + i, bottom + i);
        LineTo(stage.clean, left - i, bottom + i);
        LineTo(stage.clean, left - i, top - i);
        SelectObject(stage.clean, old);
    }
    DeleteObject(pens[0]);
    DeleteObject(pens[1]);
}

/* Even walkers keep to the meadow's far edge, odd ones to its left part: none walks into the pond. */
static int32_t WalkerX(int walker) { return walker % 2 ? Between(150, 330) : Between(10, 750); }
static int32_t WalkerY(int walker) { return walker % 2 ? Between(kGround, kLowest) : Between(kGround, 380); }

static uintptr_t Put(uintptr_t strips, int32_t row, int32_t width, int32_t height, int32_t frames,
                     int32_t delay, int32_t x, int32_t y, int32_t speed) {
    ++created;
    return InitSprite(strips, stage.screen, stage.back, stage.clean, 0, row * height, width, height, frames,
                      Between(1, frames), delay, x, y, speed, speed);
}

/* One strip a facing, from top to bottom: standing, then up and right and on clockwise. */
static void FaceAllWays(uintptr_t sprite, int32_t height) {
    for (int32_t facing = 0; facing <= 8; ++facing) SetSpriteAnimMove(sprite, facing, 0, facing * height);
}

/* Two strips: the upper one looks right, the lower one left. */
static void FaceRightOrLeft(uintptr_t sprite, int32_t height) {
    for (int32_t facing = 5; facing <= 7; ++facing) SetSpriteAnimMove(sprite, facing, 0, height);
}

static void PutWalkers(void) {
    for (int i = 0; i < kWalkers; ++i) {
        walkers[i] = Put(stage.walkers[i % 3], 0, 32, 40, 4, 7, WalkerX(i), WalkerY(i), 1 + i % 2);
        FaceAllWays(walkers[i], 40);
        SlowDownSprite(walkers[i], i % 3 == 0, i % 3 == 0);
    }
}

static void PutPondAndCage(void) {
    for (int i = 0; i < kFish; ++i) {
        const uintptr_t fish = Put(stage.fish, 0, 28, 18, 4, 6, 440 + 60 * i, 456 + 21 * i, 1);
        FaceRightOrLeft(fish, 18);
        SpriteMovingRect(fish, 425 + 8 * i, -1, 690 - 6 * i, -1);
        MoveSprite(fish, i % 2 ? 425 + 8 * i : 690 - 6 * i, 456 + 21 * i);
    }
    for (int i = 0; i < kLadybirds; ++i) {
        ladybirds[i] = Put(stage.ladybird, 0, 20, 20, 4, 4, 34 + 16 * i, 440 + 13 * i, 1);
        FaceAllWays(ladybirds[i], 20);
        SetSpriteCage(ladybirds[i], 20, 430, 112, 502, 30 + 16 * i, 466); /* at the rail they are back home */
    }
}

static void PutFliers(void) {
    static const int16_t route[] = {60, 60, 420, 30, 700, 110, 480, 180, 200, 150};
    for (int i = 0; i < 2; ++i) {
        const uintptr_t balloon = Put(stage.balloon, i, 34, 52, 6, 10, 60 + 500 * i, 60 + 40 * i, 1);
        MoveSpriteWithTable(balloon, route, 5, 10 * i, 14 * i, i * 2);
    }
    for (int i = 0; i < kBirds; ++i) {
        birds[i] = Put(stage.bird, 0, 36, 28, 4, 5, Between(0, 760), Between(20, 220), 2 + i % 3);
        FaceRightOrLeft(birds[i], 28);
        SetSpriteMovingMode(birds[i], 1);
    }
    for (int i = 0; i < kButterflies; ++i) {
        const uintptr_t butterfly = Put(stage.butterfly, i % 3, 22, 20, 4, 5, Between(0, 780), 360, 2);
        AttachSprite(butterfly, walkers[i * 4], i % 2 ? 26 : -18, -14);
    }
}

static void PutStillLife(void) {
    coins[0] = Put(stage.coin, 0, 18, 18, 6, 6, 250, 400, 2);
    for (int i = 1; i < kCoins; ++i) {
        coins[i] = CopySprite(coins[0]);
        ++created;
        SetSpritePos(coins[i], 250 + 16 * i, 400 + (i % 4) * 3, 250 + 16 * i, 400);
    }
    const uintptr_t first = Put(stage.lantern, 0, 16, 16, 6, 8, 410, 300, 1);
    for (int i = 1; i < kLanterns; ++i) {
        AttachSpriteAnim(Put(stage.lantern, 0, 16, 16, 6, 8, 410 + (i % 2 ? -1 : 1) * 14 * i, 304, 1), first);
    }
    /* Never seen, one pixel further in each frame: its X counts the frames. */
    tracer = Put(stage.lantern, 0, 1, 1, 1, 0, 0, -100, 1);
    MoveSprite(tracer, 1000000000, -100);
}

/* A bang somewhere over the meadow; the sprite goes when its one run is over. */
static void KeepBursting(void) {
    if (burst != 0 && GetSpriteAnimModeStatus(burst) == 0) return;
    if (burst != 0) {
        DeleteSprite(burst);
        ++deleted;
    }
    burst = Put(stage.burst, 0, 48, 48, 10, 4, Between(60, 700), Between(40, 240), 0);
    SetSpriteAnim(burst, 0, 0, 48, 48, 10, 1, 4);
    SetSpriteAnimMode(burst, 1);
}

/* A flower is stamped into the background, and its sprite is no longer needed. */
static void KeepPlanting(int poll) {
    if (poll % 15 == 0) {
        flower = Put(stage.flower, 0, 20, 28, 1, 0, Between(150, 760), Between(546, 572), 0);
        SetSpriteAnim(flower, 20 * Between(0, 3), 0, 20, 28, 1, 1, 0);
        SpriteToHDC(flower);
    } else if (poll % 15 == 10) {
        DeleteSprite(flower);
        ++deleted;
    }
}

static void Direct(int poll) {
    for (int i = 0; i < kWalkers; ++i) {
        if (HasSpriteArrived(walkers[i]) && Between(1, 12) == 1)
            MoveSprite(walkers[i], WalkerX(i), WalkerY(i));
    }
    for (int i = 0; i < kBirds; ++i) {
        if (HasSpriteArrived(birds[i])) MoveSprite(birds[i], Between(-30, 790), Between(10, 240));
    }
    for (int i = 0; i < kLadybirds; ++i) {
        if (HasSpriteArrived(ladybirds[i])) MoveSprite(ladybirds[i], Between(10, 120), Between(420, 510));
    }
    if (poll % 40 == 20) { /* a coin vanishes, another one falls */
        const int i = (poll / 40) % kCoins;
        DeleteSprite(coins[i]);
        ++deleted;
        coins[i] = Put(stage.coin, 0, 18, 18, 6, 6, 250 + 16 * i, 300, 2);
        MoveSprite(coins[i], 250 + 16 * i, 400);
    }
    KeepBursting();
    KeepPlanting(poll);
    if (poll % 200 == 199) CleanUp(0);
}

static void PaintBackground(void) {
    DrawCage(20, 430, 130, 520);
    BitBlt(stage.back, 0, 0, kWidth, kHeight, stage.clean, 0, 0, SRCCOPY);
    BitBlt(stage.screen, 0, 0, kWidth, kHeight, stage.clean, 0, 0, SRCCOPY);
}

/* Until the window is closed, or for some seconds where nobody can close it. */
static void Run(HWND window, int seconds) {
    const DWORD start = GetTickCount();
    for (int poll = 0; IsWindow(window); ++poll) {
        if (seconds > 0 && GetTickCount() - start >= 1000u * (DWORD)seconds) break;
        Direct(poll);
        Sleep(kPollMs);
    }
    const DWORD elapsed = GetTickCount() - start;
    const int32_t frames = GetSpriteX(tracer);
    printf("%d frames in %.1f s, %d sprites at the end, %d created and %d deleted in all\n", frames,
           elapsed / 1000.0, CountSprites(), created, deleted);
    printf("%.2f ms a frame, %d frames a second at the end\n", frames > 0 ? (double)elapsed / frames : 0.0,
           GetSpritesFps());
}

int main(int argumentCount, char **arguments) {
    const char *picture = NULL, *assets = FENLIGHT_ASSETS;
    int seconds = getenv("DISPLAY") || getenv("WAYLAND_DISPLAY") ? 0 : kHeadlessSeconds;
    for (int i = 1; i < argumentCount; i += 2) {
        const char *value = i + 1 < argumentCount ? arguments[i + 1] : NULL;
        if (value && strcmp(arguments[i], "--picture") == 0) {
            picture = value;
        } else if (value && strcmp(arguments[i], "--assets") == 0) {
            assets = value;
        } else if (value && strcmp(arguments[i], "--seconds") == 0) {
            seconds = atoi(value);
        } else {
            fprintf(stderr, "usage: showcase [--picture FILE] [--seconds N] [--assets FOLDER/]\n");
            return 2;
        }
    }

    const HWND window = OpenWindow("Fenlight showcase", kWidth, kHeight);
    if (window == 0 || !LoadStage(assets, window)) return 1;
    PaintBackground();
    PutWalkers();
    PutPondAndCage();
    PutFliers();
    PutStillLife();
    Run(window, seconds);

    StopAllSprites(1); /* a picture of one moment */
    int written = 1;
    if (picture != NULL) {
        written = WritePicture(picture, stage.screen, kWidth, kHeight);
        if (!written) fprintf(stderr, "showcase: cannot write %s\n", picture);
    }
    StopAllSprites(0);
    DeleteAllSprites();
    FreeAllImages();
    DestroyWindow(window);
    return written ? 0 : 1;
}
