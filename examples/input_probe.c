/* SPDX-License-Identifier: Zlib */
/* What keyboard, mouse and joystick say, live: keys are bright while they are down and glow after each press
 * that GetSystemKey gave; the cross is the mouse, the frame in the middle lights up while it is inside; of
 * the joystick there are a bar for each axis, a dot for the stick and a lamp for each button. What the first
 * joystick does not have stays dark. With a display it runs until Escape or until the window is closed,
 * without one for a second.
 *
 *   input_probe [--picture FILE]
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdlib.h>
#include <string.h>

#include "picture_file.h"

enum { kWidth = 640, kHeight = 400, kSize = 36, kPitch = 40, kLeft = 30, kTop = 30, kFrameMs = 20 };
enum { kPadLeft = 230, kPadTop = 260, kPadRight = 400, kPadBottom = 380 };
enum { kNight = 0x30201C, kDark = 0x483830, kEdge = 0x806858, kInk = 0xD8D0C8, kGlow = 0x30B0F0 };
enum { kNoAxis = 256, kMostButtons = 32 };

static uintptr_t canvas;
static int glow[256]; /* frames that a key goes on glowing */

static void Fill(COLORREF colour, int left, int top, int right, int bottom) {
    ColorFillImage(canvas, colour, left, top, right, bottom);
}

static COLORREF Between(COLORREF from, COLORREF to, int part, int whole) {
    COLORREF mixed = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const int a = from >> shift & 255, b = to >> shift & 255;
        mixed |= (COLORREF)(a + (b - a) * part / whole) << shift;
    }
    return mixed;
}

/* Three by five dots, bit 14 for the one at the top left. */
static uint16_t Letter(int key) {
    static const uint16_t digits[] = {0x7B6F, 0x2C97, 0x62A7, 0x628E, 0x5BC9,
                                      0x798E, 0x39EF, 0x7292, 0x7BEF, 0x7BCE};
    static const uint16_t letters[] = {0x2BED, 0x6BAE, 0x3923, 0x6B6E, 0x79A7, 0x79A4, 0x396B, 0x5BED, 0x7497,
                                       0x126A, 0x5BAD, 0x4927, 0x7F6D, 0x6B6D, 0x2B6A, 0x6BA4, 0x2B7B, 0x6BAD,
                                       0x388E, 0x7492, 0x5B6F, 0x5B6A, 0x5B7F, 0x5AAD, 0x5A92, 0x72A7};
    if (key >= '0' && key <= '9') return digits[key - '0'];
    return key >= 'A' && key <= 'Z' ? letters[key - 'A'] : 0;
}

static void DrawKey(int key, int x, int y, int width) {
    const int isDown = GetKeyState(key) < 0;
    const COLORREF rest = Between(kDark, kGlow, glow[key], 50);
    Fill(kEdge, x, y, x + width, y + kSize);
    Fill(isDown ? kInk : rest, x + 1, y + 1, x + width - 1, y + kSize - 1);
    for (int dot = 0; dot < 15; ++dot) {
        const int left = x + 12 + dot % 3 * 4, top = y + 8 + dot / 3 * 4;
        if (Letter(key) >> (14 - dot) & 1) Fill(isDown ? kNight : kInk, left, top, left + 4, top + 4);
    }
}

static void DrawKeyboard(void) {
    static const char *const rows[] = {"1234567890", "QWERTYUIOP", "ASDFGHJKL", "ZXCVBNM"};
    for (int row = 0; row < 4; ++row)
        for (int i = 0; rows[row][i]; ++i)
            DrawKey(rows[row][i], kLeft + 15 * row + kPitch * i, kTop + kPitch * row, kSize);
    const int right = kLeft + 11 * kPitch + 30, bottom = kTop + 4 * kPitch;
    DrawKey(VK_CONTROL, kLeft, bottom, 60);
    DrawKey(VK_MENU, kLeft + 64, bottom, 60);
    DrawKey(VK_SPACE, kLeft + 128, bottom, 200);
    DrawKey(VK_SHIFT, kLeft + 332, bottom, 60);
    DrawKey(VK_RETURN, right, kTop + kPitch, 2 * kPitch - 4);
    DrawKey(VK_UP, right + kPitch, bottom - kPitch, kSize);
    DrawKey(VK_LEFT, right, bottom, kSize);
    DrawKey(VK_DOWN, right + kPitch, bottom, kSize);
    DrawKey(VK_RIGHT, right + 2 * kPitch, bottom, kSize);
}

static void DrawMouse(HWND window) {
    const int isInside = PMouse(kPadLeft, kPadTop, kPadRight, kPadBottom), buttons = MouseButton();
    Fill(isInside ? kGlow : kEdge, kPadLeft, kPadTop, kPadRight, kPadBottom);
    Fill(kDark, kPadLeft + 2, kPadTop + 2, kPadRight - 2, kPadBottom - 2);
    static const int order[] = {1, 4, 2}; /* as they lie on the mouse */
    for (int i = 0; i < 3; ++i) {
        const int left = kPadLeft + 35 + 35 * i;
        Fill(kEdge, left, kPadTop + 20, left + 30, kPadTop + 70);
        Fill(buttons & order[i] ? kInk : kNight, left + 1, kPadTop + 21, left + 29, kPadTop + 69);
    }
    POINT cursor;
    GetCursorPos(&cursor);
    ScreenToClient(window, &cursor);
    Fill(kGlow, cursor.x - 12, cursor.y - 1, cursor.x + 13, cursor.y + 1);
    Fill(kGlow, cursor.x - 1, cursor.y - 12, cursor.x + 1, cursor.y + 13);
}

static void DrawJoystick(void) {
    static int32_t (*const read[])(int32_t) = {JoystickX, JoystickY, JoystickZ,
                                               JoystickR, JoystickU, JoystickV};
    const int middle = kPadTop + 44;
    for (int axis = 0; axis < 6; ++axis) {
        const int left = 430 + 14 * axis, value = read[axis](1);
        const int end = middle + (value == kNoAxis ? 0 : value / 3);
        Fill(kDark, left, middle - 43, left + 10, middle + 43);
        if (value != kNoAxis)
            Fill(kGlow, left, end < middle ? end : middle, left + 10, (end < middle ? middle : end) + 1);
    }
    Fill(kDark, 524, middle - 43, 610, middle + 43);
    const int x = JoystickX(1), y = JoystickY(1);
    if (x != kNoAxis && y != kNoAxis)
        Fill(kInk, 564 + x / 3, middle - 3 + y / 3, 570 + x / 3, middle + 3 + y / 3);
    const uint32_t pressed = (uint32_t)JoystickButton(1);
    for (int button = 0; button < kMostButtons; ++button) {
        const int left = 430 + button % 16 * 11, top = kPadBottom - 24 + button / 16 * 12;
        const int isThere = button < CountJoystickButtons(1);
        Fill(!isThere ? kDark : pressed >> button & 1 ? kGlow : kEdge, left, top, left + 8, top + 8);
    }
}

/* True if the user wants to end. */
static int TakeKeys(void) {
    for (int key = 0; key < 256; ++key) glow[key] -= glow[key] > 0;
    int isEnd = 0;
    for (int key = GetSystemKey(); key != -1; key = GetSystemKey()) {
        glow[key] = 50;
        isEnd |= key == VK_ESCAPE;
    }
    return isEnd;
}

int main(int argumentCount, char **arguments) {
    const HWND window = OpenWindow("Input probe", kWidth, kHeight);
    canvas = CreateImage(GetDC(window), kWidth, kHeight);
    if (!window || !canvas) return 1;
    Tooltip(window, "Press keys, move and click\nthe mouse, use a joystick.\nEscape ends.", window, 0);
    const int isShown = getenv("DISPLAY") || getenv("WAYLAND_DISPLAY");
    for (int frame = 0; IsWindow(window) && !TakeKeys() && (isShown || frame < 50); ++frame) {
        StartWatch();
        Fill(kNight, 0, 0, kWidth, kHeight);
        DrawKeyboard();
        DrawJoystick();
        DrawMouse(window);
        BitBlt(GetDC(window), 0, 0, kWidth, kHeight, canvas, 0, 0, SRCCOPY);
        WaitWatch(kFrameMs);
    }
    const int isPicture = argumentCount == 3 && strcmp(arguments[1], "--picture") == 0;
    const int isWritten = !isPicture || WritePicture(arguments[2], GetDC(window), kWidth, kHeight);
    FreeAllImages();
    DestroyWindow(window);
    return isWritten ? 0 : 1;
}
