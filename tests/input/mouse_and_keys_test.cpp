// SPDX-License-Identifier: Zlib
// Keys and mouse, fed as the display thread does it, without a display.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "fenlight/input.h"
#include "fenlight/platform/input.h"
#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "platform/window/input_state.h"
#include "platform/window/window_record.h"

namespace fenlight {
namespace {

using namespace platform;

std::vector<int32_t> AllFreshKeys() {
    std::vector<int32_t> keys;
    for (int32_t key = GetSystemKey(); key != -1; key = GetSystemKey()) keys.push_back(key);
    return keys;
}

TEST(SystemKey, GivesEachPressOnceLowestCodeFirstAndNoneWithoutAWindow) {
    ForgetInput();
    EXPECT_EQ(GetSystemKey(), -1);
    for (const uint8_t key : {uint8_t{0xFF}, uint8_t{'Z'}, uint8_t{'A'}, uint8_t{1}}) PressKey(key);
    EXPECT_EQ(AllFreshKeys(), (std::vector<int32_t>{1, 'A', 'Z', 255}));
    EXPECT_EQ(GetSystemKey(), -1) << "held, not pressed again";
    ReleaseKey('A');
    PressKey('A');
    PressKey(kRightControl);
    EXPECT_EQ(AllFreshKeys(), (std::vector<int32_t>{kControl, 'A', kRightControl}));
    PressKey('B');
    ReleaseKey('B');
    EXPECT_EQ(GetSystemKey(), -1) << "let go before the scan";
    PressKey('C');
    PressKey('D');
    EXPECT_EQ(GetSystemKey(), 'C');
    ReleaseKey('D');
    EXPECT_EQ(GetSystemKey(), -1);
}

// The definition, call by call.
int32_t ScanOneByOne() {
    for (int32_t key = 0; key < 256; ++key) {
        if (int32_t{GetAsyncKeyState(key)} == static_cast<int32_t>(0xFFFF8001)) return key;
    }
    return -1;
}

TEST(SystemKey, IsTheFirstCodeWhoseAsyncStateIsDownAndPressedSince) {
    const auto answers = [](int32_t (*scan)()) {
        std::vector<int32_t> found;
        std::minstd_rand random(9);
        ForgetInput();
        for (int round = 0; round < 3000; ++round) {
            const auto key = static_cast<uint8_t>(random() % 256);
            random() % 3 != 0 ? PressKey(key) : ReleaseKey(key);
            if (random() % 3 == 0) found.push_back(scan());
        }
        return found;
    };
    EXPECT_EQ(answers(GetSystemKey), answers(ScanOneByOne));
}

TEST(KeyState, TellsDownToggledAndPressedSinceApart) {
    ForgetInput();
    EXPECT_EQ(GetKeyState(VK_CAPITAL), 0);
    PressKey(VK_CAPITAL);
    EXPECT_EQ(static_cast<uint16_t>(GetKeyState(VK_CAPITAL)), 0x8001);
    ReleaseKey(VK_CAPITAL);
    EXPECT_EQ(GetKeyState(VK_CAPITAL), 1) << "asking takes nothing away";
    EXPECT_EQ(GetAsyncKeyState(VK_CAPITAL), 1);
    EXPECT_EQ(GetAsyncKeyState(VK_CAPITAL), 0);
    PressKey(VK_CAPITAL);
    EXPECT_EQ(GetKeyState(VK_CAPITAL), INT16_MIN);
    ReleaseAllKeys();
    EXPECT_EQ(GetKeyState(VK_CAPITAL), 0);
    for (const int32_t key : {-1, 256, INT32_MIN, INT32_MAX})
        EXPECT_EQ(GetKeyState(key) | GetAsyncKeyState(key), 0) << key;
}

TEST(Mouse, ButtonsAreAddedUp) {
    ForgetInput();
    for (int32_t pressed = 7; pressed >= 0; --pressed) {
        (pressed & 1) != 0 ? PressKey(1) : ReleaseKey(1);
        (pressed & 2) != 0 ? PressKey(2) : ReleaseKey(2);
        (pressed & 4) != 0 ? PressKey(4) : ReleaseKey(4);
        EXPECT_EQ(MouseButton(), pressed);
    }
    PressKey(kExtraButton1);
    EXPECT_EQ(MouseButton(), 0);
}

TEST(Mouse, LiesInRectanglesOfTheActiveWindowOrElseOfTheScreen) {
    ForgetInput();
    SetMouseXY(30, 20);
    const auto checkEdges = [](const char *where) {
        EXPECT_EQ(PMouse(30, 20, 31, 21), 1) << where;
        EXPECT_EQ(PMouse(0, 0, 30, 21), 0) << "right edge, " << where;
        EXPECT_EQ(PMouse(0, 0, 31, 20), 0) << "lower edge, " << where;
        EXPECT_EQ(PMouse(31, 0, 99, 99) + PMouse(0, 21, 99, 99), 0) << where;
        EXPECT_EQ(PMouse(30, 20, 30, 20) + PMouse(40, 40, 10, 10), 0) << "empty, " << where;
    };
    checkEdges("screen");
    const HWND below = OpenWindow("below", 50, 50);
    const HWND window = OpenWindow("active", 50, 50);
    EXPECT_EQ(GetActiveWindow(), window);
    PinnedWindow(window)->SetCorner(-1000, 500);
    SetMouseXY(-970, 520);
    checkEdges("window");
    POINT point{INT32_MAX, INT32_MIN};
    EXPECT_EQ(ScreenToClient(window, &point), 1);
    EXPECT_EQ(point.y, INT32_MAX - 499) << "wraps";
    EXPECT_EQ(ScreenToClient(window, nullptr) + GetCursorPos(nullptr), 0);
    DestroyWindow(window);
    point = {1, 2};
    EXPECT_EQ(ScreenToClient(window, &point), 0);
    EXPECT_TRUE(point.x == 1 && point.y == 2);
    EXPECT_EQ(GetActiveWindow(), below);
    PressKey('K');
    DestroyWindow(below);
    EXPECT_EQ(GetActiveWindow(), 0u);
    EXPECT_EQ(PMouse(-970, 520, -969, 521), 1) << "on the screen again";
    EXPECT_EQ(GetKeyState('K') & 0x8000, 0) << "nobody hears it go up without a window";
}

TEST(Mouse, StaysInItsRectangleUntilItIsFreed) {
    ForgetInput();
    SetMouseXY(500, 5);
    SetMouseRect(10, 20, 30, 40);
    const auto isAt = [](int32_t x, int32_t y) { return CurrentCursor() == CursorPosition{x, y}; };
    EXPECT_TRUE(isAt(29, 20)) << "moved in";
    SetMouseXY(-5, 1000);
    EXPECT_TRUE(isAt(10, 39));
    MoveCursor({1000, 25});
    EXPECT_TRUE(isAt(29, 25)) << "the user moves it";
    for (const RECT &empty : {RECT{5, 5, 5, 9}, {5, 5, 9, 5}, {9, 5, 5, 9}, {0, 0, 0, 0}}) {
        SetMouseRect(empty.left, empty.top, empty.right, empty.bottom);
        EXPECT_TRUE(isAt(29, 25)) << "an empty rectangle changes nothing";
        SetLastError(0);
        EXPECT_EQ(ClipCursor(&empty), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    SetMouseXY(50, 50);
    EXPECT_TRUE(isAt(29, 39)) << "still confined";
    EXPECT_EQ(ClipCursor(nullptr), 1);
    SetMouseXY(INT32_MIN, INT32_MAX);
    EXPECT_TRUE(isAt(INT32_MIN, INT32_MAX));
}

}  // namespace
}  // namespace fenlight
