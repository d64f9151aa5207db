// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "canvas.h"
#include "fenlight/platform/system.h"
#include "platform/graphics/surface_access.h"

namespace fenlight::test {
namespace {

struct Loop {
    std::function<void()> operation;
    std::atomic<int> calls{0};
    std::atomic<bool> isOver{false};
};

DWORD RunLoop(void *parameter) {
    auto &loop = *static_cast<Loop *>(parameter);
    while (!loop.isOver.load()) {
        loop.operation();
        loop.calls.fetch_add(1);
    }
    return 0;
}

void WaitForCalls(const Loop &loop, int count) {
    while (loop.calls.load() < count) std::this_thread::yield();
}

// A thread that calls one operation over and over stops in it when it is suspended, and keeps no lock then.
TEST(Suspension, StopsAThreadInEveryOperationWithoutItsLocks) {
    const Canvas canvas(8, 8), other(8, 8);
    const HDC context = canvas.context;
    const RECT all{0, 0, 8, 8};
    const POINT points[4] = {{0, 0}, {3, 9}, {5, -3}, {7, 7}};
    const HBRUSH brush = CreateSolidBrush(3);
    const HGDIOBJ oldBrush = SelectObject(context, brush);
    DibHeader dib(8, 8, 24);
    uint8_t bits[24 * 8] = {};
    const platform::PixelView pixels{bits, 24, 8, 8, platform::PixelFormat::Bgr24, nullptr, 0};
    const std::function<void()> operations[] = {
        [] { DeleteDC(CreateCompatibleDC(0)); },
        [] { DeleteDC(0); },
        [=] { DeleteObject(CreateCompatibleBitmap(context, 2, 2)); },
        [] { CreateBitmap(0, 0, 2, 1, nullptr); },
        [&] { CreateDIBSection(0, dib.Info(), 1, nullptr, 0, 0); },
        [=] { SelectObject(context, brush); },
        [] { DeleteObject(0); },
        [=] { SetBkColor(context, 1); },
        [=] { SetTextColor(context, 1); },
        [=] { SetStretchBltMode(context, COLORONCOLOR); },
        [=] { GetDeviceCaps(context, LOGPIXELSX); },
        [=] { GetPixel(context, 1, 1); },
        [=] { SetPixel(context, 1, 1, 1); },
        [&] { FillRect(context, &all, brush); },
        [=] { MoveToEx(context, 1, 1, nullptr); },
        [=] { LineTo(context, 5, 7); },
        [&] { PolyBezier(context, points, 4); },
        [&] { BitBlt(context, 0, 0, 8, 8, other.context, 0, 0, SRCCOPY); },
        [&] { StretchBlt(context, 0, 0, 8, 8, other.context, 0, 0, 4, 4, SRCCOPY); },
        [&] { TransparentBlt(context, 0, 0, 8, 8, other.context, 0, 0, 8, 8, 1); },
        [&] { CopyRectangles(context, other.context, &all, 1); },
        [&] { GetDIBits(context, canvas.bitmap, 0, 8, bits, dib.Info(), 0); },
        [&] { SetDIBitsToDevice(context, 0, 0, 8, 8, 0, 0, 0, 8, bits, dib.Info(), 0); },
        [] { GdiFlush(); },
        [] { LoadBitmapA(0, "nobody"); },
        [=] { platform::SurfaceAccess(context).SetPixel(2, 2, 2); },
        [=] { platform::DrawPixels(context, 0, 0, pixels); },
        [=] { platform::FetchPixels(context, pixels); },
    };
    int number = 0;
    for (const auto &operation : operations) {
        Loop loop;
        loop.operation = operation;
        const HANDLE thread = CreateThread(nullptr, 0, RunLoop, &loop, 0, nullptr);
        ASSERT_NE(thread, 0u);
        WaitForCalls(loop, 3);
        EXPECT_EQ(SuspendThread(thread), 0u);
        const int calls = loop.calls.load();
        for (int i = 0; i < 3000; ++i) {
            BitBlt(context, 0, 0, 8, 8, other.context, 0, 0, SRCINVERT);
            std::this_thread::yield();  // a thread that was not stopped gets its turn
        }
        EXPECT_EQ(loop.calls.load(), calls) << "operation " << number;
        EXPECT_EQ(ResumeThread(thread), 1u);
        WaitForCalls(loop, calls + 3);
        loop.isOver = true;
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(thread);
        ++number;
    }
    SelectObject(context, oldBrush);
    EXPECT_EQ(DeleteObject(brush), 1);
}

}  // namespace
}  // namespace fenlight::test
