// SPDX-License-Identifier: Zlib
#include "sprites/movement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <thread>
#include <vector>

#include "fenlight/sprite_movement.h"
#include "sprites/record_words.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

using Words = std::map<int32_t, intptr_t>;
using Point = std::array<int32_t, 2>;

Point PositionOf(const SpriteRecord &record) { return {record.X, record.Y}; }
Point TargetOf(const SpriteRecord &record) { return {record.TargetX, record.TargetY}; }

// A sprite as it is made, without pictures, in no list.
struct Sprite : SpriteRecord {
    Sprite() { RectLeft = RectTop = RectRight = RectBottom = -1; }
    Sprite(Point from, Point to, Point speed) : Sprite() {
        SetSpritePos(Handle(), from[0], from[1], to[0], to[1]);
        SetSpriteSpeed(Handle(), speed[0], speed[1]);
    }
    uintptr_t Handle() { return HandleOf(this); }
};

// The stages of movement in the order of the pass.
void Pass(SpriteRecord &record) {
    SlowStage(record);
    CageStage(record);
    LookAheadStage(record);
    MovingRectangleStage(record);
    AnimCopyStage(record);
    MoveStage(record);
}

TEST(StepOnAxis, GoesTowardsTheTargetAndNoFurther) {
    struct Case {
        AxisMotion motion;
        int32_t expected;
    };
    const Case cases[] = {
        {{10, 20, 4, 0}, 14},
        {{10, 20, 9, 0}, 19},
        {{10, 20, 10, 0}, 20},
        {{10, 20, 11, 0}, 20},
        {{20, 10, 4, 0}, 16},
        {{20, 10, 99, 0}, 10},
        {{10, 10, 4, 0}, 10},
        {{10, 20, 0, 0}, 10},
        {{10, 20, 4, 1}, 10},
        {{10, 20, 4, -1}, 10},
        {{0, kHighest, kHighest, 0}, kHighest},
        {{kLowest, kHighest, kHighest, 0}, -1},
        {{kHighest, kLowest, kHighest, 0}, 0},
        {{kHighest - 1, kHighest, kHighest, 0}, kHighest},
        {{kLowest + 1, kLowest, kHighest, 0}, kLowest},
        // A negative speed runs away from the target, and round the end of the range.
        {{10, 20, -3, 0}, 7},
        {{20, 10, -3, 0}, 23},
        {{kLowest, 0, -1, 0}, kHighest},
        {{kHighest, 0, -1, 0}, kLowest},
        {{-1, kLowest, kLowest, 0}, kHighest},
    };
    for (const auto &[m, expected] : cases)
        EXPECT_EQ(StepOnAxis(m), expected)
            << m.position << " to " << m.target << " by " << m.speed << " count " << m.slowCount;
}

// Each axis alone: |distance| / speed steps, the slow axis goes on when the fast one has arrived. The
// look-ahead tells each step before it is made.
TEST(Movement, RunsDiagonallyAndThenStraightOn) {
    constexpr Point kTarget = {-70, 33};
    Sprite sprite({0, 0}, kTarget, {3, 4});
    for (int32_t frame = 1; frame <= 30; ++frame) {
        Pass(sprite);
        const Point expected = {std::max(-3 * frame, -70), std::min(4 * frame, 33)};
        ASSERT_EQ(PositionOf(sprite), expected) << "frame " << frame;
        ASSERT_EQ((Point{sprite.NextX, sprite.NextY}), expected) << "look-ahead of frame " << frame;
        ASSERT_EQ(HasSpriteArrived(sprite.Handle()), frame >= 24) << "frame " << frame;
    }
}

TEST(Movement, StepsInOneOfPeriodPlusOneFrames) {
    for (const int32_t periodX : {-5, 0, 1, 2, 7}) {
        Sprite sprite({0, 0}, {1000, 1000}, {5, 3});
        SlowDownSprite(sprite.Handle(), periodX, 3);
        for (int32_t frame = 1; frame <= 40; ++frame) {
            Pass(sprite);
            ASSERT_EQ(PositionOf(sprite), (Point{5 * (frame / (std::max(periodX, 0) + 1)), 3 * (frame / 4)}))
                << "period " << periodX << " frame " << frame;
        }
        const Point before = PositionOf(sprite);
        SlowDownSprite(sprite.Handle(), 0, 0);
        Pass(sprite);
        EXPECT_EQ(PositionOf(sprite), (Point{before[0] + 5, before[1] + 3})) << "normal pace again";
    }
    Sprite sprite({0, 0}, {10, 0}, {1, 1});
    SlowDownSprite(sprite.Handle(), kHighest, 0);
    sprite.SlowCountX = kHighest;
    Pass(sprite);
    EXPECT_EQ(sprite.SlowCountX, kLowest) << "the counter wraps";
}

TEST(Movement, SendsASpriteHomeThatIsNotStrictlyInItsCage) {
    constexpr Point kHome = {55, 66};
    const auto isSentHome = [&](std::array<int32_t, 4> cage, Point position) {
        Sprite sprite(position, {500, 600}, {1, 1});
        SetSpriteCage(sprite.Handle(), cage[0], cage[1], cage[2], cage[3], kHome[0], kHome[1]);
        CageStage(sprite);
        const bool isHome = PositionOf(sprite) == kHome;
        EXPECT_EQ(PositionOf(sprite), isHome ? kHome : position);
        EXPECT_EQ(TargetOf(sprite), isHome ? kHome : (Point{500, 600}));
        return isHome;
    };
    for (int32_t x = 8; x <= 22; ++x)
        for (int32_t y = -32; y <= -18; ++y) {
            const bool isInside = x >= 11 && x <= 19 && y >= -29 && y <= -21;
            EXPECT_EQ(isSentHome({10, -30, 20, -20}, {x, y}), !isInside) << x << ", " << y;
        }
    EXPECT_FALSE(isSentHome({0, 0, 0, 0}, {-7, 3})) << "four zeros are no cage";
    // One edge that isn't 0 makes a cage, and none of these has an inside.
    for (const std::array<int32_t, 4> cage :
         {std::array{-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}, {20, 20, 10, 10}})
        EXPECT_TRUE(isSentHome(cage, {0, 0}));
}

// A target of -99 has stayed as it was.
TEST(Movement, TurnsRoundAtTheSidesOfItsRectangle) {
    struct Case {
        std::array<int32_t, 4> rect;
        Point position;
        Point target;
    };
    const Case cases[] = {
        {{10, 20, 100, 90}, {50, 50}, {-99, -99}}, {{10, 20, 100, 90}, {11, 89}, {-99, -99}},
        {{10, 20, 100, 90}, {10, 50}, {100, -99}}, {{10, 20, 100, 90}, {6, 20}, {100, 90}},
        {{10, 20, 100, 90}, {100, 90}, {10, 20}},  {{10, 20, 100, 90}, {50, 94}, {-99, 20}},
        {{-1, -1, -1, -1}, {-1, -1}, {-99, -99}},  {{10, -1, -1, -1}, {3, 3}, {-1, -99}},
        {{-1, 10, -1, -1}, {3, 3}, {-99, -1}},     {{-1, -1, 10, -1}, {30, 3}, {-1, -99}},
        {{-1, -1, -1, 10}, {30, 30}, {-99, -1}},   {{kHighest, -1, -1, -1}, {kLowest, 0}, {-1, -99}},
        {{100, 5, 10, 5}, {50, 5}, {100, 5}},  // both tests of a pair hold: the later one decides
    };
    for (const auto &[rect, position, target] : cases) {
        Sprite sprite(position, {-99, -99}, {0, 0});
        SpriteMovingRect(sprite.Handle(), rect[0], rect[1], rect[2], rect[3]);
        MovingRectangleStage(sprite);
        EXPECT_EQ(TargetOf(sprite), target) << position[0] << ", " << position[1] << " in " << rect[0];
    }

    Sprite patrol({10, 7}, {100, 30}, {30, 23});
    SpriteMovingRect(patrol.Handle(), 10, -1, 100, -1);
    for (const int32_t x : {40, 70, 100, 70, 40, 10, 40, 70, 100, 70}) {
        Pass(patrol);
        EXPECT_EQ(PositionOf(patrol), (Point{x, 30}));
    }
}

TEST(Movement, FollowsTheLeaderOneFrameLater) {
    Sprite leader({0, 0}, {100, 0}, {4, 0});
    Sprite follower({0, 0}, {0, 0}, {3, 9});
    AttachSprite(follower.Handle(), leader.Handle(), 10, -5);
    // The leader goes first; the follower steps to its old target and takes the new one then.
    const std::array<Point, 2> trace[] = {
        {{{0, 0}, {14, -5}}}, {{{3, -5}, {18, -5}}}, {{{6, -5}, {22, -5}}}, {{{9, -5}, {26, -5}}}};
    for (const auto &[position, target] : trace) {
        Pass(leader);
        Pass(follower);
        EXPECT_EQ(PositionOf(follower), position);
        EXPECT_EQ(TargetOf(follower), target);
    }
    leader.State = kStateFinished;
    for (int32_t frame = 0; frame < 10; ++frame) Pass(follower);
    EXPECT_EQ(PositionOf(follower), (Point{26, -5})) << "a finished leader is followed to its last position";

    AttachSprite(follower.Handle(), 0, 1, 1);
    SetSpritePos(leader.Handle(), 500, 500, 500, 500);
    Pass(follower);
    EXPECT_EQ(TargetOf(follower), (Point{26, -5}));

    AttachSprite(leader.Handle(), leader.Handle(), kHighest, kLowest);
    Pass(leader);
    EXPECT_EQ(TargetOf(leader), (Point{kLowest + 499, kLowest + 500})) << "its own leader, and sums wrap";
}

TEST(Movement, CopiesThePictureFieldsOfAnotherSprite) {
    Sprite leader;
    for (int32_t position = 0; position < 1024; position += 4)
        ChangeSpritePara(leader.Handle(), position, 1000 + position);
    Sprite sprite;
    Words expected = WordsOf(sprite);
    AttachSpriteAnim(sprite.Handle(), leader.Handle());
    AnimCopyStage(sprite);
    expected[544] = static_cast<intptr_t>(leader.Handle());
    for (const int32_t position : {4, 8, 12, 16, 20, 24, 28}) expected[position] = 1000 + position;
    EXPECT_EQ(WordsOf(sprite), expected);

    AttachSpriteAnim(sprite.Handle(), sprite.Handle());
    AnimCopyStage(sprite);
    AttachSpriteAnim(sprite.Handle(), 0);
    leader.Frame = 3;
    AnimCopyStage(sprite);
    EXPECT_EQ(sprite.Frame, 1024);
}

TEST(Movement, NamesTheDirectionOfTheTarget) {
    struct Case {
        Point target;
        int32_t code;
    };
    for (const auto &[to, code] :
         {Case{{0, 0}, 0}, Case{{1, -1}, 1}, Case{{1, 0}, 2}, Case{{1, 1}, 3}, Case{{0, 1}, 4},
          Case{{-1, 1}, 5}, Case{{-1, 0}, 6}, Case{{-1, -1}, 7}, Case{{0, -1}, 8}})
        for (const int32_t reach : {1, 2000, kHighest}) {
            Sprite sprite({-to[0], -to[1]}, {to[0] * reach, to[1] * reach}, {0, 0});
            EXPECT_EQ(GetSpriteMoveXY(sprite.Handle()), code);
            EXPECT_EQ(GetSpriteMoveX(sprite.Handle()), to[0]);
            EXPECT_EQ(GetSpriteMoveY(sprite.Handle()), to[1]);
            EXPECT_EQ(HasSpriteArrived(sprite.Handle()), code == 0);
        }
}

// Positions as callers know them. Every word is compared, so nothing else may be written.
TEST(SteeringFunctions, WriteTheDocumentedWords) {
    SpriteRecord other;
    const auto leader = HandleOf(&other);
    const auto leaderWord = static_cast<intptr_t>(leader);
    Words emptyPath;
    for (int32_t position = 348; position <= 472; position += 4) emptyPath[position] = 11111;
    emptyPath[336] = -8;
    Words stripX = {{4, -6}};
    Words stripY = {{8, 1}};
    for (int32_t position = 160; position < 232; position += 4)
        (position % 8 ? stripY : stripX)[position] = position % 8 ? 1 : -6;

    struct Case {
        std::function<int32_t(uintptr_t)> call;
        Words written;
    };
    const Case cases[] = {
        {[](auto s) { return SetSpritePos(s, 1, 2, 3, 4); }, {{32, 1}, {36, 2}, {40, 3}, {44, 4}}},
        {[](auto s) { return SetSpriteSpeed(s, 1, -2); }, {{48, 1}, {52, -2}}},
        {[](auto s) { return SlowDownSprite(s, 1, 2); }, {{528, 1}, {536, 2}}},
        {[](auto s) { return SetSpriteMovingMode(s, -8), 0; }, emptyPath},
        {[](auto s) { return SpriteMovingRect(s, 1, 2, 3, 4); }, {{252, 1}, {256, 2}, {260, 3}, {264, 4}}},
        {[](auto s) { return SetSpriteCage(s, 1, 2, 3, 4, 5, 6); },
         {{496, 1}, {500, 2}, {504, 3}, {508, 4}, {512, 5}, {516, 6}}},
        {[](auto s) { return SpriteTableMode(s, 77), 0; }, {{524, 77}}},
        {[=](auto s) { return AttachSprite(s, leader, 1, 2); }, {{484, leaderWord}, {488, 1}, {492, 2}}},
        {[=](auto s) { return AttachSpriteAnim(s, leader); }, {{544, leaderWord}}},
        {[](auto s) { return ChangeSpritePara(s, 4, -6); }, stripX},
        {[](auto s) { return ChangeSpritePara(s, 8, 1); }, stripY},
        {[](auto s) { return ChangeSpritePara(s, 1020, 9); }, {{1020, 9}}},
        {[](auto s) { return ChangeSpritePara(s, 76, kLowest); }, {{76, kLowest}}},
        {[=](auto s) { return ChangeSpritePara(s, 484, leaderWord); }, {{484, leaderWord}}},
    };
    for (const Case &c : cases) {
        const auto row = &c - cases;
        SpriteRecord record;
        record.SlowCountX = record.SlowCountY = row == 2 ? 5 : 0;
        EXPECT_EQ(c.call(HandleOf(&record)), 0) << "row " << row;
        EXPECT_EQ(WordsOf(record), c.written) << "row " << row;
        EXPECT_EQ(c.call(0), 0) << "row " << row;
    }
    EXPECT_EQ(MoveSpriteWithTable(0, nullptr, 1, 2, 3, 0), 0);
    EXPECT_EQ(HasSpriteArrived(0) + GetSpriteMoveXY(0) + GetSpriteMoveX(0) + GetSpriteMoveY(0), 0);
}

TEST(SteeringFunctions, LeaveAddressesAndForeignPositionsAlone) {
    SpriteRecord record;
    for (const int32_t position : {88, 120, 320, -4, kLowest, 1024, 1028, kHighest, 1, 2, 5, 10, 1021})
        EXPECT_EQ(ChangeSpritePara(HandleOf(&record), position, 0x1234), 0);
    EXPECT_EQ(WordsOf(record), Words{});
}

TEST(SteeringFunctions, SetATargetOnlyWhileThereIsAList) {
    Sprite sprite;
    ASSERT_EQ(SpriteList.load(), nullptr);
    EXPECT_EQ(MoveSprite(sprite.Handle(), 3, 4), 0);
    EXPECT_EQ(TargetOf(sprite), (Point{0, 0}));
    SpriteList = &sprite;
    EXPECT_EQ(MoveSprite(sprite.Handle(), 3, 4), 0);
    EXPECT_EQ(MoveSprite(0, 5, 6), 0);
    SpriteList = nullptr;
    EXPECT_EQ(TargetOf(sprite), (Point{3, 4}));
    EXPECT_EQ(PositionOf(sprite), (Point{0, 0}));
}

// Without a cage or inside the cage the sprite stays; part of one beside part of the other sends it home.
TEST(SteeringFunctions, ChangeACageInOneStep) {
    Sprite sprite({50, 50}, {50, 50}, {0, 0});
    std::atomic<bool> isDone{false};
    std::thread caller([&] {
        for (int32_t call = 0; call < 100000; ++call) {
            SetSpriteCage(sprite.Handle(), 0, 0, 0, 0, 1, 1);
            SetSpriteCage(sprite.Handle(), 40, 40, 60, 60, 2, 2);
        }
        isDone = true;
    });
    int32_t jumps = 0;
    while (!isDone) {
        CageStage(sprite);
        jumps += sprite.X != 50;
        sprite.X = sprite.Y = 50;
    }
    caller.join();
    EXPECT_EQ(jumps, 0);
}

}  // namespace
}  // namespace fenlight
