// SPDX-License-Identifier: Zlib
#include <SDL.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/input.h"
#include "fenlight/platform/windows.h"
#include "platform/system/failure_point.h"
#include "platform/system/waiting.h"
#include "platform/window/display_thread.h"
#include "platform/window/message_box.h"
#include "platform/window/video.h"
#include "platform/window/window_picture.h"
#include "processes.h"

namespace fenlight::platform {
namespace {

// Without a display, also where the tests are run by hand on one. The processes of processes.h choose for
// themselves.
const bool isHeadless = [] {
    if (test::IsRunBySelf()) return false;
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"}) unsetenv(variable);
    return true;
}();

void CloseByHand(HWND window) {
    const PinnedWindow record(window);
    RunOnDisplayThread([&] {
        SDL_Event event{};
        event.type = SDL_WINDOWEVENT;
        event.window.windowID = SDL_GetWindowID(record->frame);
        event.window.event = SDL_WINDOWEVENT_CLOSE;
        SDL_PushEvent(&event);
        PumpEvents();
    });
}

TEST(Window, ItsContextIsABlackPictureThatOutlivesClosingByHand) {
    ASSERT_TRUE(isHeadless);
    const HWND window = OpenWindow("picture", 37, 21);
    const HDC context = GetDC(window);
    EXPECT_EQ(IsWindow(window), 1);
    EXPECT_EQ(GetPixel(context, 0, 0), 0u);
    EXPECT_EQ(GetPixel(context, 36, 20), 0u);
    EXPECT_EQ(GetPixel(context, 37, 20), CLR_INVALID);
    EXPECT_EQ(GetPixel(context, 36, 21), CLR_INVALID);
    SetPixel(context, 36, 20, 0x123456);
    CloseByHand(window);
    EXPECT_EQ(IsWindow(window), 0);
    EXPECT_EQ(GetDC(window), context);
    EXPECT_EQ(GetPixel(context, 36, 20), 0x123456u);
    SetPixel(context, 0, 0, 0xABCDEF);
    EXPECT_EQ(GetPixel(context, 0, 0), 0xABCDEFu);
    EXPECT_EQ(ReleaseDC(window, context), 1);
    EXPECT_EQ(GetPixel(context, 0, 0), 0xABCDEFu) << "released is not ended";
    EXPECT_EQ(DestroyWindow(window), 1);
    EXPECT_EQ(GetPixel(context, 0, 0), CLR_INVALID);
    EXPECT_EQ(DestroyWindow(window), 0);
}

TEST(Window, BadSizesAndForeignContextsGiveTheFailureValue) {
    const int contexts = CountHandles(HandleKind::Context);
    const int32_t sizes[][2] = {
        {0, 9}, {9, 0}, {-1, 9}, {9, -1}, {16385, 1}, {1, 16385}, {INT32_MAX, INT32_MAX}, {INT32_MIN, 9}};
    for (const auto &[width, height] : sizes)
        EXPECT_EQ(OpenWindow("", width, height), 0u) << width << ' ' << height;
    const HWND live = OpenWindow(nullptr, 1, 1);
    const HWND dead = OpenWindow("\xA0", 3, 3);
    const HDC deadContext = GetDC(dead);
    EXPECT_TRUE(live != 0 && dead != 0);
    EXPECT_EQ(DestroyWindow(dead), 1);
    EXPECT_EQ(ReleaseDC(dead, deadContext) + ReleaseDC(live, deadContext) + ReleaseDC(live, GetDC(0)), 0);
    EXPECT_EQ(ReleaseDC(dead, GetDC(live)) + ReleaseDC(0, GetDC(live)) + ReleaseDC(0, 0), 0);
    EXPECT_EQ(ReleaseDC(0, GetDC(0)), 1);
    EXPECT_EQ(DestroyWindow(live), 1);
    EXPECT_LE(CountHandles(HandleKind::Context), contexts + 1) << "the screen's own may have come";
    EXPECT_EQ(CountHandles(HandleKind::Window), 0);
}

TEST(Window, IsShownWheneverItsPictureChangedAndOnlyThen) {
    const HWND window = OpenWindow("shown", 40, 30);
    const PinnedWindow record(window);
    std::vector<bool> shown;
    test::Picture onScreen(40, 30);
    // All in one task, so that the thread's own ticks do not come in between.
    RunOnDisplayThread([&] {
        ShowWindowPicture(*record);
        shown.push_back(ShowWindowPicture(*record));
        SetPixel(record->context, 39, 29, 0x0000FF);
        shown.push_back(ShowWindowPicture(*record));
        shown.push_back(ShowWindowPicture(*record));
        GetPixel(record->context, 1, 1);
        shown.push_back(ShowWindowPicture(*record));
        record->needsShowing = true;
        shown.push_back(ShowWindowPicture(*record));
        const SDL_Surface *surface = SDL_GetWindowSurface(record->frame);
        SDL_ConvertPixels(40, 30, surface->format->format, surface->pixels, surface->pitch,
                          SDL_PIXELFORMAT_RGB888, onScreen.pixels.data(), 40 * 4);
    });
    EXPECT_EQ(shown, (std::vector<bool>{false, true, false, false, true}));
    test::Picture expected(40, 30);
    expected.At(39, 29) = 0xFF0000;
    EXPECT_TRUE(test::SamePicture("window-shown", onScreen, expected));
    EXPECT_EQ(DestroyWindow(window), 1);
    EXPECT_EQ(DestroyWindow(window), 0) << "pinned, but dead";
}

TEST(Window, ManyAreOpenedDrawnOnAndDestroyedOnAllThreadsAtOnce) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 60;
    std::array<std::atomic<HWND>, 16> shared{};
    std::atomic<int> opened{0};
    std::atomic<int> destroyed{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= kThreads; ++seed) {
        threads.emplace_back([&, seed] {
            std::minstd_rand random(seed);
            for (int round = 0; round < kRounds; ++round) {
                const HWND window = OpenWindow("many", 20, 10);
                opened += window != 0;
                const HWND old = shared[random() % shared.size()].exchange(window);
                const HWND other = shared[random() % shared.size()];
                SetPixel(GetDC(other), 3, 3, 0xFFFFFF);
                if (random() % 4 == 0) destroyed += DestroyWindow(other);
                ReleaseDC(other, GetDC(other));
                IsWindow(other);
                if (other != 0) CreateWindowExA(0, TOOLTIPS_CLASSA, "", 0, 0, 0, 0, 0, other, 0, 0, nullptr);
                SetWindowLongA(other, GWL_EXSTYLE, GetWindowLongA(other, GWL_EXSTYLE) ^ 8);
                SetWindowPos(other, 0, 1, 2, 30, 40, SWP_FRAMECHANGED);
                SendMessageA(other, TTM_SETMAXTIPWIDTH, 0, FindWindowA(nullptr, "many") != 0);
                POINT point{};
                ScreenToClient(ShowWindow(other, SW_SHOW) != 0 ? GetActiveWindow() : other, &point);
                destroyed += DestroyWindow(old);
            }
        });
    }
    for (auto &thread : threads) thread.join();
    for (auto &window : shared) destroyed += DestroyWindow(window);
    EXPECT_EQ(opened, kThreads * kRounds);
    EXPECT_EQ(destroyed, opened) << "each exactly once";
    EXPECT_EQ(CountHandles(HandleKind::Window), 0);
}

TEST(Window, WhereMemoryRunsOutNothingOpensAndNothingIsLost) {
    DestroyWindow(OpenWindow("", 8, 8));
    const int contexts = CountHandles(HandleKind::Context);
    const int bitmaps = CountHandles(HandleKind::Bitmap);
    for (const Operation operation : {Operation::Memory, Operation::Bitmap, Operation::Context}) {
        FailOnce(operation, INT32_MAX);
        DestroyWindow(OpenWindow("", 8, 8));
        const int operations = CountOperations(operation);
        for (int n = 1; n <= operations; ++n) {
            FailOnce(operation, n);
            EXPECT_EQ(OpenWindow("", 8, 8), 0u) << "kind " << static_cast<int>(operation) << ", number " << n;
        }
        ForgetFailures();
    }
    EXPECT_EQ(CountHandles(HandleKind::Context), contexts);
    EXPECT_EQ(CountHandles(HandleKind::Bitmap), bitmaps);
    EXPECT_EQ(CountHandles(HandleKind::Window), 0);
}

// A forked child has the display thread's record but not the thread, and nobody who would answer.
TEST(Window, AForkedChildIsRefusedInsteadOfWaitingForEver) {
    const HWND window = OpenWindow("parent", 8, 8);
    ASSERT_NE(window, 0u);
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        const bool isRefused = OpenWindow("child", 8, 8) == 0;
        DestroyWindow(window);
        _exit(isRefused ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(IsWindow(window), 1);
    DestroyWindow(window);
}

TEST(MessageBox, ReturnsAtOnceWithoutADisplayAndIsRemembered) {
    const uint32_t count = LastMessageBox().count;
    EXPECT_EQ(MessageBoxA(77, "Version 3.0\nline", "\xA0text\xA0", MB_OK | MB_ICONINFORMATION), IDOK);
    const MessageBoxRecord box = LastMessageBox();
    EXPECT_EQ(box.count, count + 1);
    EXPECT_EQ(box.owner, 77u);
    EXPECT_EQ(box.type, 64u);
    EXPECT_EQ(box.caption, "\xC2\xA0text\xC2\xA0");
    EXPECT_EQ(box.text, "Version 3.0\nline");
    EXPECT_EQ(MessageBoxA(0, nullptr, nullptr, MB_OK), IDOK);
    EXPECT_EQ(LastMessageBox().caption, "Error");
    EXPECT_EQ(LastMessageBox().text, "");
    const std::string endless(1 << 20, 'x');
    EXPECT_EQ(MessageBoxA(0, endless.c_str(), endless.c_str(), ~0u), IDOK);
    EXPECT_EQ(LastMessageBox().text.size(), 65536u);
}

std::string DriverInUse() {
    std::string driver;
    RunOnDisplayThread([&] { driver = SDL_GetCurrentVideoDriver(); });
    return driver;
}

// Each in a process of its own, where the display thread has not been started yet.
TEST(DISABLED_Fresh, TheThreadStartsWithTheFirstWindowAndMayBeRefused) {
    const HDC screen = GetDC(0);
    EXPECT_EQ(GetDeviceCaps(screen, LOGPIXELSX), 96);
    EXPECT_EQ(IsWindow(3) + DestroyWindow(3), 0);
    EXPECT_FALSE(IsDisplayThreadRunning());
    FailOnce(Operation::Thread, 1);
    EXPECT_EQ(OpenWindow("refused", 8, 8), 0u);
    EXPECT_FALSE(IsDisplayThreadRunning());
    EXPECT_EQ(CountHandles(HandleKind::Window), 0);
    EXPECT_NE(OpenWindow("granted", 8, 8), 0u);
    EXPECT_EQ(DriverInUse(), "dummy");
    struct sigaction action {};
    for (const int signal : {SIGINT, SIGTERM}) {
        sigaction(signal, nullptr, &action);
        EXPECT_EQ(action.sa_handler, SIG_DFL) << "the program's signals stay its own";
    }
}

// Destroys the window after the display thread has come to rest.
struct LateOwner {
    HWND window = 0;
    ~LateOwner() {
        if (window != 0 && DestroyWindow(window) != 1) _exit(9);
        if (window != 0 && MessageBoxA(0, "late", "late", MB_OK) != IDOK) _exit(8);
    }
} lateOwner;

TEST(DISABLED_Fresh, ExitsWithWindowsOpen) {
    lateOwner.window = OpenWindow("late", 64, 64);
    const HWND window = OpenWindow("left open", 64, 64);
    for (int i = 0; i < 64; ++i) SetPixel(GetDC(window), i, i, 0xFFFFFF);
    EXPECT_EQ(IsWindow(window), 1);
}

// At the exit a task is still running: whoever frees what it may look at asks before.
TEST(DISABLED_Fresh, ExitsAfterTheLastTask) {
    enum { Running, Exiting, Ended };
    static std::atomic<int> state{Running}, busy{false};
    std::thread([] {
        RunOnDisplayThread([] {
            busy = true;
            const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
            while (state == Running || std::chrono::steady_clock::now() < end) std::this_thread::yield();
            state = Ended;
        });
    }).detach();
    ASSERT_TRUE(BecomesTrue([] { return busy == 1; }));
    std::thread([] {
        BecomesTrue([] { return !IsDisplayThreadRunning(); });
        if (state != Ended || RunOnDisplayThread([] {})) _exit(7);
    }).detach();
    std::atexit([] { state = Exiting; });
}

TEST(Process, StartsWithAnyDisplayAndExitsWhileWindowsAreOpen) {
    const std::string start = "DISABLED_Fresh.TheThread*";
    EXPECT_EQ(test::RunSelf(start), 0);
    EXPECT_EQ(test::RunSelf(start, {"DISPLAY=:64999"}), 0) << "a server that is gone";
    EXPECT_EQ(test::RunSelf(start, {"SDL_VIDEODRIVER=nonsense"}), 0);
    EXPECT_EQ(test::RunSelf("DISABLED_Fresh.ExitsAfter*"), 0);
    for (int run = 0; run < 20; ++run)
        ASSERT_EQ(test::RunSelf("DISABLED_Fresh.ExitsWith*"), 0) << "run " << run;
}

}  // namespace
}  // namespace fenlight::platform
