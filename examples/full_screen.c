/* SPDX-License-Identifier: Zlib */
/* A square that runs across a screen of 640 x 480 at 50 steps a second, for as long as the window is there or
 * for four seconds. The stopwatch keeps the pace whatever a step costs; a tooltip tells what it is. */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>

int main(void) {
    const HWND window = OpenWindow("Full screen", 640, 480);
    const HDC screen = GetDC(window);
    if (window == 0) return 1;
    SubWindowStyle(window, WS_CAPTION, 0);                      /* no frame */
    Tooltip(window, "50 steps\na second", window, 0);           /* goes with the window */
    if (ChangeDisplay(640, 480) != 0) printf("no such mode\n"); /* then it is a window */

    int step = 0;
    const DWORD start = GetTickCount();
    for (; IsWindow(window) && step < 200; ++step) {
        StartWatch();
        ColorFillImage(screen, 0x402010, 0, 0, 640, 480);
        ColorFillImage(screen, 0x30B0F0, 3 * step, 220, 3 * step + 40, 260);
        WaitWatch(20);
    }
    printf("%d steps in %u ms\n", step, (unsigned)(GetTickCount() - start));
    ChangeDisplay(0, 0);
    DestroyWindow(window);
    return 0;
}
