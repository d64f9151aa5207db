// SPDX-License-Identifier: Zlib
#include "fenlight/painting.h"

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "platform/graphics/canvas.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

constexpr int kWidth = 40, kHeight = 30;

// Pixels 1, 2, 3, 1, the key 3: on the way to two colours the source's background becomes white.
TEST(PaintImage, TakesTheBackgroundOfTheSourceToTwoColours) {
    const Canvas source(4, 1), target(CreateBitmap(4, 1, 1, 1, nullptr));
    for (int x = 0; x < 4; ++x) {
        SetPixel(source.context, x, 0, static_cast<COLORREF>(x % 3 + 1));
        SetPixel(target.context, x, 0, 0xFFFFFF);
    }
    SetBkColor(target.context, 1);
    SetBkColor(source.context, 2);
    EXPECT_NE(PaintImage(target.context, 0, 0, 3, 1, source.context, 0, 0, -1), 0);
    Picture expected(4, 1, 0xFFFFFF);
    expected.At(0, 0) = 0;
    EXPECT_TRUE(SamePicture("mono", PictureOf(target.context, 4, 1), expected));
    EXPECT_EQ(SetBkColor(source.context, 0), 2u);
}

// A strip of two frames of 3 x 2 pixels, whose keys are 7 and 8, on a ground of zeros.
TEST(PaintImage, TakesTheKeyFromTheTopRightOfTheRectangle) {
    const std::string pixels = "287738787878";
    const Canvas strip(6, 2);
    for (int i = 0; i < 12; ++i)
        SetPixel(strip.context, i % 6, i / 6, static_cast<COLORREF>(pixels[static_cast<size_t>(i)] - '0'));
    const auto paint = [&](int32_t x, int32_t y, int32_t width, int32_t height, int32_t sourceX,
                           int32_t sourceY, int32_t mode = -1) {
        const Canvas target(6, 2);
        EXPECT_NE(PaintImage(target.context, x, y, width, height, strip.context, sourceX, sourceY, mode), 0);
        std::string shown;
        for (int i = 0; i < 12; ++i) shown += std::to_string(GetPixel(target.context, i % 6, i / 6));
        return shown;
    };
    EXPECT_EQ(paint(0, 0, 3, 2, 0, 0), "280000080000");
    EXPECT_EQ(paint(1, 0, 3, 2, 3, 0), "073000007000");
    EXPECT_EQ(paint(0, 0, 6, 1, 0, 1), "707070000000");
    // The source ends earlier: the key lies outside, so there is none.
    EXPECT_EQ(paint(0, 0, 4, 2, 4, 0), "380000780000");
    EXPECT_EQ(paint(0, 0, 2, 2, 1, -1), "000000870000");
    // It begins later: the key lies inside.
    EXPECT_EQ(paint(0, 0, 4, 2, -1, 0), "028000008000");
    for (const int32_t size : {0, -3}) {
        EXPECT_EQ(paint(4, 1, size, 2, 4, 0), "000000000000");
        EXPECT_EQ(paint(3, 1, 2, size, 4, 1), "000000000000");
    }
    EXPECT_EQ(paint(0, 0, INT_MAX, INT_MAX, INT_MAX, 0), "000000000000");
    // Modes, whose table is judged with the images, and raster codes know no key.
    for (const int32_t mode : {0, 2, static_cast<int32_t>(SRCCOPY), static_cast<int32_t>(SRCPAINT)})
        EXPECT_EQ(paint(1, 0, 3, 2, 3, 0, mode), "073800087800") << mode;
    for (const int32_t mode : {1, 13, static_cast<int32_t>(SRCAND)})
        EXPECT_EQ(paint(1, 0, 3, 2, 3, 0, mode), "000000000000") << mode;
}

TEST(PaintImage, TellsOfDeadContexts) {
    const Canvas canvas(8, 8);
    for (const int32_t mode : {-1, 3}) {
        EXPECT_EQ(PaintImage(canvas.bitmap, 0, 0, 4, 4, canvas.context, 0, 0, mode), 0);
        EXPECT_EQ(PaintImage(canvas.context, 0, 0, 4, 4, 0, 0, 0, mode), 0);
    }
    EXPECT_NE(PaintImage(canvas.context, 0, 0, 8, 8, 0, 0, 0, 14), 0);  // white needs no source
    EXPECT_TRUE(SamePicture("white", PictureOf(canvas.context, 8, 8), Picture(8, 8, 0xFFFFFF)));
}

struct Border {
    int32_t left, top, right, bottom, thickness;
};

// Every line of the border, pixel by pixel, each without its end: red, then green.
Picture ModelFrame(const Border &border) {
    Picture picture(kWidth, kHeight);
    const auto line = [&](int x, int y, int toX, int toY, uint32_t colour) {
        for (; x != toX || y != toY; x += (toX > x) - (toX < x), y += (toY > y) - (toY < y))
            if (x >= 0 && y >= 0 && x < kWidth && y < kHeight) picture.At(x, y) = colour;
    };
    Border b = border;
    for (int i = 0; i < border.thickness; ++i, --b.left, --b.top, ++b.right, ++b.bottom) {
        line(b.left, b.top, b.right, b.top, 0xFF0000);
        line(b.left, b.top, b.left, b.bottom, 0xFF0000);
    }
    b = border;
    for (int i = 0; i < border.thickness; ++i, --b.left, --b.top, ++b.right, ++b.bottom) {
        line(b.left, b.bottom, b.right, b.bottom, 0x00FF00);
        line(b.right, b.top, b.right, b.bottom + 1, 0x00FF00);
    }
    return picture;
}

// Drawn with another pen selected, which must be the selected one again.
Picture DrawnFrame(const Border &b) {
    const Canvas canvas(kWidth, kHeight);
    const HPEN pen = CreatePen(PS_SOLID, 1, 0xABCDEF);
    const HGDIOBJ before = SelectObject(canvas.context, pen);
    Frame(canvas.context, 0x0000FF, 0x00FF00, b.left, b.top, b.right, b.bottom, b.thickness);
    EXPECT_EQ(SelectObject(canvas.context, before), pen);
    DeleteObject(pen);
    return PictureOf(canvas.context, kWidth, kHeight);
}

TEST(Frame, LiesOnTheRectangleAndOutsideOfIt) {
    std::mt19937 random(3);
    std::vector<Border> borders{{10, 10, 20, 20, 1}, {10, 8, 30, 20, 5}, {-3, -3, 50, 40, 9}, {5, 5, 5, 5, 3},
                                {5, 5, 9, 9, 0},     {5, 5, 9, 9, -4},   {20, 20, 9, 9, 12}};
    const auto number = [&] { return static_cast<int32_t>(random() % 80) - 20; };
    for (int i = 0; i < 100; ++i) borders.push_back({number(), number(), number(), number(), number() + 21});
    for (const Border &b : borders)
        EXPECT_TRUE(SamePicture("frame", DrawnFrame(b), ModelFrame(b)))
            << b.left << ", " << b.top << ", " << b.right << ", " << b.bottom << ", thickness "
            << b.thickness;
    // Thicker than the surface is all the same, and as quick.
    EXPECT_TRUE(SamePicture("thick", DrawnFrame({10, 8, 30, 20, INT_MAX}), ModelFrame({10, 8, 30, 20, 99})));
    EXPECT_TRUE(SamePicture("far", DrawnFrame({INT_MIN, INT_MIN, INT_MAX, INT_MAX, INT_MAX}),
                            Picture(kWidth, kHeight)));
}

TEST(Frame, LeavesNoPenBehindWhereItCannotDraw) {
    using namespace platform;
    const Canvas canvas(kWidth, kHeight);
    const int pens = CountHandles(HandleKind::Pen);
    FailFrom(Operation::Memory, 1);
    Frame(canvas.context, 0xFF, 0xFF, 5, 5, 9, 9, 2);
    EXPECT_TRUE(SamePicture("no pen", PictureOf(canvas.context, kWidth, kHeight), Picture(kWidth, kHeight)));
    FailOnce(Operation::Memory, 2);
    Frame(canvas.context, 0xFF, 0xFF, 5, 5, 9, 9, 2);
    ForgetFailures();
    EXPECT_EQ(GetPixel(canvas.context, 5, 5), 0xFFu);
    EXPECT_EQ(GetPixel(canvas.context, 9, 9), 0u);
    Frame(0, 0xFF, 0xFF, 5, 5, 9, 9, 2);
    EXPECT_EQ(CountHandles(HandleKind::Pen), pens);
}

TEST(Curve, IsACubicThatTheMiddlePointPullsTwice) {
    const Canvas canvas(kWidth, kHeight), straight(kWidth, kHeight);
    const HPEN pen = CreatePen(PS_SOLID, 1, 0xFFFFFF);
    const HGDIOBJ before = SelectObject(canvas.context, pen);
    SelectObject(straight.context, pen);
    EXPECT_EQ(Curve(canvas.context, 0, 28, 16, -4, 32, 28), 0);
    const Picture drawn = PictureOf(canvas.context, kWidth, kHeight);
    // (P + 6 M + Q) / 8 half of the way, where it turns; (27 P + 36 M + Q) / 64 = (9.5, 10) after a quarter.
    EXPECT_TRUE(drawn.At(16, 4) != 0 && (drawn.At(9, 10) | drawn.At(10, 10)) != 0);
    EXPECT_TRUE(drawn.At(0, 28) != 0 && drawn.At(32, 28) == 0);
    for (int x = 0; x < 32; ++x) {
        int count = 0;
        for (int y = 0; y < kHeight; ++y) count += drawn.At(x, y) != 0;
        EXPECT_TRUE(count > 0 && drawn.At(x, 3) == 0) << x;
    }
    // Three points on a line are that line.
    Curve(straight.context, 2, 26, 9, 19, 27, 1);
    Picture line(kWidth, kHeight);
    for (int x = 2; x < 27; ++x) line.At(x, 28 - x) = 0xFFFFFF;
    EXPECT_TRUE(SamePicture("straight", PictureOf(straight.context, kWidth, kHeight), line));
    EXPECT_EQ(Curve(0, 1, 2, 3, 4, 5, 6), 0);
    for (const Canvas *one : {&canvas, &straight}) SelectObject(one->context, before);
    DeleteObject(pen);
}

}  // namespace
}  // namespace fenlight::test
