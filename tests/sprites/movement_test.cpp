// SPDX-License-Identifier: Zlib
#include "sprites/movement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "fenlight/sprite_animation.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

// The stages of movement in the order of the pass.
Point Pass(LooseSprite &sprite) {
    SlowStage(sprite);
    CageStage(sprite);
    LookAheadStage(sprite);
    MovingRectangleStage(sprite);
    MoveStage(sprite);
    return sprite.Position();
}

TEST(StepOnAxis, GoesTowardsTheTargetAndNoFurther) {
    constexpr int32_t kLow = kLowest, kHigh = kHighest;
    // Position, target, speed, slow count, next position. A negative speed runs away from the target, and
    // round the end of the range.
    const std::array<int32_t, 5> cases[] = {
        {20, 10, 99, 0, 10},
        {10, 20, 4, -1, 10},
        {kLow, kHigh, kHigh, 0, -1},
        {kHigh, kLow, kHigh, 0, 0},
        {kHigh - 1, kHigh, kHigh, 0, kHigh},
        {kLow + 1, kLow, kHigh, 0, kLow},
        {10, 20, -3, 0, 7},
        {20, 10, -3, 0, 23},
        {-1, kLow, kLow, 0, kHigh},
    };
    for (const auto &[position, target, speed, slowCount, expected] : cases)
        EXPECT_EQ(StepOnAxis({position, target, speed, slowCount}), expected)
            << position << " to " << target << " by " << speed;
}

TEST(Movement, StepsInOneOfPeriodPlusOneFrames) {
    for (const int32_t period : {-5, 0, 1, 2, 7}) {
        LooseSprite sprite({0, 0}, {1000, 1000}, {5, 3});
        SlowDownSprite(sprite.Handle(), period, 3);
        for (int32_t frame = 1; frame <= 42; ++frame) {
            const int32_t stepsX = frame / (std::max(period, 0) + 1);
            ASSERT_EQ(Pass(sprite), (Point{5 * stepsX, 3 * (frame / 4)})) << period << " frame " << frame;
        }
    }
    LooseSprite sprite;
    sprite.SlowPeriodX = sprite.SlowCountX = kHighest;
    Pass(sprite);
    EXPECT_EQ(sprite.SlowCountX, kLowest) << "the counter wraps";
}

TEST(Movement, SendsASpriteHomeThatIsNotStrictlyInItsCage) {
    constexpr Point kHome = {55, 66};
    const auto isSentHome = [&](std::array<int32_t, 4> cage, Point position) {
        LooseSprite sprite(position, {500, 600}, {1, 1});
        SetSpriteCage(sprite.Handle(), cage[0], cage[1], cage[2], cage[3], kHome[0], kHome[1]);
        CageStage(sprite);
        const bool isHome = sprite.Target() == kHome;
        EXPECT_EQ(sprite.Position(), isHome ? kHome : position);
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
    const struct {
        std::array<int32_t, 4> rect;
        Point position, target;
    } cases[] = {
        {{10, 20, 100, 90}, {11, 89}, {-99, -99}}, {{10, 20, 100, 90}, {10, 50}, {100, -99}},
        {{10, 20, 100, 90}, {6, 20}, {100, 90}},   {{10, 20, 100, 90}, {100, 90}, {10, 20}},
        {{10, 20, 100, 90}, {50, 94}, {-99, 20}},  {{-1, -1, -1, -1}, {-1, -1}, {-99, -99}},
        {{10, -1, -1, -1}, {3, 3}, {-1, -99}},     {{-1, 10, -1, -1}, {3, 3}, {-99, -1}},
        {{-1, -1, 10, -1}, {30, 3}, {-1, -99}},    {{-1, -1, -1, 10}, {30, 30}, {-99, -1}},
        {{100, 5, 10, 5}, {50, 5}, {100, 5}},  // both tests of a pair hold: the later one decides
    };
    for (const auto &[rect, position, target] : cases) {
        LooseSprite sprite(position, {-99, -99}, {0, 0});
        SpriteMovingRect(sprite.Handle(), rect[0], rect[1], rect[2], rect[3]);
        MovingRectangleStage(sprite);
        EXPECT_EQ(sprite.Target(), target) << position[0] << ", " << position[1] << " in " << rect[0];
    }
}

TEST(Movement, FollowsTheLeaderOneFrameLater) {
    LooseSprite leader({0, 0}, {100, 0}, {4, 0});
    LooseSprite follower({0, 0}, {0, 0}, {3, 9});
    AttachSprite(follower.Handle(), leader.Handle(), 10, -5);
    // The leader goes first; the follower steps to its old target and takes the new one then.
    for (const auto &[x, y, targetX] : {std::array{0, 0, 14}, {3, -5, 18}, {6, -5, 22}, {9, -5, 26}}) {
        Pass(leader);
        EXPECT_EQ(Pass(follower), (Point{x, y}));
        EXPECT_EQ(follower.Target(), (Point{targetX, -5}));
    }
    leader.State = kStateFinished;
    for (int32_t frame = 0; frame < 10; ++frame) Pass(follower);
    EXPECT_EQ(follower.Position(), (Point{26, -5})) << "a finished leader is followed to its last position";
    AttachSprite(follower.Handle(), follower.Handle(), kHighest, kLowest);
    Pass(follower);
    EXPECT_EQ(follower.Target(), (Point{kLowest + 25, kHighest - 4})) << "its own leader, and sums wrap";
    AttachSprite(follower.Handle(), follower.Handle(), 0, 0);
    const int16_t waypoint[] = {77, 88};
    MoveSpriteWithTable(follower.Handle(), waypoint, 1, 0, 0, 0);
    Pass(follower);
    EXPECT_EQ(follower.Target(), (Point{77, 88})) << "a waypoint has the last word";
    AttachSprite(follower.Handle(), 0, 1, 1);
    MoveSpriteWithTable(follower.Handle(), nullptr, 0, 0, 0, 0);
    SetSpritePos(follower.Handle(), 5, 5, 5, 5);
    EXPECT_EQ(Pass(follower), (Point{5, 5}));
    EXPECT_EQ(follower.Target(), (Point{5, 5}));
}

TEST(Movement, CopiesThePictureFieldsOfAnotherSprite) {
    SpriteRecord leader;
    for (int32_t position = 0; position < 1024; position += 4) WriteWord(leader, position, 1000 + position);
    SpriteRecord record;
    AttachSpriteAnim(HandleOf(&record), HandleOf(&leader));
    Words expected = WordsOf(record);
    for (const int32_t position : {4, 8, 12, 16, 20, 24, 28}) expected[position] = 1000 + position;
    AnimCopyStage(record);
    EXPECT_EQ(WordsOf(record), expected);
    for (const uintptr_t next : {HandleOf(&record), uintptr_t{0}}) {
        AttachSpriteAnim(HandleOf(&record), next);
        AnimCopyStage(record);
        EXPECT_EQ(record.Frame, 1024);
    }
}

// Each heading by its code, and the strip that the sprite shows for it; that for standing is shown in the
// pass after the last step.
TEST(Movement, NamesTheDirectionOfTheTargetAndShowsItsStrip) {
    constexpr Point kHeadings[] = {{0, 0},  {1, -1}, {1, 0},   {1, 1}, {0, 1},
                                   {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}};
    for (int32_t code = 0; code < 9; ++code)
        for (const int32_t reach : {1, 2000, kHighest}) {
            const auto [x, y] = kHeadings[code];
            LooseSprite sprite({-x, -y}, {x * reach, y * reach}, {kHighest, kHighest});
            for (int32_t direction = 0; direction < 9; ++direction)
                SetSpriteAnimMove(sprite.Handle(), direction, 100 + direction, 200 + direction);
            EXPECT_EQ(GetSpriteMoveXY(sprite.Handle()), code);
            EXPECT_EQ(GetSpriteMoveX(sprite.Handle()), x) << code;
            EXPECT_EQ(GetSpriteMoveY(sprite.Handle()), y) << code;
            EXPECT_EQ(HasSpriteArrived(sprite.Handle()), code == 0);
            for (const int32_t shown : {code, reach == kHighest ? code : 0}) {
                FacingStage(sprite);
                MoveStage(sprite);
                EXPECT_EQ((Point{sprite.SourceX, sprite.SourceY}), (Point{100 + shown, 200 + shown}));
            }
        }
}

// What callers' numbers make of the words, at the positions that they know. Every word is compared.
TEST(SteeringFunctions, WriteTheDocumentedWords) {
    Words strip = {{4, 11}, {8, 22}, {12, 3}, {16, 4}, {20, 5}, {24, 6}, {28, 7}};
    Words stripX = {{4, -6}}, stripY = {{8, 1}};
    for (int32_t position = 160; position < 232; position += 8) {
        strip[position] = 11;
        strip[position + 4] = 22;
        stripX[position] = -6;
        stripY[position + 4] = 1;
    }
    const std::pair<std::function<void(uintptr_t)>, Words> cases[] = {
        {[](auto s) { SlowDownSprite(s, 1, 2); }, {{528, 1}, {536, 2}}},
        {[](auto s) { SetSpriteAnim(s, 11, 22, 3, 4, 5, 6, 7); }, strip},
        {[](auto s) { SetSpriteAnimMove(s, 8, 3, 4); }, {{216, 3}, {220, 4}}},
        {[](auto s) { SetSpriteAnimMode(s, kLowest); }, {{144, 1}}},
        {[](auto s) { ChangeSpritePara(s, 4, -6); }, stripX},
        {[](auto s) { ChangeSpritePara(s, 8, 1); }, stripY},
        {[](auto s) { ChangeSpritePara(s, 76, kLowest); }, {{76, kLowest}}},
        {[](auto s) { ChangeSpritePara(s, 484, intptr_t{5} << 40); }, {{484, intptr_t{5} << 40}}},
        {[](auto s) {
             for (const int32_t direction : {-1, 9, kLowest, kHighest}) SetSpriteAnimMove(s, direction, 1, 2);
             // Addresses and foreign positions.
             for (const int32_t position : {88, 120, 320, -4, kLowest, 1024, kHighest, 1, 2, 5, 10, 1021})
                 ChangeSpritePara(s, position, 0x1234);
         },
         {}},
    };
    for (const auto &[call, written] : cases) {
        SpriteRecord record;
        record.FrameTimer = written == strip ? 9 : 0;  // starts anew
        record.SlowCountX = record.SlowCountY = written.contains(528) ? 5 : 0;
        call(HandleOf(&record));
        EXPECT_EQ(WordsOf(record), written) << "row " << &written - &cases[0].second;
        call(0);
    }
}

TEST(SteeringFunctions, TakeHandleZeroForNoSprite) {
    SetSpriteMovingMode(0, 1);
    SpriteTableMode(0, 1);
    for (const int32_t result :
         {SetSpritePos(0, 1, 2, 3, 4), SetSpriteSpeed(0, 1, 2), SpriteMovingRect(0, 1, 2, 3, 4),
          SetSpriteCage(0, 1, 2, 3, 4, 5, 6), AttachSprite(0, 1, 2, 3), AttachSpriteAnim(0, 1),
          MoveSpriteWithTable(0, nullptr, 1, 2, 3, 0), HasSpriteArrived(0), GetSpriteMoveXY(0),
          GetSpriteMoveX(0), GetSpriteMoveY(0), GetSpriteAnimModeStatus(0)})
        EXPECT_EQ(result, 0);
}

// Without a cage or inside the cage the sprite stays; part of one beside part of the other sends it home.
TEST(SteeringFunctions, ChangeACageInOneStep) {
    LooseSprite sprite({50, 50}, {50, 50}, {0, 0});
    const auto change = [&](int32_t call) {
        const int32_t edge = call % 2 * 20;
        SetSpriteCage(sprite.Handle(), 2 * edge, 2 * edge, 3 * edge, 3 * edge, call % 2, 1);
    };
    const auto hasJumped = [&] {
        CageStage(sprite);
        const bool isElsewhere = sprite.X != 50;
        sprite.X = sprite.Y = 50;
        return isElsewhere;
    };
    EXPECT_EQ(CountBeside(3000000, change, hasJumped), 0);
}

}  // namespace
}  // namespace fenlight
