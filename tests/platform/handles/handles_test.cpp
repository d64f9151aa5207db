// SPDX-License-Identifier: Zlib
// Every function of the platform layer that takes a handle, given handles that are not what it wants, and
// given handles that another thread ends at that moment.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using platform::CountHandles;
using platform::HandleKind;
using platform::KindOfHandle;

struct Call {
    std::string name;
    std::vector<HandleKind> wants;
    bool takesZero;
    std::function<bool(uintptr_t)> isRefused;  // calls the function; true for its failure value
};

constexpr RECT kSquare{0, 0, 2, 2};

struct Pixels {
    BITMAPINFO info{{sizeof(BITMAPINFOHEADER), 2, 2, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
    std::array<uint8_t, 16> bits{};
};

// Drawing on a context, and reading of it; `good` is another context.
std::vector<Call> ContextCalls(HDC good, HBITMAP bitmap, HBRUSH brush) {
    std::vector<Call> calls;
    const auto add = [&](const char *name, auto call, bool takesZero = false) {
        calls.push_back({name, {HandleKind::Context}, takesZero, call});
    };
    add("SetBkColor", [](HDC h) { return SetBkColor(h, 1) == CLR_INVALID; });
    add("SetTextColor", [](HDC h) { return SetTextColor(h, 1) == CLR_INVALID; });
    add("SetStretchBltMode", [](HDC h) { return SetStretchBltMode(h, COLORONCOLOR) == 0; });
    add("GetDeviceCaps", [](HDC h) { return GetDeviceCaps(h, LOGPIXELSX) == 0; });
    add("GetPixel", [](HDC h) { return GetPixel(h, 0, 0) == CLR_INVALID; });
    add("SetPixel", [](HDC h) { return SetPixel(h, 0, 0, 1) == CLR_INVALID; });
    add("FillRect", [=](HDC h) { return FillRect(h, &kSquare, brush) == 0; });
    add("MoveToEx", [](HDC h) { return MoveToEx(h, 1, 1, nullptr) == 0; });
    add("LineTo", [](HDC h) { return LineTo(h, 2, 2) == 0; });
    add("PolyBezier", [](HDC h) {
        const POINT points[4] = {{0, 0}, {1, 1}, {2, 1}, {3, 3}};
        return PolyBezier(h, points, 4) == 0;
    });
    add("BitBlt to", [=](HDC h) { return BitBlt(h, 0, 0, 2, 2, good, 0, 0, SRCINVERT) == 0; });
    add("BitBlt from", [=](HDC h) { return BitBlt(good, 0, 0, 2, 2, h, 0, 0, SRCCOPY) == 0; });
    add("BitBlt alone", [](HDC h) { return BitBlt(h, 0, 0, 2, 2, 0, 0, 0, DSTINVERT) == 0; });
    add("StretchBlt to", [=](HDC h) { return StretchBlt(h, 0, 0, 2, 2, good, 0, 0, 1, 1, SRCCOPY) == 0; });
    add("StretchBlt from", [=](HDC h) { return StretchBlt(good, 0, 0, 1, 1, h, 0, 0, 2, 2, SRCCOPY) == 0; });
    add("TransparentBlt to", [=](HDC h) { return TransparentBlt(h, 0, 0, 2, 2, good, 0, 0, 2, 2, 7) == 0; });
    add("TransparentBlt from",
        [=](HDC h) { return TransparentBlt(good, 0, 0, 2, 2, h, 0, 0, 2, 2, 7) == 0; });
    add("CopyRectangles to", [=](HDC h) { return CopyRectangles(h, good, &kSquare, 1) == 0; });
    add("CopyRectangles from", [=](HDC h) { return CopyRectangles(good, h, &kSquare, 1) == 0; });
    add("GetDIBits by", [=](HDC h) {
        Pixels pixels;
        return GetDIBits(h, bitmap, 0, 2, pixels.bits.data(), &pixels.info, DIB_RGB_COLORS) == 0;
    });
    add("SetDIBitsToDevice", [](HDC h) {
        const Pixels pixels;
        return SetDIBitsToDevice(h, 0, 0, 2, 2, 0, 0, 0, 2, pixels.bits.data(), &pixels.info, 0) == 0;
    });
    add("CreateCompatibleBitmap", [](HDC h) { return DeleteObject(CreateCompatibleBitmap(h, 2, 2)) == 0; });
    add(
        "CreateCompatibleDC", [](HDC h) { return DeleteDC(CreateCompatibleDC(h)) == 0; }, true);
    add(
        "CreateDIBSection",
        [](HDC h) {
            const Pixels pixels;
            return DeleteObject(CreateDIBSection(h, &pixels.info, 0, nullptr, 0, 0)) == 0;
        },
        true);
    add("SelectObject into", [=](HDC h) { return SelectObject(h, brush) == 0; });
    add("DeleteDC", [](HDC h) { return DeleteDC(h) == 0; });
    return calls;
}

std::vector<Call> ObjectCalls(HDC good) {
    const auto reads = [=](HBITMAP h) {
        Pixels pixels;
        return GetDIBits(good, h, 0, 2, pixels.bits.data(), &pixels.info, DIB_RGB_COLORS) == 0;
    };
    const auto fills = [=](HBRUSH h) { return FillRect(good, &kSquare, h) == 0; };
    const auto selects = [=](HGDIOBJ h) { return SelectObject(good, h) == 0; };
    const std::vector<HandleKind> objects{HandleKind::Bitmap, HandleKind::Pen, HandleKind::Brush};
    return {{"GetDIBits of", {HandleKind::Bitmap}, false, reads},
            {"FillRect with", {HandleKind::Brush}, false, fills},
            {"SelectObject of", objects, false, selects},
            {"DeleteObject", objects, false, [](HGDIOBJ h) { return DeleteObject(h) == 0; }}};
}

std::vector<Call> WindowCalls(HWND good, HDC context) {
    std::vector<Call> calls;
    const auto add = [&](const char *name, auto call, bool takesZero = false) {
        calls.push_back({name, {HandleKind::Window}, takesZero, call});
    };
    add("IsWindow", [](HWND h) { return IsWindow(h) == 0; });
    add(
        "GetDC", [](HWND h) { return GetDC(h) == 0; }, true);
    add("ReleaseDC", [=](HWND h) { return ReleaseDC(h, context) == 0; });
    add("DestroyWindow", [](HWND h) { return DestroyWindow(h) == 0; });
    // Any number is no owner, and the box is answered at once.
    add("MessageBoxA", [](HWND h) { return MessageBoxA(h, "text", nullptr, MB_OK) == IDOK; });
    calls.push_back(
        {"ReleaseDC of", {HandleKind::Context}, false, [=](HDC h) { return ReleaseDC(good, h) == 0; }});
    return calls;
}

// Of the functions that tell the reason: refused, and by ERROR_INVALID_HANDLE.
template <class Function>
auto Tells(Function isRefused) {
    return [=](HANDLE h) {
        SetLastError(ERROR_SUCCESS);
        return isRefused(h) && GetLastError() == ERROR_INVALID_HANDLE;
    };
}

std::vector<Call> SystemCalls() {
    using Kinds = std::vector<HandleKind>;
    std::vector<Call> calls;
    const auto add = [&](const char *name, const Kinds &wants, auto call) {
        calls.push_back({name, wants, false, Tells(call)});
    };
    const Kinds thread{HandleKind::Thread}, file{HandleKind::File}, resource{HandleKind::Resource};
    const Kinds waitable{HandleKind::Thread, HandleKind::Semaphore};
    const Kinds closable{HandleKind::Thread, HandleKind::Semaphore, HandleKind::File};
    add("SuspendThread", thread, [](HANDLE h) { return SuspendThread(h) == 0xFFFFFFFFu; });
    add("ResumeThread", thread, [](HANDLE h) { return ResumeThread(h) == 0xFFFFFFFFu; });
    add("GetExitCodeThread", thread, [](HANDLE h) {
        DWORD code = 4;
        return GetExitCodeThread(h, &code) == 0 && code == 4;
    });
    add("WaitForSingleObject", waitable, [](HANDLE h) { return WaitForSingleObject(h, 0) == WAIT_FAILED; });
    add("ReleaseSemaphore", {HandleKind::Semaphore}, [](HANDLE h) {
        LONG previous = 5;
        return ReleaseSemaphore(h, 1, &previous) == 0 && previous == 5;
    });
    add("CloseHandle", closable, [](HANDLE h) { return CloseHandle(h) == 0; });
    add("ReadFile", file, [](HANDLE h) {
        char byte = 'x';
        DWORD count = 1;
        return ReadFile(h, &byte, 1, &count, nullptr) == 0 && byte == 'x' && count == 0;
    });
    add("WriteFile", file, [](HANDLE h) {
        DWORD count = 1;
        return WriteFile(h, "y", 1, &count, nullptr) == 0 && count == 0;
    });
    add("SetFilePointer", file,
        [](HANDLE h) { return SetFilePointer(h, 1, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER; });
    add("GetFileSize", file, [](HANDLE h) { return GetFileSize(h, nullptr) == INVALID_FILE_SIZE; });
    add("LoadResource", resource, [](HANDLE h) { return LoadResource(0, h) == 0; });
    add("LockResource", resource, [](HANDLE h) { return LockResource(h) == nullptr; });
    add("SizeofResource", resource, [](HANDLE h) { return SizeofResource(0, h) == 0; });
    calls.push_back({"FindResourceA", {}, false, [](HMODULE h) { return FindResourceA(h, "a", "b") == 0; }});
    calls.push_back({"LoadBitmapA", {}, false, [](HMODULE h) { return LoadBitmapA(h, "a") == 0; }});
    return calls;
}

DWORD EndAtOnce(void *) { return 0; }

struct Maker {
    HandleKind kind;
    uintptr_t (*make)();
};
constexpr Maker kMakers[] = {
    {HandleKind::Context, [] { return CreateCompatibleDC(0); }},
    {HandleKind::Bitmap, [] { return CreateBitmap(3, 3, 1, 32, nullptr); }},
    {HandleKind::Pen, [] { return CreatePen(PS_SOLID, 1, 0); }},
    {HandleKind::Brush, [] { return CreateSolidBrush(0); }},
    {HandleKind::Window, [] { return OpenWindow("", 4, 4); }},
    {HandleKind::Thread, [] { return CreateThread(nullptr, 0, EndAtOnce, nullptr, 0, nullptr); }},
    {HandleKind::Semaphore, [] { return CreateSemaphoreA(nullptr, 1, 1, nullptr); }},
    {HandleKind::File,
     [] { return CreateFileA("/proc/self/exe", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0); }},
};

// Ends what any kind of handle names, also a thread that others go on stopping.
void End(uintptr_t handle) {
    while (WaitForSingleObject(handle, 1) == WAIT_TIMEOUT && KindOfHandle(handle) == HandleKind::Thread)
        ResumeThread(handle);
    (void)(DeleteDC(handle) || DeleteObject(handle) || DestroyWindow(handle) || CloseHandle(handle));
}

std::array<int, std::size(kMakers)> CountAll() {
    std::array<int, std::size(kMakers)> counts{};
    for (size_t i = 0; i < counts.size(); ++i) counts[i] = CountHandles(kMakers[i].kind);
    return counts;
}

class Handles : public testing::Test {
  protected:
    Handles() {
        SelectObject(good, bitmap);
        for (const auto &some : {ContextCalls(good, bitmap, brush), ObjectCalls(good),
                                 WindowCalls(window, GetDC(window)), SystemCalls()})
            calls.insert(calls.end(), some.begin(), some.end());
    }
    ~Handles() override {
        for (const uintptr_t handle : {window, good, bitmap, brush}) End(handle);
    }

    const HDC good = CreateCompatibleDC(GetDC(0));
    const HBITMAP bitmap = CreateCompatibleBitmap(GetDC(0), 4, 4);
    const HBRUSH brush = CreateSolidBrush(0x123456);
    const HWND window = OpenWindow("good", 4, 4);
    std::vector<Call> calls;
};

TEST_F(Handles, ThatAreDeadForeignZeroOrRandomAreRefusedByEveryFunction) {
    std::vector<uintptr_t> wrong{0, 1, 2, 3, 0x7FFFFFFF, UINTPTR_MAX, reinterpret_cast<uintptr_t>(this)};
    std::vector<uintptr_t> alive;
    for (const auto &[kind, make] : kMakers) {
        alive.push_back(make());
        const uintptr_t dead = make();
        ASSERT_TRUE(KindOfHandle(alive.back()) == kind && KindOfHandle(dead) == kind);
        End(dead);
        wrong.insert(wrong.end(), {alive.back(), dead, alive.back() | uintptr_t{1} << 40, alive.back() - 1});
        // The same place in the table under other generations.
        for (uintptr_t i = 1; i < 20; ++i) wrong.push_back((dead + (i << 17)) & 0x7FFFFFFF);
    }
    std::mt19937_64 random(20240611);
    for (int i = 0; i < 300; ++i) wrong.push_back(random() >> (i % 48) | uintptr_t{1} << 33);
    const auto before = CountAll();
    for (const Call &call : calls) {
        for (const uintptr_t handle : wrong) {
            const bool isWanted = std::ranges::count(call.wants, KindOfHandle(handle)) != 0;
            if (isWanted || (handle == 0 && call.takesZero)) continue;
            EXPECT_TRUE(call.isRefused(handle)) << call.name << " took " << std::hex << handle;
        }
    }
    EXPECT_EQ(CountAll(), before) << "nothing came and nothing went";
    for (const uintptr_t handle : alive) End(handle);
    for (int32_t i = 0; i < 16; ++i) EXPECT_EQ(GetPixel(good, i % 4, i / 4), 0u) << i;
}

// One thread makes and ends objects of all kinds all the time, two call every function with them, and draw
// from one such context into another with such a bitmap and pen. What counts is that nothing crashes, hangs,
// races or leaks.
TEST_F(Handles, ThatAnotherThreadEndsBreakNothing) {
    const auto before = CountAll();
    const HPEN pen = CreatePen(PS_SOLID, 1, 0);
    const HGDIOBJ oldPen = SelectObject(good, pen);
    std::array<std::atomic<uintptr_t>, 2 * std::size(kMakers)> shared{};
    std::atomic<bool> isOver{false};
    std::atomic<int> transfers{0};
    std::vector<uintptr_t> leftOver;  // what was selected into a context when it was to end
    const auto churn = [&] {
        std::mt19937 random(5);
        for (int made = 0; made < 12000 || transfers < 5000; ++made) {
            const size_t place = random() % shared.size();
            const uintptr_t old = shared[place].exchange(kMakers[place / 2].make());
            End(old);
            if (KindOfHandle(old) != HandleKind::None) leftOver.push_back(old);
        }
        isOver = true;
    };
    const auto draw = [&](std::mt19937 &random) {
        const auto pick = [&](size_t kind) { return shared[2 * kind + random() % 2].load(); };
        const HDC one = pick(0), other = pick(0);
        SelectObject(one, pick(1));
        SelectObject(one, pick(2));
        SetPixel(one, 2, 2, GetPixel(other, 1, 1));
        transfers += BitBlt(one, 1, 0, 3, 3, other, 0, 0, SRCINVERT);
        TransparentBlt(one, 0, 0, 2, 2, other, 1, 1, 2, 2, 0);
        LineTo(one, 3, 2);
        Pixels pixels;
        GetDIBits(one, pick(1), 0, 2, pixels.bits.data(), &pixels.info, DIB_RGB_COLORS);
        SetDIBitsToDevice(other, 0, 0, 2, 2, 0, 0, 0, 2, pixels.bits.data(), &pixels.info, 0);
        platform::SurfaceAccess(one).SetPixel(1, 1, 1);
    };
    const auto use = [&](uint32_t seed) {
        std::mt19937 random(seed);
        while (!isOver) {
            for (int i = 0; i < 20; ++i) draw(random);
            for (const Call &call : calls) {
                const uintptr_t handle = shared[random() % shared.size()];
                const bool isWanted = std::ranges::count(call.wants, KindOfHandle(handle)) != 0;
                // A stopped thread whose handle is closed could not be ended any more.
                if (call.name == "CloseHandle" && isWanted && KindOfHandle(handle) == HandleKind::Thread)
                    continue;
                (void)call.isRefused(handle);
            }
        }
    };
    std::thread maker(churn), one(use, 1), other(use, 2);
    for (std::thread *thread : {&maker, &one, &other}) thread->join();
    for (const uintptr_t object : {oldPen, uintptr_t{bitmap}, uintptr_t{brush}}) SelectObject(good, object);
    DeleteObject(pen);
    // Contexts first: what they have selected cannot end before them.
    leftOver.insert(leftOver.end(), shared.begin(), shared.end());
    for (const uintptr_t handle : leftOver) DeleteDC(handle);
    for (const uintptr_t handle : leftOver) End(handle);
    EXPECT_EQ(CountAll(), before);
}

}  // namespace
}  // namespace fenlight::test
