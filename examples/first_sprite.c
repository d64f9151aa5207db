/* SPDX-License-Identifier: Zlib */
/* A wanderer in a red coat walks to six places in a meadow, facing the way he goes. Run it in the project's
 * folder. */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>

int main(void) {
    HWND window = OpenWindow("First sprite", 800, 600);
    HDC screen = GetDC(window);                           /* what the user sees */
    uintptr_t clean = LoadFileImage("assets/meadow.jpg"); /* the background alone */
    uintptr_t back = CreateImage(screen, 800, 600);       /* the background with sprites */
    uintptr_t strips = LoadFileImage("assets/walker_red.png");
    if (!window || !clean || !back || !strips) return 1;
    BitBlt(back, 0, 0, 800, 600, clean, 0, 0, SRCCOPY);
    BitBlt(screen, 0, 0, 800, 600, clean, 0, 0, SRCCOPY);

    /* Strips of 4 frames of 32 x 40, a new frame every 8 passes, at (100, 420), 3 pixels a step. */
    uintptr_t walker = InitSprite(strips, screen, back, clean, 0, 0, 32, 40, 4, 1, 8, 100, 420, 3, 3);
    if (!walker) return 1;
    for (int facing = 0; facing <= 8; ++facing) SetSpriteAnimMove(walker, facing, 0, 40 * facing);

    for (int walk = 0; walk < 6 && IsWindow(window); ++walk) {
        int32_t place[2];
        Random(&place[0], 0, 20, 740);
        Random(&place[1], 0, 350, 200);
        MoveSprite(walker, place[0], place[1]);
        while (IsWindow(window) && !HasSpriteArrived(walker)) Sleep(20);
    }

    DeleteAllSprites();
    FreeAllImages();
    DestroyWindow(window);
    return 0;
}
