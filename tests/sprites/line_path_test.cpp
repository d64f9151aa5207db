// SPDX-License-Identifier: Zlib
#include "sprites/line_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <thread>
#include <vector>

#include "fenlight/sprite_movement.h"
#include "sprites/stages.h"

namespace fenlight {

static std::ostream &operator<<(std::ostream &out, PathPoint point) {
    return out << '(' << point.x << ", " << point.y << ')';
}

namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

// Point k of the exact line, its minor coordinate rounded to the nearest pixel, halves away from the start.
PathPoint PointOnLine(PathPoint from, PathPoint to, int64_t k) {
    const int64_t dx = int64_t{to.x} - from.x;
    const int64_t dy = int64_t{to.y} - from.y;
    const int64_t length = std::max(std::abs(dx), std::abs(dy));
    const auto rounded = [&](int64_t distance) {
        const int64_t pixels = (2 * k * std::abs(distance) + length) / (2 * length);
        return distance < 0 ? -pixels : pixels;
    };
    return {static_cast<int32_t>(from.x + rounded(dx)), static_cast<int32_t>(from.y + rounded(dy))};
}

void ExpectExactLine(PathPoint from, PathPoint to) {
    const int64_t length = std::max(std::abs(int64_t{to.x} - from.x), std::abs(int64_t{to.y} - from.y));
    const PathPoints path = MakeLinePath(from, to);
    for (int64_t k = 0; k < kPathPlaces; ++k) {
        const bool isOnLine = length > 0 && k <= length;
        ASSERT_EQ(path[static_cast<size_t>(k)], isOnLine ? PointOnLine(from, to, k) : PathPoint{})
            << "point " << k << " from " << from << " to " << to;
    }
}

void StartLine(SpriteRecord &record, PathPoint from, PathPoint to, int32_t speed) {
    const auto sprite = HandleOf(&record);
    SetSpritePos(sprite, from.x, from.y, to.x, to.y);
    SetSpriteSpeed(sprite, speed, 0);
    SetSpriteMovingMode(sprite, 1);
}

bool HasEmptyPath(SpriteRecord &record) {
    return std::all_of(std::begin(record.Path), std::end(record.Path),
                       [](int32_t word) { return word == kPathEmpty; });
}

// A filled place behind a free one.
bool HasHole(SpriteRecord &record) {
    bool isFreeBefore = false;
    for (int32_t place = 0; place < kPathPlaces; ++place) {
        const bool isFree = record.PathX(place) == kPathEmpty;
        if (isFreeBefore && !isFree) return true;
        isFreeBefore = isFree;
    }
    return false;
}

TEST(LinePath, HoldsTheRoundedPointsOfTheExactLine) {
    for (int32_t dx = -20; dx <= 20; ++dx)
        for (int32_t dy = -20; dy <= 20; ++dy) ExpectExactLine({-5, 300}, {-5 + dx, 300 + dy});
    std::mt19937 random(41);
    const int32_t ends[] = {kLowest, kLowest + 1, -1, 0, 77, kHighest - 1, kHighest};
    for (const int32_t fromX : ends)
        for (const int32_t fromY : ends) {
            for (const int32_t toX : ends)
                for (const int32_t toY : ends) ExpectExactLine({fromX, fromY}, {toX, toY});
            ExpectExactLine({fromX, fromY}, {static_cast<int32_t>(random()), static_cast<int32_t>(random())});
        }
}

// Sprites on a long level line. A new path starts with the sprite's own position, so 16 points give 15
// pixels.
TEST(LinePath, GivesSpeedPointsPerFrameAndRestsWhereItIsMadeAnew) {
    struct Case {
        int32_t speed;
        std::function<int32_t(int32_t)> xAfter;  // by frames passed, counted from 0
    };
    const Case cases[] = {
        {1, [](int32_t f) { return f - f / 16; }},
        // 16 points serve five frames of 3; the one left over makes a new path from the 14th pixel.
        {3, [](int32_t f) { return 14 * (f / 5) + 3 * (f % 5) + 2; }},
        {15, [](int32_t f) { return 14 * (f + 1); }},
        {16, [](int32_t f) { return 15 * (f + 1); }},
        {kHighest, [](int32_t f) { return 15 * (f + 1); }},
        {0, [](int32_t) { return 0; }},
        {kLowest, [](int32_t) { return 0; }},
    };
    for (const Case &c : cases) {
        constexpr int32_t kTarget = 200;
        SpriteRecord record;
        StartLine(record, {0, 9}, {kTarget, 9}, c.speed);
        for (int32_t frame = 0; frame < 250; ++frame) {
            MoveStage(record);
            ASSERT_EQ(record.X, std::min(c.xAfter(frame), kTarget))
                << "speed " << c.speed << " frame " << frame;
            ASSERT_EQ(record.Y, 9);
        }
        EXPECT_TRUE(HasEmptyPath(record)) << "speed " << c.speed;
    }
}

TEST(LinePath, EndsOnTheTargetAndClearsItself) {
    SpriteRecord record;
    StartLine(record, {5, 5}, {2, 4}, 1);
    const PathPoint trace[] = {{5, 5}, {4, 5}, {3, 4}, {2, 4}, {2, 4}};
    for (const PathPoint expected : trace) {
        MoveStage(record);
        EXPECT_EQ((PathPoint{record.X, record.Y}), expected);
    }
    EXPECT_TRUE(HasEmptyPath(record));
}

TEST(LinePath, UsesUpWhatIsLeftBeforeAnythingElseTakesEffect) {
    SpriteRecord record;
    const auto sprite = HandleOf(&record);
    StartLine(record, {0, 0}, {400, 0}, 5);
    MoveStage(record);
    ASSERT_EQ(record.X, 4);
    SetSpritePos(sprite, 1000, 50, -400, 0);
    for (const PathPoint expected : {PathPoint{9, 0}, {14, 0}, {10, 0}, {5, 0}}) {
        MoveStage(record);
        EXPECT_EQ((PathPoint{record.X, record.Y}), expected);
    }
    SetSpriteMovingMode(sprite, 2);
    SetSpritePos(sprite, 1000, 50, 1000, 40);
    MoveStage(record);
    EXPECT_EQ((PathPoint{record.X, record.Y}), (PathPoint{1000, 46})) << "the old path must be gone";
    SetSpriteSpeed(sprite, 0, 0);
    SetSpritePos(sprite, 1000, 46, 1000, -500);
    MoveStage(record);
    EXPECT_EQ(record.Y, 40) << "speed 0 runs to the end of what is left";
    MoveStage(record);
    EXPECT_EQ(record.Y, 40) << "and makes nothing new";
}

TEST(LinePath, IgnoresLeaderAndSlowPeriods) {
    SpriteRecord leader;
    SpriteRecord record;
    StartLine(record, {0, 0}, {0, 30}, 2);
    AttachSprite(HandleOf(&record), HandleOf(&leader), 500, 500);
    SlowDownSprite(HandleOf(&record), 3, 3);
    for (const int32_t y : {1, 3, 5, 7}) {
        SlowStage(record);
        MoveStage(record);
        EXPECT_EQ(record.Y, y);
        EXPECT_EQ(record.TargetX, 0);
    }
}

TEST(LinePath, StopsAtTheCoordinateThatMeansFree) {
    for (const int32_t start : {kPathEmpty - 3, kPathEmpty}) {
        SpriteRecord record;
        StartLine(record, {start, 0}, {kPathEmpty + 20, 0}, 2);
        for (int32_t frame = 0; frame < 40; ++frame) MoveStage(record);
        EXPECT_EQ(record.X, start == kPathEmpty ? start : kPathEmpty - 1);
    }
}

// A path with a hole at its front would stop the sprite for ever.
TEST(LinePath, StaysWholeWhileAnotherThreadEmptiesIt) {
    SpriteRecord record;
    StartLine(record, {0, 0}, {0, kHighest}, 1);
    std::atomic<bool> isDone{false};
    std::thread caller([&] {
        for (int32_t call = 0; call < 100000; ++call) SetSpriteMovingMode(HandleOf(&record), 1);
        isDone = true;
    });
    int32_t holes = 0;
    while (!isDone) {
        MoveStage(record);
        SpriteRecord seen;
        CopyLinePath(record, seen);
        holes += HasHole(seen);
    }
    caller.join();
    EXPECT_EQ(holes, 0);
}

}  // namespace
}  // namespace fenlight
