// SPDX-License-Identifier: Zlib
#include "fenlight/painting.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <random>
#include <vector>

#include "platform/graphics/canvas.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

constexpr int kWidth = 40, kHeight = 30;
constexpr std::array<COLORREF, 6> kColours{0x000000, 0xFFFFFF, 0x0000FF, 0x00FF00, 0x808080, 0x800000};

void FillAtRandom(HDC context, std::mt19937 &random) {
    for (int i = 0; i < kWidth * kHeight; ++i)
        SetPixel(context, i % kWidth, i / kWidth, kColours[random() % kColours.size()]);
}

HBITMAP MakeBitmap(UINT bits) {
    if (bits == 32) return CreateCompatibleBitmap(platform::ScreenContext(), kWidth, kHeight);
    return CreateBitmap(kWidth, kHeight, 1, bits, nullptr);
}

struct Rectangle {
    int32_t targetX, targetY, width, height, sourceX, sourceY;
};

// The transparent path from plain transfers: masks, the two halves, and their union.
void PaintThroughMasks(HDC target, HDC source, const Rectangle &r) {
    const auto transfer = [&](HDC to, HDC from, DWORD code) {
        BitBlt(to, 0, 0, r.width, r.height, from, 0, 0, code);
    };
    const auto fetch = [&](HDC to, HDC from, int32_t x, int32_t y) {
        BitBlt(to, 0, 0, r.width, r.height, from, x, y, SRCCOPY);
    };
    const COLORREF key = GetPixel(source, r.sourceX + r.width - 1, r.sourceY);
    const Canvas mask(CreateBitmap(r.width, r.height, 1, 1, nullptr));
    const Canvas inverse(CreateBitmap(r.width, r.height, 1, 1, nullptr));
    const Canvas whole(CreateCompatibleBitmap(target, r.width, r.height));
    const Canvas figure(CreateCompatibleBitmap(target, r.width, r.height));
    const COLORREF background = SetBkColor(source, key);
    fetch(mask.context, source, r.sourceX, r.sourceY);
    SetBkColor(source, background);
    transfer(inverse.context, mask.context, NOTSRCCOPY);
    fetch(whole.context, target, r.targetX, r.targetY);
    transfer(whole.context, mask.context, SRCAND);
    fetch(figure.context, source, r.sourceX, r.sourceY);
    transfer(figure.context, inverse.context, SRCAND);
    transfer(whole.context, figure.context, SRCINVERT);
    BitBlt(target, r.targetX, r.targetY, r.width, r.height, whole.context, 0, 0, SRCCOPY);
}

TEST(PaintImage, TakesEveryModeForItsRasterCodeAndOtherNumbersForCodes) {
    constexpr std::array<DWORD, 16> kCodes{0xCC0020, 0x8800C6, 0xEE0086, 0x660046, 0x550009, 0x330008,
                                           0x1100A6, 0xC000CA, 0xBB0226, 0xF00021, 0xFB0A09, 0x5A0049,
                                           0x440328, 0x000042, 0xFF0062, 0x00000F};
    std::mt19937 random(1);
    const Canvas source(kWidth, kHeight), actual(kWidth, kHeight), expected(kWidth, kHeight);
    const HBRUSH brush = CreateSolidBrush(0x5A3C0F);
    const HGDIOBJ stock = SelectObject(actual.context, brush);
    SelectObject(expected.context, brush);
    FillAtRandom(source.context, random);
    for (int32_t mode = 0; mode < 16; ++mode) {
        for (const DWORD number : {static_cast<DWORD>(mode), kCodes[static_cast<size_t>(mode)]}) {
            FillAtRandom(actual.context, random);
            BitBlt(expected.context, 0, 0, kWidth, kHeight, actual.context, 0, 0, SRCCOPY);
            BitBlt(expected.context, 5, -3, 30, 20, source.context, 2, 1, kCodes[static_cast<size_t>(mode)]);
            EXPECT_NE(
                PaintImage(actual.context, 5, -3, 30, 20, source.context, 2, 1, static_cast<int32_t>(number)),
                0);
            EXPECT_TRUE(SamePicture("mode" + std::to_string(mode), PictureOf(actual.context, kWidth, kHeight),
                                    PictureOf(expected.context, kWidth, kHeight)));
        }
    }
    for (const Canvas *canvas : {&actual, &expected}) SelectObject(canvas->context, stock);
    DeleteObject(brush);
}

TEST(PaintImage, IsTransparentAsTransfersThroughTwoMasksAre) {
    std::mt19937 random(2);
    for (const UINT from : {1, 4, 8, 24, 32}) {
        for (const UINT to : {1, 4, 8, 24, 32}) {
            const Canvas source(MakeBitmap(from)), actual(MakeBitmap(to)), expected(MakeBitmap(to));
            SetBkColor(source.context, to == 1 ? 0xFFFFFF : 0x00FF00);
            for (int round = 0; round < 12; ++round) {
                const auto number = [&](int low, int end) {
                    return low + static_cast<int>(random() % (end - low));
                };
                const int32_t width = number(1, 30), height = number(1, 20);
                const Rectangle r{number(-9, kWidth),
                                  number(-9, kHeight),
                                  width,
                                  height,
                                  number(0, kWidth - width + 1),
                                  number(0, kHeight - height + 1)};
                const bool isOneContext = from == to && round % 2 == 0;
                FillAtRandom(source.context, random);
                FillAtRandom(actual.context, random);
                const HDC painted = isOneContext ? actual.context : source.context;
                const HDC read = isOneContext ? expected.context : source.context;
                BitBlt(expected.context, 0, 0, kWidth, kHeight, actual.context, 0, 0, SRCCOPY);
                PaintThroughMasks(expected.context, read, r);
                EXPECT_NE(PaintImage(actual.context, r.targetX, r.targetY, width, height, painted, r.sourceX,
                                     r.sourceY, -1),
                          0);
                EXPECT_TRUE(SamePicture("transparent" + std::to_string(from) + "to" + std::to_string(to),
                                        PictureOf(actual.context, kWidth, kHeight),
                                        PictureOf(expected.context, kWidth, kHeight)));
            }
            EXPECT_EQ(SetBkColor(source.context, 0), to == 1 ? 0xFFFFFFu : 0x00FF00u);
        }
    }
}

// A strip of two frames of 3 x 2 pixels, whose keys are 7 and 8. 1 stands where the target is left alone.
TEST(PaintImage, TakesTheKeyFromTheTopRightOfTheRectangle) {
    constexpr int kStrip[2][6] = {{2, 8, 7, 7, 3, 8}, {7, 8, 7, 8, 7, 8}};
    const Canvas strip(6, 2), target(6, 2);
    for (int i = 0; i < 12; ++i)
        SetPixel(strip.context, i % 6, i / 6, static_cast<COLORREF>(kStrip[i / 6][i % 6]));
    struct Case {
        Rectangle r;
        std::array<uint32_t, 12> picture;
    };
    for (const Case &c :
         std::vector<Case>{{{0, 0, 3, 2, 0, 0}, {2, 8, 1, 1, 1, 1, 1, 8, 1, 1, 1, 1}},
                           {{1, 0, 3, 2, 3, 0}, {1, 7, 3, 1, 1, 1, 1, 1, 7, 1, 1, 1}},
                           {{0, 0, 6, 1, 0, 1}, {7, 1, 7, 1, 7, 1, 1, 1, 1, 1, 1, 1}},
                           // The source ends earlier: the key lies outside, so there is none.
                           {{0, 0, 4, 2, 4, 0}, {3, 8, 1, 1, 1, 1, 7, 8, 1, 1, 1, 1}},
                           {{0, 0, 2, 2, 1, -1}, {1, 1, 1, 1, 1, 1, 8, 7, 1, 1, 1, 1}},
                           // It begins later: the key lies inside.
                           {{0, 0, 4, 2, -1, 0}, {1, 2, 8, 1, 1, 1, 1, 1, 8, 1, 1, 1}},
                           {{0, 0, 0, 2, 1, 0}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
                           {{4, 1, -3, 2, 4, 0}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
                           {{3, 1, 2, -2, 4, 1}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
                           {{0, 0, INT_MAX, INT_MAX, INT_MAX, 0}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}}}) {
        for (int i = 0; i < 12; ++i) SetPixel(target.context, i % 6, i / 6, 1);
        EXPECT_NE(PaintImage(target.context, c.r.targetX, c.r.targetY, c.r.width, c.r.height, strip.context,
                             c.r.sourceX, c.r.sourceY, -1),
                  0);
        for (int i = 0; i < 12; ++i)
            EXPECT_EQ(GetPixel(target.context, i % 6, i / 6), c.picture[static_cast<size_t>(i)])
                << "rectangle of " << c.r.width << " from " << c.r.sourceX << ", pixel " << i;
    }
}

TEST(PaintImage, TellsOfDeadContexts) {
    const Canvas canvas(8, 8);
    const HDC dead = CreateCompatibleDC(0);
    DeleteDC(dead);
    for (const int32_t mode : {-1, 0, 3}) {
        for (const HDC wrong : {HDC{0}, dead, HDC{canvas.bitmap}}) {
            EXPECT_EQ(PaintImage(wrong, 0, 0, 4, 4, canvas.context, 0, 0, mode), 0);
            EXPECT_EQ(PaintImage(canvas.context, 0, 0, 4, 4, wrong, 0, 0, mode), 0);
        }
    }
    EXPECT_TRUE(SamePicture("dead", PictureOf(canvas.context, 8, 8), Picture(8, 8)));
    EXPECT_NE(PaintImage(canvas.context, 0, 0, 8, 8, 0, 0, 0, 14), 0);  // white needs no source
    EXPECT_TRUE(SamePicture("white", PictureOf(canvas.context, 8, 8), Picture(8, 8, 0xFFFFFF)));
}

struct Border {
    int32_t left, top, right, bottom, thickness;
};

// Every line of the border, pixel by pixel, each without its end.
Picture ModelFrame(const Border &border, uint32_t topLeft, uint32_t bottomRight) {
    Picture picture(kWidth, kHeight, 0x123456);
    const auto line = [&](int x, int y, int toX, int toY, uint32_t colour) {
        for (; x != toX || y != toY; x += (toX > x) - (toX < x), y += (toY > y) - (toY < y))
            if (x >= 0 && y >= 0 && x < kWidth && y < kHeight) picture.At(x, y) = colour;
    };
    for (const uint32_t colour : {topLeft, bottomRight}) {
        Border b = border;
        for (int32_t i = 0; i < border.thickness; ++i, --b.left, --b.top, ++b.right, ++b.bottom) {
            const int32_t y = colour == topLeft ? b.top : b.bottom;
            line(b.left, y, b.right, y, colour);
            if (colour == topLeft)
                line(b.left, b.top, b.left, b.bottom, colour);
            else
                line(b.right, b.top, b.right, b.bottom + 1, colour);
        }
    }
    return picture;
}

// The border on a plain ground, drawn with another pen selected, which must be the selected one again.
Picture DrawnFrame(Border border) {
    const Canvas canvas(kWidth, kHeight);
    const HBRUSH ground = CreateSolidBrush(0x563412);
    const HPEN pen = CreatePen(PS_SOLID, 1, 0xABCDEF);
    const RECT all{0, 0, kWidth, kHeight};
    FillRect(canvas.context, &all, ground);
    SelectObject(canvas.context, pen);
    const int pens = platform::CountHandles(platform::HandleKind::Pen);
    Frame(canvas.context, 0x0000FF, 0x00FF00, border.left, border.top, border.right, border.bottom,
          border.thickness);
    EXPECT_EQ(platform::CountHandles(platform::HandleKind::Pen), pens);
    EXPECT_EQ(SelectObject(canvas.context, pen), pen);
    DeleteObject(ground);
    const Picture picture = PictureOf(canvas.context, kWidth, kHeight);
    DeleteDC(canvas.context);
    DeleteObject(pen);
    return picture;
}

TEST(Frame, LiesOnTheRectangleAndOutsideOfIt) {
    std::mt19937 random(3);
    const auto number = [&](int low, int end) { return low + static_cast<int>(random() % (end - low)); };
    std::vector<Border> borders{{10, 10, 20, 20, 1}, {10, 8, 30, 20, 5}, {-3, -3, 50, 40, 9}, {5, 5, 5, 5, 3},
                                {5, 5, 9, 9, 0},     {5, 5, 9, 9, -4},   {20, 20, 9, 9, 12}};
    for (int i = 0; i < 100; ++i)
        borders.push_back(
            {number(-20, 60), number(-20, 60), number(-20, 60), number(-20, 60), number(1, 90)});
    for (const Border &b : borders)
        EXPECT_TRUE(SamePicture("frame", DrawnFrame(b), ModelFrame(b, 0xFF0000, 0x00FF00)))
            << b.left << ", " << b.top << ", " << b.right << ", " << b.bottom << ", thickness "
            << b.thickness;
    // Thicker than the surface is all the same, and as quick.
    EXPECT_TRUE(SamePicture("thick", DrawnFrame({10, 8, 30, 20, INT_MAX}),
                            ModelFrame({10, 8, 30, 20, 99}, 0xFF0000, 0x00FF00)));
    EXPECT_TRUE(SamePicture("far", DrawnFrame({INT_MIN, INT_MIN, INT_MAX, INT_MAX, INT_MAX}),
                            Picture(kWidth, kHeight, 0x123456)));
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

// De Casteljau's construction with the middle point as both control points, in steps far below a pixel.
TEST(Curve, FollowsTheCubicThatThreePointsSpan) {
    constexpr double kPoints[3][2] = {{3, 25}, {18, -20}, {37, 20}};
    const Canvas canvas(kWidth, kHeight);
    const HPEN pen = CreatePen(PS_SOLID, 1, 0xFFFFFF);
    const HGDIOBJ before = SelectObject(canvas.context, pen);
    EXPECT_EQ(Curve(canvas.context, 3, 25, 18, -20, 37, 20), 0);
    const Picture drawn = PictureOf(canvas.context, kWidth, kHeight);
    std::vector<std::array<double, 2>> curve;
    for (double t = 0; t <= 1; t += 0.0005) {
        std::array<double, 2> point{};
        for (size_t axis = 0; axis < 2; ++axis) {
            const auto mix = [t](double a, double b) { return a + (b - a) * t; };
            const double a = mix(kPoints[0][axis], kPoints[1][axis]), b = kPoints[1][axis],
                         c = mix(kPoints[1][axis], kPoints[2][axis]);
            point[axis] = mix(mix(a, b), mix(b, c));
        }
        curve.push_back(point);
    }
    const auto isNear = [](const std::array<double, 2> &p, int x, int y) {
        return std::hypot(p[0] - x, p[1] - y) < 1.3;
    };
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const int x = i % kWidth, y = i / kWidth;
        const bool isOnCurve =
            std::any_of(curve.begin(), curve.end(), [&](const auto &p) { return isNear(p, x, y); });
        EXPECT_TRUE(drawn.At(x, y) == 0 || isOnCurve) << x << ", " << y;
    }
    for (const auto &p : curve) {
        bool isDrawn = p[1] < 1 || isNear(p, 37, 20);
        for (int i = 0; i < kWidth * kHeight && !isDrawn; ++i)
            isDrawn = drawn.At(i % kWidth, i / kWidth) != 0 && isNear(p, i % kWidth, i / kWidth);
        EXPECT_TRUE(isDrawn) << p[0] << ", " << p[1];
    }
    // Three points on a line are that line, without its end.
    const Canvas straight(kWidth, kHeight);
    SelectObject(straight.context, pen);
    Curve(straight.context, 2, 26, 9, 19, 27, 1);
    Picture line(kWidth, kHeight);
    for (int x = 2; x < 27; ++x) line.At(x, 28 - x) = 0xFFFFFF;
    EXPECT_TRUE(SamePicture("straight", PictureOf(straight.context, kWidth, kHeight), line));
    EXPECT_EQ(Curve(0, 1, 2, 3, 4, 5, 6), 0);
    SelectObject(canvas.context, before);
    SelectObject(straight.context, before);
    DeleteObject(pen);
}

}  // namespace
}  // namespace fenlight::test
