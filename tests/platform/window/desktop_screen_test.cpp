// SPDX-License-Identifier: Zlib
// Mouse, full screen, styles and tooltips on a real X server: the tests named DISABLED_OnScreen are run by
// screen_test.cpp in a process with a server of its own, which has 800 x 600 pixels and no window manager.
#include <SDL.h>
#include <gtest/gtest.h>

#include <sstream>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/input.h"
#include "fenlight/platform/windows.h"
#include "platform/graphics/canvas.h"
#include "platform/system/waiting.h"
#include "platform/window/display_thread.h"
#include "platform/window/input_state.h"
#include "platform/window/window_record.h"
#include "processes.h"

namespace fenlight::platform {
namespace {

using test::OutputOf;
using test::Picture;

bool HasTools() { return test::IsInstalled("xdotool") && test::IsInstalled("xwininfo"); }

Picture ScreenOf(const std::string &name) {
    Picture picture = test::WindowOnScreen(name);
    for (uint32_t &pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture;
}

// The lines of the server's own description of a window.
std::string Described(const std::string &name) { return OutputOf("xwininfo -all -name '" + name + "'"); }

bool Says(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

void Focus(const std::string &name) { OutputOf("xdotool search --name '^" + name + "$' windowfocus --sync"); }

void MoveRealPointer(const std::string &place) { OutputOf("xdotool mousemove " + place); }

bool CursorComesTo(int32_t x, int32_t y) {
    POINT cursor{};
    const bool hasCome =
        BecomesTrue([&] { return GetCursorPos(&cursor) != 0 && cursor.x == x && cursor.y == y; });
    if (!hasCome) ADD_FAILURE() << "the cursor is at " << cursor.x << ' ' << cursor.y;
    return hasCome;
}

bool RealPointerComesTo(int32_t x, int32_t y) {
    std::ostringstream place;
    place << "x:" << x << " y:" << y << ' ';
    return BecomesTrue([&] { return OutputOf("xdotool getmouselocation").rfind(place.str(), 0) == 0; });
}

// The first of this server's process.
TEST(DISABLED_OnScreen, TheUsersModeIsKnownBeforeThereIsAWindow) {
    DEVMODEA mode{};
    ASSERT_EQ(EnumDisplaySettingsA(nullptr, ENUM_REGISTRY_SETTINGS, &mode), 1);
    EXPECT_EQ(mode.dmPelsWidth * 10'000 + mode.dmPelsHeight, 8'000'600u);
}

TEST(DISABLED_OnScreen, TheCursorFollowsTheMouseAndTheMouseFollowsTheCursor) {
    if (!HasTools()) GTEST_SKIP() << "needs xdotool and xwininfo";
    const HWND window = OpenWindow("cursor", 300, 200);
    SetWindowPos(window, 0, 100, 50, 0, 0, SWP_NOSIZE);
    ASSERT_TRUE(BecomesTrue([] { return Says(Described("cursor"), "Corners:  +100+50 "); }));
    Focus("cursor");
    MoveRealPointer("130 90");
    EXPECT_TRUE(CursorComesTo(130, 90));
    POINT point{130, 90};
    EXPECT_EQ(ScreenToClient(window, &point), 1);
    EXPECT_EQ(point.x * 1000 + point.y, 30'040);
    EXPECT_TRUE(BecomesTrue([&] { return GetActiveWindow() == window; }));
    MoveRealPointer("700 500");
    // Where exactly is known only where the server tells of motion outside, which this one does not.
    POINT outside{};
    EXPECT_TRUE(
        BecomesTrue([&] { return GetCursorPos(&outside) != 0 && outside.x >= 400 && outside.y >= 250; }));
    SetCursorPos(222, 111);
    EXPECT_TRUE(RealPointerComesTo(222, 111));

    const RECT inside{150, 100, 250, 150};
    ClipCursor(&inside);
    MoveRealPointer("390 240");
    EXPECT_TRUE(RealPointerComesTo(249, 149)) << "brought back";
    EXPECT_TRUE(CursorComesTo(249, 149));
    ClipCursor(nullptr);
    MoveRealPointer("390 240");
    EXPECT_TRUE(CursorComesTo(390, 240));

    OutputOf("xdotool keydown k keydown a mousedown 3");
    EXPECT_TRUE(BecomesTrue([] { return GetKeyState('K') < 0 && GetKeyState(VK_RBUTTON) < 0; }));
    OutputOf("xdotool keyup a");
    EXPECT_TRUE(BecomesTrue([] { return GetKeyState('A') >= 0; }));
    EXPECT_EQ(GetAsyncKeyState('A'), 1) << "it was pressed";
    DestroyWindow(window);
    EXPECT_TRUE(GetKeyState('K') >= 0 && GetKeyState(VK_RBUTTON) >= 0) << "up with the last window";
    OutputOf("xdotool keyup k mouseup 3");
    SetCursorPos(30, 20);
    EXPECT_TRUE(CursorComesTo(30, 20));
    EXPECT_TRUE(RealPointerComesTo(390, 240)) << "without a window it is the user's";
}

TEST(DISABLED_OnScreen, AChangedModeFillsTheScreenAndIsTakenBack) {
    if (!HasTools()) GTEST_SKIP() << "needs xdotool and xwininfo";
    const HWND window = OpenWindow("full", 64, 48);
    SetPixel(GetDC(window), 63, 47, 0x0000FF);
    DEVMODEA mode{};
    ASSERT_EQ(EnumDisplaySettingsA(nullptr, ENUM_REGISTRY_SETTINGS, &mode), 1);
    mode.dmPelsWidth = 640;
    mode.dmPelsHeight = 480;
    EXPECT_EQ(ChangeDisplaySettingsA(&mode, CDS_FULLSCREEN), DISP_CHANGE_SUCCESSFUL);
    Picture expected(800, 600);  // the next larger mode of this server
    expected.At(63, 47) = 0xFF0000;
    Picture actual;
    BecomesTrue([&] { return (actual = ScreenOf("full")).pixels == expected.pixels; });
    EXPECT_TRUE(test::SamePicture("full", actual, expected));
    mode.dmPelsWidth = 1920;
    mode.dmPelsHeight = 1080;
    EXPECT_EQ(ChangeDisplaySettingsA(&mode, CDS_FULLSCREEN), DISP_CHANGE_SUCCESSFUL) << "more than it has";
    EXPECT_EQ(ChangeDisplaySettingsA(nullptr, CDS_RESET), DISP_CHANGE_SUCCESSFUL);
    EXPECT_TRUE(BecomesTrue([] { return Says(Described("full"), "-geometry 64x48"); }));
    DestroyWindow(window);
}

TEST(DISABLED_OnScreen, StylesReachTheWindow) {
    if (!HasTools()) GTEST_SKIP() << "needs xdotool and xwininfo";
    const HWND window = OpenWindow("styled", 64, 48);
    const struct {
        DWORD style, extendedStyle;
        Uint32 flags;
        std::string title;
    } cases[] = {{WS_VISIBLE, 0, SDL_WINDOW_BORDERLESS, ""},
                 {WS_VISIBLE | WS_CAPTION, 0, 0, "styled"},
                 {WS_VISIBLE | WS_THICKFRAME, 0, SDL_WINDOW_RESIZABLE, ""},
                 {WS_VISIBLE | WS_BORDER, WS_EX_TOPMOST, SDL_WINDOW_ALWAYS_ON_TOP, ""},
                 {WS_VISIBLE | WS_CAPTION | WS_THICKFRAME, ~WS_EX_TOPMOST, SDL_WINDOW_RESIZABLE, "styled"}};
    constexpr Uint32 kFrame = SDL_WINDOW_BORDERLESS | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALWAYS_ON_TOP;
    for (const auto &wanted : cases) {
        SetWindowLongA(window, GWL_STYLE, static_cast<LONG>(wanted.style));
        SetWindowLongA(window, GWL_EXSTYLE, static_cast<LONG>(wanted.extendedStyle));
        EXPECT_EQ(SetWindowPos(window, 0, 0, 0, 0, 0, 0x27), 1);
        RunOnDisplayThread([&] {
            SDL_Window *frame = PinnedWindow(window)->frame;
            EXPECT_EQ(SDL_GetWindowFlags(frame) & kFrame, wanted.flags) << std::hex << wanted.style;
            EXPECT_EQ(SDL_GetWindowTitle(frame), wanted.title) << std::hex << wanted.style;
        });
    }
    EXPECT_EQ(FindWindowA(nullptr, "styled"), window) << "whatever is shown of it";
    EXPECT_TRUE(BecomesTrue([] { return Says(Described("styled"), "Map State: IsViewable"); }));
    for (const int32_t side : {65'536, 16'385, INT32_MAX})
        EXPECT_EQ(SetWindowPos(window, 0, 0, 0, side, side, SWP_NOMOVE), 1);
    EXPECT_EQ(ShowWindow(window, SW_HIDE), 1);
    EXPECT_TRUE(BecomesTrue([] { return Says(Described("styled"), "Map State: IsUnMapped"); }));
    EXPECT_EQ(ShowWindow(window, SW_SHOW), 0);
    EXPECT_TRUE(BecomesTrue([] { return Says(Described("styled"), "Map State: IsViewable"); }));
    DestroyWindow(window);
}

// "Lg": a dot is a square of two pixels, with a margin of six around.
Picture TooltipByHand() {
    constexpr const char *kDots[] = {"#..........", "#..........", "#......####",
                                     "#.....#...#", "#.....#...#", "#.....#...#",
                                     "#####..####", "..........#", ".......###."};
    Picture picture(6 + 22 + 6, 6 + 18 + 6);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const bool isEdge = x == 0 || y == 0 || x == picture.width - 1 || y == picture.height - 1;
            const bool isText =
                x >= 6 && x < 28 && y >= 6 && y < 24 && kDots[(y - 6) / 2][(x - 6) / 2] == '#';
            picture.At(x, y) = isEdge || isText ? 0 : 0xFFFFE1;
        }
    }
    return picture;
}

TEST(DISABLED_OnScreen, ATooltipComesUpBelowTheRestingPointerAndGoesWithIt) {
    if (!HasTools()) GTEST_SKIP() << "needs xdotool and xwininfo";
    const HWND window = OpenWindow("control", 200, 100);
    Focus("control");
    const HWND tip = CreateWindowExA(0, TOOLTIPS_CLASSA, "", 0, 0, 0, 0, 0, window, 0, 0, nullptr);
    TOOLINFOA tool{sizeof tool, TTF_IDISHWND, 0, window, {}, 0, "Lg"};
    EXPECT_EQ(SendMessageA(tip, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool)), 1);
    const CursorPosition corner = PinnedWindow(window)->Corner();
    MoveRealPointer(std::to_string(corner.x + 50) + ' ' + std::to_string(corner.y + 30));
    Picture actual;
    const Picture expected = TooltipByHand();
    BecomesTrue([&] { return (actual = ScreenOf("Lg")).pixels == expected.pixels; });
    EXPECT_TRUE(test::SamePicture("tooltip", actual, expected));
    const std::string place =
        "Corners:  +" + std::to_string(corner.x + 50) + '+' + std::to_string(corner.y + 50) + ' ';
    EXPECT_TRUE(Says(Described("Lg"), place)) << Described("Lg");
    OutputOf("xdotool keydown k");
    EXPECT_TRUE(BecomesTrue([] { return GetKeyState('K') < 0; })) << "the control keeps the keyboard";
    OutputOf("xdotool keyup k");
    MoveRealPointer("1 1");
    EXPECT_TRUE(BecomesTrue([] { return ScreenOf("Lg").pixels.empty(); }));
    DestroyWindow(window);
}

}  // namespace
}  // namespace fenlight::platform
