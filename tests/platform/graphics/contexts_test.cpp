// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "canvas.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using platform::CountHandles;
using platform::HandleKind;
using platform::ScreenContext;

int CountObjects() {
    return CountHandles(HandleKind::Context) + CountHandles(HandleKind::Bitmap) +
           CountHandles(HandleKind::Pen) + CountHandles(HandleKind::Brush);
}

TEST(Contexts, HoldABitmapUntilItIsReplacedOrTheyEnd) {
    const int objects = CountObjects();
    const HDC one = CreateCompatibleDC(0);
    const HDC other = CreateCompatibleDC(one);
    const HBITMAP bitmap = CreateCompatibleBitmap(ScreenContext(), 3, 2);
    const HGDIOBJ first = SelectObject(one, bitmap);
    EXPECT_NE(first, 0u);
    EXPECT_EQ(SelectObject(one, bitmap), bitmap) << "selected once more where it is";
    EXPECT_EQ(SelectObject(other, bitmap), 0u) << "in one context at a time";
    EXPECT_EQ(DeleteObject(bitmap), 0) << "while it is selected";
    EXPECT_EQ(SetPixel(one, 2, 1, 0x123456), 0x123456u);
    EXPECT_EQ(SelectObject(one, first), bitmap);
    EXPECT_EQ(GetPixel(one, 2, 1), CLR_INVALID) << "the default bitmap is one pixel";
    EXPECT_EQ(GetPixel(one, 0, 0), 0u);
    EXPECT_EQ(SelectObject(other, bitmap), first);
    EXPECT_EQ(GetPixel(other, 2, 1), 0x123456u);
    EXPECT_EQ(DeleteDC(other) + DeleteDC(one), 2);
    EXPECT_EQ(DeleteObject(bitmap), 1) << "released by the end of its context";
    EXPECT_EQ(DeleteObject(bitmap), 0);
    EXPECT_EQ(DeleteObject(first), 1) << "harmless";
    EXPECT_EQ(CountObjects(), objects);
}

TEST(Contexts, KeepTheirToolsAndColours) {
    const Canvas canvas(4, 4);
    const HDC context = canvas.context;
    const HPEN pen = CreatePen(PS_SOLID, 1, 0x0000FF);
    const HBRUSH brush = CreateSolidBrush(0x00FF00);
    const HGDIOBJ oldPen = SelectObject(context, pen);
    const HGDIOBJ oldBrush = SelectObject(context, brush);
    EXPECT_TRUE(oldPen != 0 && oldBrush != 0 && oldPen != oldBrush);
    EXPECT_EQ(DeleteObject(pen) + DeleteObject(brush), 0) << "selected tools stay";
    MoveToEx(context, 0, 0, nullptr);
    LineTo(context, 1, 0);
    BitBlt(context, 1, 0, 1, 1, 0, 0, 0, PATCOPY);
    EXPECT_EQ(GetPixel(context, 0, 0), 0x0000FFu);
    EXPECT_EQ(GetPixel(context, 1, 0), 0x00FF00u);
    EXPECT_EQ(SelectObject(context, oldPen), pen);
    EXPECT_EQ(SelectObject(context, oldBrush), brush);
    EXPECT_EQ(DeleteObject(pen) + DeleteObject(brush), 2);
    BitBlt(context, 0, 0, 4, 4, 0, 0, 0, PATCOPY);
    LineTo(context, 1, 1);
    EXPECT_EQ(GetPixel(context, 3, 3), 0xFFFFFFu) << "the default brush is white";
    EXPECT_EQ(GetPixel(context, 1, 0), 0u) << "the default pen is black";

    EXPECT_EQ(SetBkColor(context, 0x99ABCDEF), 0xFFFFFFu);
    EXPECT_EQ(SetBkColor(context, 1), 0xABCDEFu);
    EXPECT_EQ(SetTextColor(context, 7), 0u);
    EXPECT_EQ(SetTextColor(context, 7), 7u);
    EXPECT_EQ(SetStretchBltMode(context, COLORONCOLOR), BLACKONWHITE);
    EXPECT_EQ(SetStretchBltMode(context, 99), 0);
    EXPECT_EQ(SetStretchBltMode(context, COLORONCOLOR), COLORONCOLOR);
    EXPECT_EQ(GetDeviceCaps(ScreenContext(), LOGPIXELSX) + GetDeviceCaps(context, LOGPIXELSY), 192);
    EXPECT_EQ(GetDeviceCaps(context, COLORRES) + GetDeviceCaps(context, 0), 24);
    EXPECT_EQ(CreatePen(1, 1, 0) | CreatePen(PS_SOLID, 2, 0), 0u);
}

TEST(Contexts, OfWindowsAndTheScreenKeepTheirPicture) {
    const HDC surface = platform::CreateSurfaceContext(5, 4);
    const HBITMAP bitmap = CreateCompatibleBitmap(surface, 5, 4);
    for (const HDC context : {surface, ScreenContext()}) {
        EXPECT_EQ(SelectObject(context, bitmap), 0u);
        EXPECT_EQ(DeleteDC(context), 0);
        EXPECT_EQ(SetPixel(context, 4, 3, 0xABCDEF), 0xABCDEFu);
        EXPECT_EQ(GetPixel(context, 4, 3), 0xABCDEFu);
    }
    EXPECT_EQ(GetPixel(surface, 5, 0), CLR_INVALID);
    EXPECT_TRUE(platform::DeleteSurfaceContext(surface));
    EXPECT_FALSE(platform::DeleteSurfaceContext(ScreenContext()));
    EXPECT_EQ(GetPixel(surface, 4, 3), CLR_INVALID);
    const HDC memory = CreateCompatibleDC(0);
    EXPECT_FALSE(platform::DeleteSurfaceContext(memory));
    EXPECT_EQ(DeleteDC(memory) + DeleteObject(bitmap), 2);
    EXPECT_EQ(platform::CreateSurfaceContext(0, 4) | platform::CreateSurfaceContext(1 << 15, 1 << 15), 0u);
}

TEST(Contexts, FailWithoutATraceWhenTheSystemRefuses) {
    const Canvas canvas(2, 2);
    DibHeader dib(2, 2, 8);
    const int objects = CountObjects();
    platform::FailFrom(platform::Operation::Context, 1);
    EXPECT_EQ(CreateCompatibleDC(0) | platform::CreateSurfaceContext(2, 2), 0u);
    platform::FailFrom(platform::Operation::Bitmap, 1);
    void *bits = &dib;
    EXPECT_EQ(CreateDIBSection(0, dib.Info(), DIB_RGB_COLORS, &bits, 0, 0), 0u);
    EXPECT_EQ(bits, nullptr);
    EXPECT_EQ(CreateCompatibleBitmap(canvas.context, 2, 2) | CreateBitmap(2, 2, 1, 1, nullptr), 0u);
    platform::FailFrom(platform::Operation::Memory, 1);
    EXPECT_EQ(CreatePen(PS_SOLID, 1, 0) | CreateSolidBrush(0), 0u);
    platform::ForgetFailures();
    EXPECT_EQ(CountObjects(), objects);
    // The table of handles is full: what does not get one is given back.
    std::vector<HBRUSH> brushes;
    while (const HBRUSH brush = CreateSolidBrush(0)) brushes.push_back(brush);
    EXPECT_EQ(CreateCompatibleDC(0) | CreateBitmap(1, 1, 1, 1, nullptr) | CreatePen(PS_SOLID, 1, 0), 0u);
    for (const HBRUSH brush : brushes) DeleteObject(brush);
    EXPECT_EQ(CountObjects(), objects);
}

TEST(SurfaceAccess, IsRefusedWithHandlesThatAreNoContext) {
    const Canvas canvas(1, 1);
    const HDC dead = CreateCompatibleDC(0);
    ASSERT_EQ(DeleteDC(dead), 1);
    for (const uintptr_t wrong : {uintptr_t{0}, uintptr_t{3}, dead, canvas.bitmap, UINTPTR_MAX}) {
        EXPECT_FALSE(platform::SurfaceAccess(wrong)) << wrong;
        EXPECT_FALSE(platform::DeleteSurfaceContext(wrong)) << wrong;
        EXPECT_EQ(platform::SurfaceChanges(wrong), 0u) << wrong;
    }
}

TEST(SurfaceAccess, ReadsWritesAndCountsChanges) {
    const HBITMAP colour = CreateCompatibleBitmap(ScreenContext(), 5, 3);
    const HBITMAP mono = CreateBitmap(5, 3, 1, 1, nullptr);
    for (const HBITMAP bitmap : {colour, mono}) {
        const Canvas canvas(bitmap);
        const uint32_t before = platform::SurfaceChanges(canvas.context);
        {
            platform::SurfaceAccess access(canvas.context);
            ASSERT_TRUE(access);
            EXPECT_EQ(access.GetPixel(4, 2), 0u);
            EXPECT_EQ(access.GetPixel(5, 2), CLR_INVALID);
            EXPECT_EQ(access.GetPixel(0, -1), CLR_INVALID);
        }
        EXPECT_EQ(platform::SurfaceChanges(canvas.context), before) << "reading is no change";
        {
            platform::SurfaceAccess access(canvas.context);
            for (const int32_t x : {-1, 3, 5}) access.SetPixel(x, 1, 0xFFFFFF);
        }
        const uint32_t after = platform::SurfaceChanges(canvas.context);
        EXPECT_NE(after, before);
        Picture expected(5, 3);
        expected.At(3, 1) = 0xFFFFFF;
        EXPECT_TRUE(SamePicture("surface_access", PictureOf(canvas.context, 5, 3), expected));
        EXPECT_EQ(platform::SurfaceChanges(canvas.context), after);
        BitBlt(canvas.context, 0, 0, 1, 1, 0, 0, 0, WHITENESS);
        EXPECT_NE(platform::SurfaceChanges(canvas.context), after);
    }
}

// Three threads fill one bitmap with whole colours and copy it; no copy may show two colours.
TEST(Transfers, AreNeverTorn) {
    constexpr int kSize = 64;
    const Canvas shared(kSize, kSize);
    std::atomic<int> torn{0};
    std::latch start(3);
    const auto work = [&](COLORREF colour) {
        const Canvas own(kSize, kSize);
        start.arrive_and_wait();
        const HBRUSH brush = CreateSolidBrush(colour);
        const RECT all{0, 0, kSize, kSize};
        for (int round = 0; round < 5000; ++round) {
            FillRect(shared.context, &all, brush);
            BitBlt(own.context, 0, 0, kSize, kSize, shared.context, 0, 0, SRCCOPY);
            const platform::SurfaceAccess access(own.context);
            for (int32_t i = 0; i < kSize; ++i)
                if (access.GetPixel(i, kSize - 1 - i) != access.GetPixel(0, 0)) torn.fetch_add(1);
        }
        DeleteObject(brush);
    };
    std::thread one(work, 0x0000FF), other(work, 0x00FF00);
    work(0xFF0000);
    one.join();
    other.join();
    EXPECT_EQ(torn.load(), 0);
}

// A thread that draws one large picture after another lets others have their turn in between.
TEST(Transfers, KeepNobodyOutOfABitmapForLong) {
    constexpr int kSize = 2048, kReads = 20, kMostTransfers = 20 * kReads;
    const Canvas busy(kSize, kSize), source(kSize, kSize);
    std::atomic<int> transfers{0};
    std::atomic<bool> isOver{false};
    std::thread painter([&] {
        while (!isOver.load()) {
            BitBlt(busy.context, 0, 0, kSize, kSize, source.context, 0, 0, SRCCOPY);
            ++transfers;
        }
    });
    int waited = 0;  // transfers that were done while a read waited
    for (int read = 0; read < kReads && waited < kMostTransfers; ++read) {
        for (const int last = transfers.load(); transfers.load() == last;) std::this_thread::yield();
        waited -= transfers.load();
        GetPixel(busy.context, 0, 0);
        waited += transfers.load();
    }
    EXPECT_LT(waited, kMostTransfers) << "one or two for each read are fair";
    isOver = true;
    painter.join();
}

// A thread that waits to draw must not draw on a bitmap that has left the context in the meantime.
TEST(Contexts, LeaveABitmapAloneOnceItIsReplaced) {
    constexpr int kSize = 128;
    const Canvas canvas(kSize, kSize);
    const HBITMAP other = CreateCompatibleBitmap(ScreenContext(), kSize, kSize);
    std::atomic<bool> isOver{false};
    const auto paint = [&](COLORREF colour) {
        const HBRUSH brush = CreateSolidBrush(colour);
        const RECT all{0, 0, kSize, kSize};
        while (!isOver.load()) FillRect(canvas.context, &all, brush);
        DeleteObject(brush);
    };
    std::thread one(paint, 0x0000FF), two(paint, 0xFF0000);
    const auto firstPixel = [&] {
        DibHeader dib(1, 1, 24);
        uint8_t pixel[4];
        GetDIBits(canvas.context, canvas.bitmap, 0, 1, pixel, dib.Info(), DIB_RGB_COLORS);
        return pixel[0] | pixel[2] << 16;
    };
    int changes = 0;
    for (int round = 0; round < 2000; ++round) {
        SelectObject(canvas.context, other);
        const int before = firstPixel();
        for (int look = 0; look < 60; ++look) changes += firstPixel() != before;
        SelectObject(canvas.context, canvas.bitmap);
    }
    isOver = true;
    one.join();
    two.join();
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(DeleteObject(other), 1);
}

}  // namespace
}  // namespace fenlight::test
