// SPDX-License-Identifier: Zlib
// Display modes, styles, tooltips and the stopwatch without a display and without waiting.
#include "fenlight/desktop.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <string>

#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "platform/system/clock.h"
#include "platform/system/failure_point.h"
#include "platform/system/waiting.h"
#include "platform/window/display_thread.h"
#include "platform/window/input_state.h"
#include "platform/window/tooltip.h"
#include "platform/window/window_record.h"

namespace fenlight {
namespace {

using namespace platform;
using std::chrono::milliseconds;

Uint32 FlagsOf(HWND window) {
    const PinnedWindow record(window);
    Uint32 flags = 0;
    RunOnDisplayThread([&] { flags = SDL_GetWindowFlags(record->frame); });
    return flags;
}

std::pair<int, int> SizeOf(HWND window) {
    std::pair<int, int> size;
    RunOnDisplayThread([&] { SDL_GetWindowSize(PinnedWindow(window)->frame, &size.first, &size.second); });
    return size;
}

bool FillsScreen(HWND window) { return (FlagsOf(window) & SDL_WINDOW_FULLSCREEN) != 0; }

std::string CurrentMode() {
    DEVMODEA mode{};
    EXPECT_EQ(EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, &mode), 1);
    return std::to_string(mode.dmPelsWidth) + 'x' + std::to_string(mode.dmPelsHeight);
}

TEST(Display, TakesTheUsualSizesForTheNewestWindowAndGivesTheUsersBack) {
    EXPECT_EQ(ChangeDisplay(800, 600), 0) << "before there is a window";
    const HWND older = OpenWindow("older", 60, 40);
    EXPECT_TRUE(FillsScreen(older));
    const HWND newer = OpenWindow("newer", 60, 40);
    EXPECT_TRUE(FillsScreen(newer) && !FillsScreen(older));
    for (const auto &[width, height] :
         {std::pair{640, 481}, {-640, 480}, {640, 0}, {1, 1}, {INT32_MAX, INT32_MIN}})
        EXPECT_EQ(ChangeDisplay(width, height), DISP_CHANGE_BADMODE) << width << ' ' << height;
    EXPECT_EQ(CurrentMode(), "800x600");
    EXPECT_EQ(ChangeDisplay(640, 480), 0);
    EXPECT_EQ(CurrentMode(), "640x480");
    DestroyWindow(newer);
    EXPECT_TRUE(FillsScreen(older)) << "it is the newest now";
    EXPECT_EQ(ChangeDisplay(0, 12345), 0);
    EXPECT_EQ(CurrentMode(), "1024x768");
    EXPECT_FALSE(FillsScreen(older));
    EXPECT_EQ(SizeOf(older), std::pair(60, 40));
    DestroyWindow(older);
}

TEST(Display, EveryListedModeCanBeSetAndTestsSetNone) {
    DWORD count = 0;
    DEVMODEA mode{};
    for (; EnumDisplaySettingsA(nullptr, count, &mode) == 1; ++count) {
        EXPECT_TRUE(mode.dmPelsWidth >= 320 && mode.dmPelsHeight >= 200 && mode.dmBitsPerPel == 32);
        EXPECT_EQ(ChangeDisplaySettingsA(&mode, CDS_TEST), DISP_CHANGE_SUCCESSFUL) << count;
    }
    EXPECT_GE(count, 10u);
    EXPECT_EQ(CurrentMode(), "1024x768");
    mode.dmBitsPerPel = 8;
    EXPECT_EQ(ChangeDisplaySettingsA(&mode, 0), DISP_CHANGE_BADMODE);
    mode.dmFields = DM_DISPLAYFREQUENCY;
    mode.dmDisplayFrequency = 75;
    EXPECT_EQ(ChangeDisplaySettingsA(&mode, 0), DISP_CHANGE_BADMODE);
    mode.dmDisplayFrequency = 1;
    EXPECT_EQ(ChangeDisplaySettingsA(&mode, CDS_TEST), DISP_CHANGE_SUCCESSFUL) << "the size stays";
    EXPECT_EQ(EnumDisplaySettingsA("other", 0, &mode) + EnumDisplaySettingsA(nullptr, 0, nullptr), 0);
}

TEST(Style, AllBitsAreKeptAndOnlyOnePicksTheExtendedOnes) {
    const HWND window = OpenWindow("style", 20, 20);
    const auto plain = static_cast<uint32_t>(GetWindowLongA(window, GWL_STYLE));
    EXPECT_EQ(plain, 0x10CA0000u);
    EXPECT_EQ(GetWindowLongA(window, GWL_EXSTYLE), 0);
    for (int bit = 0; bit < 32; ++bit) {
        for (const int32_t extended : {0, 1, 2, -1}) {
            const uint32_t style = 1u << bit, before = extended == 1 ? 0 : plain;
            const auto expect = [&](uint32_t changed) {
                EXPECT_EQ(static_cast<uint32_t>(GetWindowLongA(window, GWL_STYLE)),
                          extended == 1 ? plain : changed);
                EXPECT_EQ(static_cast<uint32_t>(GetWindowLongA(window, GWL_EXSTYLE)),
                          extended == 1 ? changed : 0);
            };
            EXPECT_EQ(AddWindowStyle(window, style, extended), 1);
            expect(before | style);
            EXPECT_EQ(SubWindowStyle(window, style, extended), 1);
            expect(before & ~style);
            if (extended != 1) SetWindowLongA(window, GWL_STYLE, static_cast<LONG>(plain));
        }
    }
    EXPECT_EQ(AddWindowStyle(window, 0, 0), 1) << "shows what was put back";
    EXPECT_FALSE(FlagsOf(window) & SDL_WINDOW_HIDDEN);
    SubWindowStyle(window, WS_VISIBLE, 0);
    EXPECT_TRUE(FlagsOf(window) & SDL_WINDOW_HIDDEN);
    EXPECT_EQ(ShowWindow(window, SW_SHOW), 0) << "was hidden";
    EXPECT_EQ(ShowWindow(window, 9999), 1);
    EXPECT_FALSE(FlagsOf(window) & SDL_WINDOW_HIDDEN);
    EXPECT_EQ(SetWindowPos(window, 0, 5, 6, 70, 80, SWP_FRAMECHANGED), 1);
    EXPECT_EQ(SizeOf(window), std::pair(70, 80));
    EXPECT_EQ(SetWindowPos(window, 0, 5, 6, -1, 0, 0), 1);
    EXPECT_EQ(GetWindowLongA(window, 0) + SetWindowLongA(window, -4, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_INDEX);
    DestroyWindow(window);
}

TEST(Style, ClosedAndForeignWindowsAreRefused) {
    const HWND window = OpenWindow("closed", 20, 20);
    PinnedWindow(window)->isOpen = false;  // as by hand
    for (const HWND refused : {window, HWND{0}, HWND{12345}, GetDC(0)}) {
        SetLastError(0);
        EXPECT_EQ(AddWindowStyle(refused, 8, 1) + SubWindowStyle(refused, WS_CAPTION, 0), 0);
        EXPECT_EQ(GetWindowLongA(refused, GWL_STYLE) + SetWindowLongA(refused, GWL_STYLE, 1), 0);
        EXPECT_EQ(ShowWindow(refused, SW_SHOW), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    }
    EXPECT_EQ(DestroyWindow(window), 1);
    for (const int32_t mode : {0, 1, 9, -1}) EXPECT_EQ(SwitchTaskbar(mode), 0);
}

TEST(Windows, AreFoundByClassAndTitle) {
    const HWND windows[] = {OpenWindow("title", 9, 9), OpenWindow("title", 9, 9), OpenWindow("\xFC", 9, 9)};
    EXPECT_EQ(FindWindowA("fenlightwindow", "title"), windows[1]) << "the newest";
    EXPECT_EQ(FindWindowA(nullptr, "\xC3\xBC"), windows[2]);
    EXPECT_EQ(FindWindowA(nullptr, nullptr), windows[2]);
    EXPECT_EQ(FindWindowA("Shell_TrayWnd", nullptr) + FindWindowA(nullptr, "titl") + FindWindowA(nullptr, ""),
              0u);
    for (const HWND window : windows) DestroyWindow(window);
    EXPECT_EQ(FindWindowA(nullptr, nullptr), 0u);
}

// All steps in one task, so that the display thread's own ticks do not come in between.
TEST(Tooltip, ComesUpWhenThePointerRestsOnItsControlAndGoesByItself) {
    ForgetInput();
    const HWND control = OpenWindow("control", 200, 100);
    const HWND silent = Tooltip(control, nullptr, control, 0);
    const HWND tip = Tooltip(control, "Lg\nI\xE9", control, 77);
    ASSERT_TRUE(tip != 0 && silent != 0 && tip != silent);
    EXPECT_EQ(IsWindow(tip), 1);
    EXPECT_EQ(static_cast<uint32_t>(GetWindowLongA(tip, GWL_STYLE)), 0xD0000001u);
    const PinnedWindow record(tip);
    std::string seen;
    RunOnDisplayThread([&] {
        auto now = std::chrono::steady_clock::now() + std::chrono::hours(1);
        HWND over = control;
        const auto look = [&](int laterMs) {
            UpdateTooltips(now += milliseconds(laterMs), over);
            seen += record->frame != nullptr ? '1' : '0';
        };
        MoveCursor({50, 50});
        for (const int later : {0, 499, 1, 4999, 1, 60000}) look(later);
        seen += " moved ";
        MoveCursor({60, 50});
        for (const int later : {0, 499}) look(later);
        MoveCursor({70, 50});
        for (const int later : {1, 499, 1}) look(later);
        seen += " left ";
        over = 0;
        for (const int later : {0, 60000}) look(later);
        seen += " clicked ";
        over = control;
        for (const int later : {0, 500}) look(later);
        const auto click = [&] {
            PressKey(kRightButton);
            look(1);
            ReleaseKey(kRightButton);
            look(60000);
        };
        click();
        MoveCursor({75, 50});
        look(0);
        click();
        MoveCursor({80, 50});
        for (const int later : {0, 500}) look(later);
        PinnedWindow(control)->LeaveScreen();  // closed by hand under it, and no window is left
    });
    EXPECT_TRUE(BecomesTrue([&] {
        RunOnDisplayThread([&] { seen.back() = record->frame != nullptr ? '1' : '0'; });
        return seen.back() == '0';
    }));
    EXPECT_EQ(seen, "001100 moved 00001 left 00 clicked 010000000");
    EXPECT_EQ(DestroyWindow(silent), 1);
    EXPECT_EQ(DestroyWindow(control), 1);
    EXPECT_EQ(IsWindow(tip) + DestroyWindow(tip), 0) << "gone with its parent";
    EXPECT_EQ(CountHandles(HandleKind::Window), 0);
}

TEST(Tooltip, BadParentsMemoryAndMessagesGiveTheFailureValue) {
    const HWND control = OpenWindow("control", 20, 20);
    EXPECT_EQ(Tooltip(control, "text", 12345, 0), 0u);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    FailOnce(Operation::Memory, 1);
    EXPECT_EQ(Tooltip(control, "text", control, 0), 0u);
    ForgetFailures();
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(CreateWindowExA(0, "button", "", 0, 0, 0, 0, 0, 0, 0, 0, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_CLASS_DOES_NOT_EXIST);
    const HWND tip = Tooltip(999, std::string(100'000, 'x').c_str(), 0, 0);
    EXPECT_NE(tip, 0u) << "a control that is no window is explained never";
    TOOLINFOA tool{};
    tool.cbSize = sizeof tool - 1;
    tool.uFlags = TTF_IDISHWND;
    EXPECT_EQ(SendMessageA(tip, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool)), 0);
    EXPECT_EQ(SendMessageA(tip, TTM_ADDTOOLA, 0, 0) + SendMessageA(tip, 1, 0, 0), 0);
    EXPECT_EQ(SendMessageA(tip, TTM_SETMAXTIPWIDTH, 0, 50), 0x7FFF);
    EXPECT_EQ(SendMessageA(control, TTM_SETMAXTIPWIDTH, 0, 50), 0) << "no tooltip";
    EXPECT_EQ(DestroyWindow(tip) + DestroyWindow(control), 2);
}

class SteppedClock : public Clock {
  public:
    uint32_t TickCount() noexcept override { return tick; }
    void Sleep(uint32_t length) noexcept override {
        EXPECT_EQ(length, 1u);
        ++sleeps;
        tick += length;
    }
    uint32_t tick = 0xFFFFFFF0;  // wraps soon
    int sleeps = 0;
};

TEST(Watch, CountsFromItsStartAndWaitsInStepsOfAMillisecond) {
    SteppedClock clock;
    ReplaceClock(&clock);
    EXPECT_EQ(StartWatch(), 0);
    EXPECT_EQ(ReadWatch(), 0);
    const struct {
        int32_t until;
        int sleeps;
        int32_t shows;
    } cases[] = {{50, 50, 50}, {50, 1, 51}, {0, 1, 52}, {-7, 1, 53}, {INT32_MIN, 1, 54}, {70, 16, 70}};
    for (const auto &[until, sleeps, shows] : cases) {
        clock.sleeps = 0;
        WaitWatch(until);
        EXPECT_EQ(clock.sleeps, sleeps) << until;
        EXPECT_EQ(ReadWatch(), shows) << until;
    }
    StartWatch();
    EXPECT_EQ(ReadWatch(), 0);
    clock.tick += 0x80000005;
    EXPECT_EQ(ReadWatch(), INT32_MIN + 5) << "the sign turns at 2^31";
    ReplaceClock(nullptr);
}

}  // namespace
}  // namespace fenlight
