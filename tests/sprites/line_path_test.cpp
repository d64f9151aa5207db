// SPDX-License-Identifier: Zlib
#include "sprites/line_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>

#include "sprites/loose_sprite.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

// Attached and slowed down too, which must have no effect in line mode.
struct LineSprite : LooseSprite {
    LineSprite(Point from, Point to, int32_t speed) : LooseSprite(from, to, {speed, 0}) {
        SetSpriteMovingMode(Handle(), -1);  // any number but 0
        AttachSprite(Handle(), Handle(), 500, 500);
        SlowDownSprite(Handle(), 3, 3);
    }
    Point Move() {
        SlowStage(*this);
        MoveStage(*this);
        return Position();
    }
    int32_t CountFilled() {
        int32_t filled = 0;
        for (int32_t place = 0; place < kPathPlaces; ++place) filled += PathX(place) != kPathEmpty;
        return filled;
    }
};

// Point k of the exact line, its coordinates rounded to the nearest pixel, halves away from the start.
PathPoint PointOnLine(PathPoint from, PathPoint to, int64_t k, int64_t length) {
    const auto rounded = [&](int64_t distance) {
        const int64_t pixels = (2 * k * std::abs(distance) + length) / (2 * length);
        return distance < 0 ? -pixels : pixels;
    };
    return {static_cast<int32_t>(from.x + rounded(int64_t{to.x} - from.x)),
            static_cast<int32_t>(from.y + rounded(int64_t{to.y} - from.y))};
}

void ExpectExactLine(PathPoint from, PathPoint to) {
    const int64_t length = std::max(std::abs(int64_t{to.x} - from.x), std::abs(int64_t{to.y} - from.y));
    const PathPoints path = MakeLinePath(from, to);
    for (int64_t k = 0; k < kPathPlaces; ++k) {
        const bool isOnLine = length > 0 && k <= length;
        const PathPoint expected = isOnLine ? PointOnLine(from, to, k, length) : PathPoint{};
        ASSERT_EQ(path[static_cast<size_t>(k)], expected)
            << "point " << k << " from " << from.x << ", " << from.y << " to " << to.x << ", " << to.y;
    }
}

TEST(LinePath, HoldsTheRoundedPointsOfTheExactLine) {
    for (int32_t dx = -20; dx <= 20; ++dx)
        for (int32_t dy = -20; dy <= 20; ++dy) ExpectExactLine({-5, 300}, {-5 + dx, 300 + dy});
    const int32_t ends[] = {kLowest, kLowest + 1, -1234567, 0, 77, kHighest - 1, kHighest};
    for (const int32_t fromX : ends)
        for (const int32_t fromY : ends)
            for (const int32_t toX : ends)
                for (const int32_t toY : ends) ExpectExactLine({fromX, fromY}, {toX, toY});
}

// A new path starts with the sprite's own position, so 16 points give 15 pixels.
TEST(LinePath, GivesSpeedPointsPerFrameAndRestsWhereItIsMadeAnew) {
    // X by frames passed, counted from 0.
    const std::pair<int32_t, std::function<int32_t(int32_t)>> cases[] = {
        {1, [](int32_t f) { return f - f / 16; }},
        // 16 points serve five frames of 3; the one left over makes a new path from the 14th pixel.
        {3, [](int32_t f) { return 14 * (f / 5) + 3 * (f % 5) + 2; }},
        {15, [](int32_t f) { return 14 * (f + 1); }},
        {16, [](int32_t f) { return 15 * (f + 1); }},
        {kHighest, [](int32_t f) { return 15 * (f + 1); }},
        {0, [](int32_t) { return 0; }},
        {kLowest, [](int32_t) { return 0; }},
    };
    for (const auto &[speed, xAfter] : cases) {
        LineSprite sprite({0, 9}, {200, 9}, speed);
        for (int32_t frame = 0; frame < 250; ++frame)
            ASSERT_EQ(sprite.Move(), (Point{std::min(xAfter(frame), 200), 9})) << speed << " frame " << frame;
        EXPECT_EQ(sprite.CountFilled(), 0) << "speed " << speed;
        EXPECT_EQ(sprite.Target(), (Point{200, 9}));
    }
}

TEST(LinePath, UsesUpWhatIsLeftBeforeAnythingElseTakesEffect) {
    LineSprite sprite({0, 0}, {400, 0}, 5);
    EXPECT_EQ(sprite.Move(), (Point{4, 0}));
    SetSpritePos(sprite.Handle(), 1000, 50, -400, 0);
    for (const Point expected : {Point{9, 0}, {14, 0}, {10, 0}, {5, 0}}) EXPECT_EQ(sprite.Move(), expected);
    SetSpriteMovingMode(sprite.Handle(), 2);
    SetSpritePos(sprite.Handle(), 1000, 50, 1000, 40);
    EXPECT_EQ(sprite.Move(), (Point{1000, 46})) << "the old path must be gone";
    SetSpriteSpeed(sprite.Handle(), 0, 0);
    SetSpritePos(sprite.Handle(), 1000, 46, 1000, -500);
    EXPECT_EQ(sprite.Move(), (Point{1000, 40})) << "speed 0 runs to the end of what is left";
    EXPECT_EQ(sprite.Move(), (Point{1000, 40})) << "and makes nothing new";
}

TEST(LinePath, IsForgottenWhereANewTargetLiesOnIt) {
    LineSprite sprite({0, 0}, {400, 0}, 5);
    sprite.Move();
    sprite.TargetX = 7;
    EXPECT_EQ(sprite.Move(), (Point{7, 0}));
    EXPECT_EQ(sprite.CountFilled(), 0);
    sprite.TargetX = 5;
    EXPECT_EQ(sprite.Move(), (Point{5, 0})) << "and the next target takes effect at once";
}

TEST(LinePath, StopsAtTheCoordinateThatMeansFree) {
    for (const auto &[start, end] : {Point{11108, 11110}, {11111, 11111}}) {
        LineSprite sprite({start, 0}, {11140, 0}, 2);
        for (int32_t frame = 0; frame < 40; ++frame) sprite.Move();
        EXPECT_EQ(sprite.X, end);
    }
}

// A path with a free place at its front and filled ones behind would stop the sprite for ever.
TEST(LinePath, StaysWholeWhileAnotherThreadEmptiesIt) {
    LineSprite sprite({0, 0}, {0, kHighest}, 1);
    std::atomic<int32_t> frames{0};
    const auto spinUntil = [](int32_t looks, auto isEnough) {
        while (looks-- > 0 && !isEnough()) std::atomic_signal_fence(std::memory_order_seq_cst);
    };
    const auto empty = [&](int32_t round) {
        spinUntil(round % 199, [] { return false; });  // so that it meets every moment of a frame
        SetSpriteMovingMode(sprite.Handle(), 1);
        // Two frames pass, so that a hole is seen before it is emptied too. It doesn't give up its turn for
        // them, which a busy machine might be long to give back.
        spinUntil(2000, [&, now = frames.load()] { return frames >= now + 2; });
    };
    const auto hasHole = [&] {
        sprite.Move();
        ++frames;
        LineSprite seen({0, 0}, {0, 0}, 1);
        CopyLinePath(sprite, seen);
        const int32_t filled = seen.CountFilled();
        return filled > 0 && (seen.PathX(0) == kPathEmpty || seen.PathX(filled - 1) == kPathEmpty);
    };
    EXPECT_EQ(CountBeside(100000, empty, hasHole), 0);
}

}  // namespace
}  // namespace fenlight
