// SPDX-License-Identifier: Zlib
// What a screen really shows: the tests named DISABLED_OnScreen run in a process of their own with an X
// server of their own, and are judged by that server's screenshots.
#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

#include "fenlight/platform/windows.h"
#include "platform/graphics/canvas.h"
#include "platform/system/waiting.h"
#include "processes.h"

namespace fenlight::platform {
namespace {

using test::OutputOf;
using test::Picture;
using test::PictureOf;

void Fill(HDC context, RECT area, COLORREF colour) {
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &area, brush);
    DeleteObject(brush);
}

// Every pixel differs from its neighbours, and red, green and blue grow in directions of their own.
void DrawPattern(HDC context, int32_t width, int32_t height) {
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            SetPixel(context, x, y,
                     static_cast<COLORREF>((x * 5 & 255) | (y * 3 & 255) << 8 | ((x + y) & 255) << 16));
        }
    }
    Fill(context, {10, 10, 60, 40}, 0x0000FF);
    Fill(context, {50, 30, 100, 60}, 0x00FF00);
    Fill(context, {90, 50, 140, 80}, 0xFF0000);
}

::testing::AssertionResult ScreenShows(const std::string &name, const Picture &expected) {
    Picture actual;
    BecomesTrue([&] {
        actual = test::WindowOnScreen(name);
        for (uint32_t &pixel : actual.pixels) pixel &= 0xFFFFFF;
        return actual.pixels == expected.pixels;
    });
    return test::SamePicture(name, actual, expected);
}

TEST(DISABLED_OnScreen, AWindowShowsItsContextPixelForPixelUntilItIsDestroyed) {
    const HWND window = OpenWindow("pattern", 203, 117);
    const HDC context = GetDC(window);
    DrawPattern(context, 203, 117);
    EXPECT_TRUE(ScreenShows("pattern", PictureOf(context, 203, 117)));
    BitBlt(context, 1, 60, 99, 50, context, 40, 5, SRCCOPY);
    EXPECT_TRUE(ScreenShows("pattern", PictureOf(context, 203, 117))) << "after a change";
    SetPixel(context, 202, 116, 0x00FFFF);
    EXPECT_TRUE(ScreenShows("pattern", PictureOf(context, 203, 117))) << "after a change of one pixel";
    EXPECT_EQ(DestroyWindow(window), 1);
    EXPECT_TRUE(BecomesTrue([] { return test::WindowOnScreen("pattern").pixels.empty(); }));
}

// The number of the window with that name as the server's own list has it, empty if there is none.
std::string ListedWindow(const std::string &name) {
    std::istringstream lines(OutputOf("xwininfo -root -tree"));
    for (std::string line; std::getline(lines, line);) {
        if (line.find('"' + name + '"') != std::string::npos)
            return line.substr(line.find("0x"), line.find(' ', line.find("0x")) - line.find("0x"));
    }
    return {};
}

TEST(DISABLED_OnScreen, PicturesGoOnWhileAMessageBoxStands) {
    if (!test::IsInstalled("xdotool") || !test::IsInstalled("xwininfo"))
        GTEST_SKIP() << "needs xdotool, xwininfo";
    const HWND owner = OpenWindow("owner", 8, 8);
    const HWND window = OpenWindow("beside", 90, 70);
    std::atomic<int32_t> answer{-1};
    std::thread asker(
        [&] { answer = MessageBoxA(owner, "A text\nof two lines", "box", MB_ICONINFORMATION); });
    std::string box;
    const bool hasCome = BecomesTrue([&] { return !(box = ListedWindow("box")).empty() || answer != -1; });
    EXPECT_TRUE(hasCome);
    if (!box.empty()) {
        EXPECT_EQ(answer, -1) << "it waits";
        DrawPattern(GetDC(window), 90, 70);
        EXPECT_TRUE(ScreenShows("beside", PictureOf(GetDC(window), 90, 70)));
        EXPECT_EQ(DestroyWindow(owner), 1);
        EXPECT_FALSE(ListedWindow("owner").empty()) << "SDL gives it the focus back";
        const HWND late = OpenWindow("late", 5, 5);
        EXPECT_TRUE(IsWindow(late));
        EXPECT_EQ(DestroyWindow(late), 1);
        EXPECT_TRUE(BecomesTrue([&] {
            OutputOf("xdotool windowfocus --sync " + box + " key --clearmodifiers Return");
            return answer != -1;
        }));
        EXPECT_TRUE(
            BecomesTrue([] { return ListedWindow("owner").empty() && ListedWindow("late").empty(); }));
    }
    asker.join();
    EXPECT_EQ(answer, IDOK);
    EXPECT_EQ(DestroyWindow(window), 1);
    if (box.empty()) GTEST_SKIP() << "needs the fonts of xfonts-base";
}

TEST(Screen, ShowsWhatIsDrawnAndHearsTheUser) {
    if (!test::IsInstalled("Xvfb") || !test::IsInstalled("xwd")) GTEST_SKIP() << "needs Xvfb and xwd";
    const test::XServer server;
    ASSERT_FALSE(server.Display().empty());
    EXPECT_EQ(test::RunSelf("DISABLED_OnScreen.*", {"DISPLAY=" + server.Display(), "SDL_VIDEODRIVER="}), 0);
}

}  // namespace
}  // namespace fenlight::platform
