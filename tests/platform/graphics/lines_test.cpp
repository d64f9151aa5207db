// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "canvas.h"

namespace fenlight::test {
namespace {

__extension__ using Wide = __int128;

constexpr int kWidth = 23;
constexpr int kHeight = 17;
constexpr uint32_t kBlack = 0x000000;
constexpr uint32_t kPaper = 0xFFFFFF;

// Is the pixel the nearest to the line in its column (row, for steep lines), the smaller one of two? Asked
// for each pixel of the picture, with no walk along the line.
bool IsOnLine(POINT from, POINT to, int64_t x, int64_t y) {
    if (std::abs(int64_t{to.y} - from.y) > std::abs(int64_t{to.x} - from.x))
        return IsOnLine({from.y, from.x}, {to.y, to.x}, y, x);
    const bool isBetween = from.x < to.x ? x >= from.x && x < to.x : x <= from.x && x > to.x;
    const auto distance = [&](int64_t row) {
        const Wide length = Wide{to.x} - from.x;
        const Wide value = (row - Wide{from.y}) * length - (x - Wide{from.x}) * (Wide{to.y} - from.y);
        return value < 0 ? -value : value;
    };
    return isBetween && distance(y) < distance(y - 1) && distance(y) <= distance(y + 1);
}

void Clear(const Canvas &canvas) { BitBlt(canvas.context, 0, 0, kWidth, kHeight, 0, 0, 0, WHITENESS); }

std::string Rows(const Canvas &canvas, int width, int height) {
    std::string rows;
    for (int y = 0; y < height; ++y, rows += '\n')
        for (int x = 0; x < width; ++x) rows += GetPixel(canvas.context, x, y) == kBlack ? '#' : '.';
    return rows;
}

TEST(Lines, LeaveOutTheEndPointAndMoveThePosition) {
    const Canvas canvas(kWidth, kHeight);
    Clear(canvas);
    EXPECT_EQ(MoveToEx(canvas.context, 1, 1, nullptr), 1);
    LineTo(canvas.context, 1, 4);  // down
    LineTo(canvas.context, 5, 4);  // right
    LineTo(canvas.context, 5, 4);  // nowhere
    LineTo(canvas.context, 3, 2);  // back along a diagonal
    LineTo(canvas.context, 7, 0);  // two steps right, one up
    POINT old{};
    EXPECT_EQ(MoveToEx(canvas.context, -5, 9, &old), 1);
    EXPECT_EQ(Rows(canvas, 8, 6),
              "......#.\n"
              ".#..##..\n"
              ".#.#....\n"
              ".#..#...\n"
              ".#####..\n"
              "........\n");
    EXPECT_EQ(old.x * 100 + old.y, 700);
    EXPECT_EQ(MoveToEx(canvas.context, 0, 0, &old), 1);
    EXPECT_EQ(old.x * 100 + old.y, -500 + 9);
}

TEST(Lines, AreTheNearestPixelsHoweverFarTheEndsLie) {
    const Canvas canvas(kWidth, kHeight);
    std::mt19937 random(77);
    const int ranges[] = {20, 60, 1000, 1 << 30, 0x7FFFFFFF};
    for (int round = 0; round < 3000; ++round) {
        std::uniform_int_distribution<int32_t> place(-ranges[round % 5], ranges[round % 5]);
        POINT from{place(random), place(random)};
        POINT to{place(random), place(random)};
        // Far lines that cross the picture: mirrored, so that the middle lies near the origin.
        if (round % 2 == 1) to = {13 - from.x + (round % 7 == 0), 8 - from.y};
        if (round % 11 == 0) from = {INT32_MIN, place(random) % 16};
        Clear(canvas);
        MoveToEx(canvas.context, from.x, from.y, nullptr);
        ASSERT_EQ(LineTo(canvas.context, to.x, to.y), 1);
        Picture expected(kWidth, kHeight, kPaper);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                if (IsOnLine(from, to, x, y)) expected.At(x, y) = kBlack;
        ASSERT_TRUE(SamePicture("line", PictureOf(canvas.context, kWidth, kHeight), expected))
            << from.x << ',' << from.y << " to " << to.x << ',' << to.y;
    }
}

// A point of the curve by repeated halving of the control polygon's sides in the ratio t.
void PointOnCurve(const POINT *points, double t, double &x, double &y) {
    double xs[4], ys[4];
    for (int i = 0; i < 4; ++i) xs[i] = points[i].x, ys[i] = points[i].y;
    for (int left = 3; left > 0; --left)
        for (int i = 0; i < left; ++i) {
            xs[i] += (xs[i + 1] - xs[i]) * t;
            ys[i] += (ys[i + 1] - ys[i]) * t;
        }
    x = xs[0];
    y = ys[0];
}

// Every pixel lies near the curve, and every point of the curve inside the picture near a pixel.
void CheckCurve(const Picture &picture, const POINT *points) {
    constexpr double kNear = 1.25;  // half a pixel's diagonal, rounding of the chords' ends, flatness
    Picture reached(picture.width, picture.height);
    for (double t = 0; t < 1; t += 0.0005) {
        double x = 0, y = 0;
        PointOnCurve(points, t, x, y);
        bool isMarked = false;
        for (int py = std::max(0, static_cast<int>(y) - 2);
             py < std::min(picture.height, static_cast<int>(y) + 4); ++py)
            for (int px = std::max(0, static_cast<int>(x) - 2);
                 px < std::min(picture.width, static_cast<int>(x) + 4); ++px) {
                if (std::hypot(px - x, py - y) > kNear) continue;
                reached.At(px, py) = 1;
                isMarked = isMarked || picture.At(px, py) == kBlack;
            }
        // The end point itself is left out.
        const bool isEnd = std::hypot(x - points[3].x, y - points[3].y) < 1;
        const bool isInside = !isEnd && x > 2 && y > 2 && x < picture.width - 2 && y < picture.height - 2;
        ASSERT_TRUE(isMarked || !isInside) << "a gap at " << x << ',' << y;
    }
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            ASSERT_TRUE(picture.At(x, y) != kBlack || reached.At(x, y) == 1) << "astray at " << x << ',' << y;
}

TEST(Curves, FollowTheirControlPointsWithoutGaps) {
    const Canvas canvas(60, 50);
    std::mt19937 random(5);
    std::uniform_int_distribution<int32_t> place(-15, 70);
    for (int round = 0; round < 300; ++round) {
        POINT points[4];
        for (POINT &point : points) point = {place(random), place(random)};
        if (round % 3 == 0) points[2] = points[1];
        BitBlt(canvas.context, 0, 0, 60, 50, 0, 0, 0, WHITENESS);
        ASSERT_EQ(PolyBezier(canvas.context, points, 4), 1);
        ASSERT_NO_FATAL_FAILURE(CheckCurve(PictureOf(canvas.context, 60, 50), points)) << "round " << round;
    }
}

TEST(Curves, AreLinesWhereTheControlPointsAre) {
    const Canvas canvas(kWidth, kHeight);
    const Canvas lines(kWidth, kHeight);
    Clear(canvas);
    Clear(lines);
    const POINT points[7] = {{2, 3}, {6, 3}, {10, 3}, {14, 3}, {14, 7}, {14, 11}, {14, 15}};
    EXPECT_EQ(PolyBezier(canvas.context, points, 7), 1);
    MoveToEx(lines.context, 2, 3, nullptr);
    LineTo(lines.context, 14, 3);
    LineTo(lines.context, 14, 15);
    for (const DWORD count : {0u, 1u, 2u, 3u, 5u, 6u})
        EXPECT_EQ(PolyBezier(canvas.context, points, count), 0) << count;
    EXPECT_EQ(PolyBezier(canvas.context, nullptr, 4), 0);
    const Picture expected = PictureOf(lines.context, kWidth, kHeight);
    EXPECT_TRUE(SamePicture("curve_as_line", PictureOf(canvas.context, kWidth, kHeight), expected));
    POINT position{};
    MoveToEx(canvas.context, 0, 0, &position);
    EXPECT_EQ(position.x + position.y, 0) << "a curve leaves the position alone";
    const POINT far[4] = {
        {INT32_MIN, INT32_MIN}, {INT32_MAX, INT32_MIN}, {INT32_MIN, INT32_MAX}, {INT32_MAX, INT32_MAX}};
    EXPECT_EQ(PolyBezier(canvas.context, far, 4), 1);
}

TEST(Rectangles, ExcludeTheirRightAndBottomEdges) {
    const Canvas canvas(6, 5);
    const HBRUSH brush = CreateSolidBrush(0x3366CC);
    const RECT rectangles[] = {{1, 1, 4, 3},
                               {4, 1, 1, 3},
                               {1, 3, 4, 1},
                               {2, 2, 2, 9},
                               {6, 0, 90, 9},
                               {-9, -9, 0, 5},
                               {INT32_MAX, 0, INT32_MIN, 5}};
    for (const RECT &rectangle : rectangles) EXPECT_EQ(FillRect(canvas.context, &rectangle, brush), 1);
    Picture expected(6, 5);
    for (int y = 1; y < 3; ++y)
        for (int x = 1; x < 4; ++x) expected.At(x, y) = 0xCC6633;
    EXPECT_TRUE(SamePicture("fill", PictureOf(canvas.context, 6, 5), expected));
    const RECT everything{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
    EXPECT_EQ(FillRect(canvas.context, &everything, brush), 1);
    EXPECT_TRUE(SamePicture("fill_all", PictureOf(canvas.context, 6, 5), Picture(6, 5, 0xCC6633)));
    EXPECT_EQ(FillRect(canvas.context, nullptr, brush), 0);
    DeleteObject(brush);

    const RECT inside{-2, 3, 4, 5};
    int hits = 0;
    for (int32_t y = -4; y < 8; ++y)
        for (int32_t x = -4; x < 8; ++x) hits += PtInRect(&inside, {x, y});
    EXPECT_EQ(hits, 6 * 2);
    EXPECT_TRUE(PtInRect(&inside, {-2, 3}) && PtInRect(&inside, {3, 4}) && !PtInRect(nullptr, {0, 0}));
}

}  // namespace
}  // namespace fenlight::test
