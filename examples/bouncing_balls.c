/* SPDX-License-Identifier: Zlib */
/* Balls bounce in a maze of walls, which they know from a mask: black where a wall is. Each hit is heard. Two
 * balls whose pixels meet part again. A mine, larger than they, explodes at the first wall that it
 * meets, and a new one takes its place. With a display it runs until the window is closed, without one for
 * three seconds.
 *
 *   bouncing_balls [--picture FILE] [--seconds N] [--assets FOLDER/]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ball_picture.h"
#include "picture_file.h"
#include "run_options.h"

enum { kWidth = 640, kHeight = 480, kTile = 40 };
enum { kBalls = 10, kBallSize = 26, kMineSize = 48, kBurstFrames = 10, kBurstDelay = 4 };
enum { kFar = 5000 /* targets that no ball reaches */, kMineMark = 1, kPollMs = 10, kHeadlessSeconds = 3 };
enum { kBackCollideMode = 268, kExploding = 1111, kFrame = 24 }; /* words of a sprite's record */

static const RECT walls[] = {{0, 0, 640, 20},      {0, 460, 640, 480},   {0, 0, 20, 480},
                             {620, 0, 640, 480},   {120, 100, 140, 380}, {220, 20, 240, 180},
                             {220, 260, 240, 460}, {140, 220, 180, 240}, {320, 100, 340, 360},
                             {340, 220, 440, 240}, {420, 320, 440, 460}, {420, 20, 440, 140},
                             {520, 120, 540, 360}, {540, 340, 560, 360}};

static HDC screen;
static uintptr_t clean, back, mask, sheets[kBalls], mines, bounce, bang, balls[kBalls], mine;
static int32_t contacts, explosions;

static void Fill(HDC context, int left, int top, int right, int bottom, COLORREF colour) {
    const RECT rectangle = {left, top, right, bottom};
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &rectangle, brush);
    DeleteObject(brush);
}

static void DrawMaze(void) {
    Fill(mask, 0, 0, kWidth, kHeight, 0xFFFFFF);
    for (int y = 0; y < kHeight; y += kTile)
        for (int x = 0; x < kWidth; x += kTile)
            Fill(clean, x, y, x + kTile, y + kTile, (x + y) / kTile % 2 ? 0x503C34 : 0x58443C);
    for (size_t i = 0; i < sizeof walls / sizeof *walls; ++i) {
        const RECT wall = walls[i];
        Fill(clean, wall.left + 6, wall.top + 6, wall.right + 6, wall.bottom + 6, 0x382820);
    }
    for (size_t i = 0; i < sizeof walls / sizeof *walls; ++i) {
        const RECT wall = walls[i];
        Fill(mask, wall.left, wall.top, wall.right, wall.bottom, 0);
        Fill(clean, wall.left, wall.top, wall.right, wall.bottom, 0x5878B0);
    }
    for (size_t i = 0; i < sizeof walls / sizeof *walls; ++i) {
        const RECT wall = walls[i];
        Fill(clean, wall.left + 4, wall.top + 4, wall.right - 4, wall.bottom - 4, 0x78A0D8);
    }
    BitBlt(back, 0, 0, kWidth, kHeight, clean, 0, 0, SRCCOPY);
    BitBlt(screen, 0, 0, kWidth, kHeight, clean, 0, 0, SRCCOPY);
}

static int LoadSounds(const char *folder) {
    char path[1024];
    if (DSoundInit(0) != 0) return 0;
    snprintf(path, sizeof path, "%sbounce.wav", folder);
    bounce = DSoundLoad(path);
    snprintf(path, sizeof path, "%sexplosion.wav", folder);
    bang = DSoundLoad(path);
    DSoundSetGlobalVolume(-2000); /* many voices at once */
    return bounce != 0 && bang != 0;
}

static int MakePictures(const char *folder) {
    static const COLORREF colours[] = {0x3838E0, 0x38B0F0, 0x40C040, 0xE08040, 0xD050C0};
    char path[1024];
    snprintf(path, sizeof path, "%sburst.png", folder);
    const uintptr_t burst = LoadFileImage(path);
    clean = CreateImage(screen, kWidth, kHeight);
    back = CreateImage(screen, kWidth, kHeight);
    mask = CreateImage(screen, kWidth, kHeight);
    mines = CreateImage(screen, kMineSize * kBurstFrames, 2 * kMineSize);
    if (!burst || !clean || !back || !mask || !mines) return 0;
    for (int i = 0; i < kBalls; ++i) {
        sheets[i] = CreateImage(screen, kBallSize * kBallFrames, kBallSize);
        DrawBallFrames(sheets[i], 0, kBallSize, colours[i % 5], 0xF0F0F0);
    }
    /* The explosion lies below the mine in one picture, as a sprite has only one. */
    DrawBallFrames(mines, 0, kMineSize, 0x404040, 0x2040E0);
    BitBlt(mines, 0, kMineSize, kMineSize * kBurstFrames, kMineSize, burst, 0, 0, SRCCOPY);
    return 1;
}

static uintptr_t Throw(uintptr_t sheet, int32_t size, int32_t x, int32_t y, int32_t speedX, int32_t speedY) {
    const uintptr_t ball = InitSprite(sheet, screen, back, clean, 0, 0, size, size, kBallFrames,
                                      1 + x % kBallFrames, 5, x, y, speedX, speedY);
    MoveSprite(ball, (x + y) % 3 ? kFar : -kFar, x % 2 ? kFar : -kFar);
    return ball;
}

static void PutBalls(void) {
    for (int i = 0; i < kBalls; ++i) {
        balls[i] =
            Throw(sheets[i], kBallSize, 30 + i % 5 * 118 + i, i < 5 ? 40 : 410, 1 + i % 3, 1 + (i + 1) % 2);
        SetBackAutoCollision(balls[i], mask, 2, -kFar, -kFar, kFar, kFar, 0, 0, 0, bounce);
    }
}

/* The mine of the last time is deleted by the library, or here if nothing black was near its explosion. */
static void KeepMining(void) {
    DeleteSpritesIfAnimReady();
    if (mine != 0 && ExistSprite(mine) == 0) return;
    explosions += mine != 0;
    static const POINT places[] = {{260, 30}, {160, 390}, {458, 30}, {350, 400}};
    const POINT place = places[explosions % 4];
    CleanUp(kMineMark);
    mine = Throw(mines, kMineSize, place.x, place.y, 1, 1);
    MarkSprite(mine, kMineMark);
    SetBackAutoCollision(mine, mask, 7, 0, kMineSize, kMineSize, kMineSize, kBurstFrames, 1, kBurstDelay,
                         bang);
}

static int IsBall(uintptr_t sprite) {
    for (int i = 0; i < kBalls; ++i)
        if (balls[i] == sprite) return 1;
    return 0;
}

/* Away from the other one, on the axis on which they are further apart. */
static void SendAway(uintptr_t ball, uintptr_t other) {
    const int32_t x = GetSpriteX(ball) - GetSpriteX(other), y = GetSpriteY(ball) - GetSpriteY(other);
    if (abs(x) > abs(y))
        MoveSprite(ball, x < 0 ? -kFar : kFar, GetSpriteMoveY(ball) * kFar);
    else
        MoveSprite(ball, GetSpriteMoveX(ball) * kFar, y < 0 ? -kFar : kFar);
}

/* First the boxes of all, then the pixels of those whose boxes meet. */
static void PartBalls(void) {
    uintptr_t pairs[(kBalls + 2) * (kBalls + 1)]; /* two mines at most, one of them on its way out */
    const int32_t count = CollideUnknown(pairs);
    for (int32_t i = 0; i < count; ++i) {
        const uintptr_t a = pairs[2 * i], b = pairs[2 * i + 1];
        if (!IsBall(a) || !IsBall(b) || !Collision(a, b, 1, 1)) continue;
        SendAway(a, b);
        SendAway(b, a);
        ++contacts;
    }
}

/* Until the window is closed, or for some seconds where nobody can close it; for a picture, until the next
 * explosion can be seen. */
static void Run(HWND window, int seconds, int isPicture) {
    const DWORD start = GetTickCount();
    while (IsWindow(window)) {
        const DWORD elapsed = GetTickCount() - start;
        const int isSeen = TestSprite(mine, kBackCollideMode) == kExploding && TestSprite(mine, kFrame) == 3;
        if (seconds > 0 && elapsed >= 1000u * (DWORD)seconds && (isSeen || !isPicture)) break;
        if (seconds > 0 && elapsed >= 1000u * (DWORD)(seconds + 10)) break;
        KeepMining();
        PartBalls();
        Sleep(kPollMs);
    }
}

int main(int argumentCount, char **arguments) {
    RunOptions options;
    if (!ReadOptions(argumentCount, arguments, kHeadlessSeconds, &options)) return 2;
    const HWND window = OpenWindow("Bouncing balls", kWidth, kHeight);
    screen = GetDC(window);
    if (window == 0 || !MakePictures(options.assets)) {
        fprintf(stderr, "bouncing_balls: no window, or no burst.png in %s\n", options.assets);
        return 1;
    }
    if (!LoadSounds(options.assets)) fprintf(stderr, "bouncing_balls: without sound\n");
    DrawMaze();
    PutBalls();
    Run(window, options.seconds, options.picture != NULL);

    StopAllSprites(1); /* a picture of one moment */
    const int isWritten = options.picture == NULL || WritePicture(options.picture, screen, kWidth, kHeight);
    StopAllSprites(0);
    printf("%d contacts of balls, %d explosions\n", contacts, explosions);
    DeleteAllSprites();
    DSoundUnLoad(bounce);
    DSoundUnLoad(bang);
    DSoundDeInit();
    FreeAllImages();
    DestroyWindow(window);
    return isWritten ? 0 : 1;
}
