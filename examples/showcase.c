/* SPDX-License-Identifier: Zlib */
/* A country of tiles, 1600 x 1200, that scrolls under a view of 640 x 480 after a wanderer in red, whom the
 * arrow keys or a joystick steer. Wanderers on the road and in the village (who stands further down is in
 * front), fish on patrol, ladybirds in a cage, butterflies that follow wanderers, balloons on waypoints,
 * birds on line paths, fireworks that run once, flowers that are stamped into the ground, coins to collect;
 * a yard in which balls bounce and mines explode, heard when the view is near; a maze in which somebody walks
 * a way that was searched, and a pool in it in which stars fly. Compass, purse and lanterns are fixed to the
 * view; what is far outside the view is switched off. With a display it runs until the window is closed,
 * without one for five seconds.
 *
 *   showcase [--picture FILE] [--seconds N] [--assets FOLDER/]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "picture_file.h"
#include "run_options.h"
#include "showcase_maze.h"
#include "showcase_world.h"
#include "showcase_yard.h"

enum { kWidth = 640, kHeight = 480, kStays = 888888 /* a setting that InitSpriteBackground leaves alone */ };
enum {
    kWalkers = 40,
    kOnRoad = 26,
    kFish = 6,
    kLadybirds = 5,
    kButterflies = 10,
    kBirds = 14,
    kBalloons = 3
};
enum { kCoins = 24, kPurse = 8, kLanterns = 4, kMostSprites = 128 };
enum { kCageLeft = 590, kCageTop = 580, kCageRight = 700, kCageBottom = 670 };
enum { kPollMs = 20, kHeadlessSeconds = 5 };

static struct {
    uintptr_t walkers[3], fish, bird, butterfly, ladybird, balloon, coin, burst, flower, lantern, compass,
        ground, things, clean, back;
    HDC screen;
} stage;

/* Sprites of the world that live as long as the showcase, and can be switched off by their table. */
static uintptr_t residents[kMostSprites];
static int residentCount;

static uintptr_t hero, byDepth[kWalkers], strollers[kWalkers - kOnRoad], birds[kBirds], ladybirds[kLadybirds];
static uintptr_t coins[kCoins], purse[kPurse], compass, burst, flower, tracer;
static int purseCount, created, deleted;

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
    const struct {
        uintptr_t *image;
        const char *name;
    } pictures[] = {{&stage.walkers[0], "walker_red.png"},
                    {&stage.walkers[1], "walker_blue.png"},
                    {&stage.walkers[2], "walker_green.png"},
                    {&stage.fish, "fish.png"},
                    {&stage.bird, "bird.png"},
                    {&stage.butterfly, "butterfly.png"},
                    {&stage.ladybird, "ladybird.png"},
                    {&stage.balloon, "balloon.png"},
                    {&stage.coin, "coin.png"},
                    {&stage.burst, "burst.png"},
                    {&stage.flower, "flower.png"},
                    {&stage.lantern, "lantern.png"},
                    {&stage.compass, "compass.png"},
                    {&stage.ground, "meadow_tiles.png"},
                    {&stage.things, "meadow_things.png"}};
    for (size_t i = 0; i < sizeof pictures / sizeof *pictures; ++i)
        if ((*pictures[i].image = Load(folder, pictures[i].name)) == 0) return 0;
    stage.screen = GetDC(window);
    stage.clean = CreateImage(stage.screen, kWorldWidth, kWorldHeight);
    stage.back = CreateImage(stage.screen, kWorldWidth, kWorldHeight);
    return stage.clean != 0 && stage.back != 0;
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

/* In a view both, the clean background and the back buffer, hold the whole world. */
static int PaintBackground(const char *folder) {
    PaintWorld(stage.clean, stage.ground, stage.things);
    const int isPainted =
        PaintYard(stage.screen, stage.clean, stage.burst, folder) && PaintMaze(stage.screen, stage.clean);
    DrawCage(kCageLeft, kCageTop, kCageRight, kCageBottom);
    BitBlt(stage.back, 0, 0, kWorldWidth, kWorldHeight, stage.clean, 0, 0, SRCCOPY);
    InitSpriteBackground(1, kWidth, kHeight, 0, 0, 0, 0);
    return isPainted;
}

static uintptr_t Put(uintptr_t strips, int32_t row, int32_t width, int32_t height, int32_t frames,
                     int32_t delay, int32_t x, int32_t y, int32_t speed) {
    ++created;
    return InitSprite(strips, stage.screen, stage.back, stage.clean, 0, row * height, width, height, frames,
                      Between(1, frames), delay, x, y, speed, speed);
}

static uintptr_t Settle(uintptr_t sprite) {
    if (residentCount < kMostSprites) residents[residentCount++] = sprite;
    return sprite;
}

/* Its place is one on the screen from now on, wherever the view goes. */
static uintptr_t FixToView(uintptr_t sprite) {
    SpriteScrollMode(sprite, 1);
    return sprite;
}

/* One strip a facing, from top to bottom: standing, then up and right and on clockwise. */
static void FaceAllWays(uintptr_t sprite, int32_t height) {
    for (int32_t facing = 0; facing <= 8; ++facing) SetSpriteAnimMove(sprite, facing, 0, facing * height);
}

/* Two strips: the upper one looks right, the lower one left. */
static void FaceRightOrLeft(uintptr_t sprite, int32_t height) {
    for (int32_t facing = 5; facing <= 7; ++facing) SetSpriteAnimMove(sprite, facing, 0, height);
}

/* Half of those on the road go round it one way, the others the other way, each on his side. */
static void SendAlongRoad(uintptr_t walker, int number) {
    static int16_t wayBack[2 * kRoadPoints];
    const int start = number == 0 ? kRoadPoints - 6 : Between(0, kRoadPoints - 1), isBack = number % 2;
    for (int i = 0; i < kRoadPoints; ++i)
        memcpy(wayBack + 2 * i, Road + 2 * (kRoadPoints - 1 - i), 2 * sizeof *wayBack);
    const int16_t *way = isBack ? wayBack : Road;
    const int32_t baseX = isBack ? -8 : -24, baseY = isBack ? -30 : -40;
    const int32_t x = way[2 * start] + baseX, y = way[2 * start + 1] + baseY;
    SetSpritePos(walker, x, y, x, y);
    MoveSpriteWithTable(walker, way, kRoadPoints, baseX, baseY, start);
}

static int32_t VillageX(void) { return Between(240, 700); }
static int32_t VillageY(void) { return Between(430, 480); }

static void PutWalkers(void) {
    for (int i = 0; i < kWalkers; ++i) {
        const int32_t speed = i == 0 ? 2 : 1;
        byDepth[i] = Settle(
            Put(stage.walkers[i == 0 ? 0 : 1 + i % 2], 0, 32, 40, 4, 7, VillageX(), VillageY(), speed));
        FaceAllWays(byDepth[i], 40);
        if (i < kOnRoad)
            SendAlongRoad(byDepth[i], i);
        else
            strollers[i - kOnRoad] = byDepth[i];
    }
    hero = byDepth[0];
}

static void PutLakeAndCage(void) {
    for (int i = 0; i < kFish; ++i) {
        const int32_t left = i < 4 ? 980 + 10 * i : 260, right = i < 4 ? 1340 - 10 * i : 460;
        const int32_t y = i < 4 ? 310 + 40 * i : 700 + 30 * i;
        const uintptr_t fish = Settle(Put(stage.fish, 0, 28, 18, 4, 6, left + 50 * (i % 4), y, 1));
        FaceRightOrLeft(fish, 18);
        SpriteMovingRect(fish, left, -1, right, -1);
        MoveSprite(fish, i % 2 ? left : right, y);
    }
    for (int i = 0; i < kLadybirds; ++i) {
        const int32_t x = kCageLeft + 10 + 16 * i, y = kCageTop + 10 + 13 * i;
        ladybirds[i] = Settle(Put(stage.ladybird, 0, 20, 20, 4, 4, x, y, 1));
        FaceAllWays(ladybirds[i], 20);
        SetSpriteCage(ladybirds[i], kCageLeft, kCageTop, kCageRight - 20, kCageBottom - 20, x, kCageTop + 40);
    }
}

static void PutFliers(void) {
    static const int16_t route[] = {200, 160, 820, 60, 1400, 210, 1380, 900, 900, 640, 420, 980, 120, 620};
    for (int i = 0; i < kButterflies; ++i) {
        const uintptr_t butterfly =
            Settle(Put(stage.butterfly, i % 3, 22, 20, 4, 5, VillageX(), VillageY(), 2));
        AttachSprite(butterfly, byDepth[i * 4], i % 2 ? 26 : -18, -14);
    }
    for (int i = 0; i < kBirds; ++i) {
        birds[i] = Settle(
            Put(stage.bird, 0, 36, 28, 4, 5, Between(0, kWorldWidth), Between(0, kWorldHeight), 2 + i % 3));
        FaceRightOrLeft(birds[i], 28);
        SetSpriteMovingMode(birds[i], 1);
    }
    for (int i = 0; i < kBalloons; ++i) {
        const int32_t start = 2 * i;
        const uintptr_t balloon = Settle(
            Put(stage.balloon, i % 2, 34, 52, 6, 10, route[2 * start] + 60 * i, route[2 * start + 1], 1));
        MoveSpriteWithTable(balloon, route, 7, 60 * i, 14 * i, start + 1);
    }
}

static void PutInstruments(void) {
    compass = FixToView(Put(stage.compass, 0, 48, 48, 1, 0, kWidth - 60, 12, 0));
    const uintptr_t first = FixToView(Put(stage.lantern, 0, 16, 16, 6, 8, 10, kHeight - 26, 0));
    for (int i = 1; i < kLanterns; ++i) {
        const uintptr_t lantern = Put(stage.lantern, 0, 16, 16, 6, 8, 10 + 201 * i, kHeight - 26, 0);
        AttachSpriteAnim(FixToView(lantern), first);
    }
}

/* Coins lie on the road, under the feet of those who walk there. */
static void PutCoin(int coin) {
    const int point = Between(0, kRoadPoints - 1);
    coins[coin] = Put(stage.coin, 0, 18, 18, 6, 6, Road[2 * point] - 9, Road[2 * point + 1] - 9, 0);
    SetSpriteLayer(coins[coin], 2);
}

static void Remove(uintptr_t sprite) {
    DeleteSprite(sprite);
    ++deleted;
}

/* What the hero walks over goes into the purse, which is emptied when it is full. */
static void CollectCoins(void) {
    const int32_t x = GetSpriteX(hero) + 16, y = GetSpriteY(hero) + 36;
    for (int i = 0; i < kCoins; ++i) {
        if (abs(GetSpriteX(coins[i]) + 9 - x) > 18 || abs(GetSpriteY(coins[i]) + 9 - y) > 18) continue;
        Remove(coins[i]);
        PutCoin(i);
        if (purseCount == kPurse)
            while (purseCount > 0) Remove(purse[--purseCount]);
        purse[purseCount] = FixToView(Put(stage.coin, 0, 18, 18, 6, 6, 14 + 22 * purseCount, 14, 0));
        ++purseCount;
    }
}

/* Neighbours in the order of drawing change places when the one behind stands further down. */
static void SortByDepth(void) {
    for (int i = 0; i + 1 < kWalkers; ++i) {
        if (GetSpriteY(byDepth[i]) <= GetSpriteY(byDepth[i + 1])) continue;
        SwapSpriteLayers(byDepth[i], byDepth[i + 1]);
        const uintptr_t sprite = byDepth[i];
        byDepth[i] = byDepth[i + 1];
        byDepth[i + 1] = sprite;
    }
}

static int32_t Clamp(int32_t number, int32_t lowest, int32_t highest) {
    return number < lowest ? lowest : number > highest ? highest : number;
}

/* An arrow key or the joystick takes the hero off his round for good; from then on he goes where he is sent.
 * An axis that is not there says 256. */
static void SteerHero(void) {
    static int isSteered;
    const int32_t tiltX = JoystickX(1) % 256, tiltY = JoystickY(1) % 256;
    const int32_t x = (GetKeyState(VK_RIGHT) < 0 || tiltX > 40) - (GetKeyState(VK_LEFT) < 0 || tiltX < -40);
    const int32_t y = (GetKeyState(VK_DOWN) < 0 || tiltY > 40) - (GetKeyState(VK_UP) < 0 || tiltY < -40);
    if (!isSteered && x == 0 && y == 0) return;
    if (!isSteered) MoveSpriteWithTable(hero, NULL, 0, 0, 0, 0);
    isSteered = 1;
    MoveSprite(hero, Clamp(GetSpriteX(hero) + 10 * x, 0, kWorldWidth - 32),
               Clamp(GetSpriteY(hero) + 10 * y, 0, kWorldHeight - 40));
}

/* The view follows the hero, the sooner the further he is from its middle, and never leaves the world. */
static void FollowHero(void) {
    int32_t infos[7];
    GetBackgroundInfos(infos);
    const int32_t goalX = Clamp(GetSpriteX(hero) + 16 - kWidth / 2, 0, kWorldWidth - kWidth);
    const int32_t goalY = Clamp(GetSpriteY(hero) + 20 - kHeight / 2, 0, kWorldHeight - kHeight);
    const int32_t stepX = Clamp((goalX - infos[3]) / 16, -4, 4),
                  stepY = Clamp((goalY - infos[4]) / 16, -4, 4);
    InitSpriteBackground(kStays, kStays, kStays, kStays, kStays, stepX, stepY);
    HearYardFrom(infos[3] + kWidth / 2, infos[4] + kHeight / 2);

    /* Only corners count: half a balloon may still be seen where its corner is outside. */
    const int32_t left = infos[3] - 64, top = infos[4] - 64;
    const int32_t right = infos[3] + kWidth + 16, bottom = infos[4] + kHeight + 16;
    VisualTableFix(residents, residentCount * (int)sizeof *residents, left, top, right, bottom);
    SetSpriteAnim(compass, 48 * GetSpriteMoveXY(hero), 0, 48, 48, 1, 1, 0);
}

/* A bang over the land that is seen; the sprite goes when its one run is over. */
static void KeepBursting(void) {
    if (burst != 0 && GetSpriteAnimModeStatus(burst) == 0) return;
    if (burst != 0) Remove(burst);
    int32_t infos[7];
    GetBackgroundInfos(infos);
    burst = Put(stage.burst, 0, 48, 48, 10, 4, infos[3] + Between(60, 540), infos[4] + Between(40, 240), 0);
    SetSpriteAnim(burst, 0, 0, 48, 48, 10, 1, 4);
    SetSpriteAnimMode(burst, 1);
    BringSpriteToTop(compass); /* whatever bangs there */
}

/* A flower is stamped into the background, and its sprite is no longer needed. It lies behind all others
 * first: whoever stands behind it would be stamped too. */
static void KeepPlanting(int poll) {
    if (poll % 15 == 0) {
        const int point = Between(0, kRoadPoints - 1);
        flower = Put(stage.flower, 0, 20, 28, 1, 0, Road[2 * point] + (point % 2 ? 32 : -52),
                     Road[2 * point + 1] - 20, 0);
        SetSpriteAnim(flower, 20 * Between(0, 3), 0, 20, 28, 1, 1, 0);
        SetSpriteLayer(flower, 2);
    } else if (poll % 15 == 5) {
        SpriteToHDC(flower);
    } else if (poll % 15 == 10) {
        Remove(flower);
    }
}

static void Direct(int poll) {
    for (int i = 0; i < kWalkers - kOnRoad; ++i)
        if (HasSpriteArrived(strollers[i]) && Between(1, 12) == 1)
            MoveSprite(strollers[i], VillageX(), VillageY());
    for (int i = 0; i < kBirds; ++i)
        if (HasSpriteArrived(birds[i]))
            MoveSprite(birds[i], Between(-30, kWorldWidth), Between(-20, kWorldHeight));
    for (int i = 0; i < kLadybirds; ++i)
        if (HasSpriteArrived(ladybirds[i]))
            MoveSprite(ladybirds[i], Between(kCageLeft - 10, kCageRight),
                       Between(kCageTop - 10, kCageBottom));
    SteerHero();
    FollowHero();
    SortByDepth();
    CollectCoins();
    KeepBursting();
    KeepPlanting(poll);
    created += KeepMine(stage.screen, stage.back, stage.clean);
    KeepMazeWalker(stage.back, stage.clean);
    if (poll % 200 == 199) CleanUp(0);
}

static void PutAll(void) {
    /* Never seen, one pixel further in each frame: its X counts the frames. */
    tracer = Put(stage.lantern, 0, 1, 1, 1, 0, 0, -100, 1);
    MoveSprite(tracer, 1000000000, -100);
    PutLakeAndCage();
    PutWalkers();
    Settle(PutMazeWalker(stage.walkers[1], stage.screen, stage.back, stage.clean));
    ++created;
    PutFliers();
    PutInstruments();
    created += PutBalls(stage.screen, stage.back, stage.clean);
    for (int i = 0; i < kCoins; ++i) PutCoin(i);
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
    RunOptions options;
    if (!ReadOptions(argumentCount, arguments, kHeadlessSeconds, &options)) return 2;
    const HWND window = OpenWindow("Fenlight showcase", kWidth, kHeight);
    if (window == 0 || !LoadStage(options.assets, window) || !PaintBackground(options.assets)) return 1;
    PutAll();
    Run(window, options.seconds);

    StopAllSprites(1); /* a picture of one moment */
    int written = 1;
    if (options.picture != NULL) {
        written = WritePicture(options.picture, stage.screen, kWidth, kHeight);
        if (!written) fprintf(stderr, "showcase: cannot write %s\n", options.picture);
    }
    StopAllSprites(0);
    DeleteAllSprites();
    CloseMaze();
    CloseYard();
    FreeAllImages();
    DestroyWindow(window);
    return written ? 0 : 1;
}
