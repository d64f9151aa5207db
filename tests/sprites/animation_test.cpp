// SPDX-License-Identifier: Zlib
#include "sprites/animation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "fenlight/sprite_animation.h"
#include "fenlight/sprite_movement.h"
#include "sprites/record_words.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

struct Strip {
    int32_t frameCount;
    int32_t startFrame;
    int32_t delay;
};

void ShowStrip(SpriteRecord &record, const Strip &strip) {
    SetSpriteAnim(HandleOf(&record), 0, 0, 32, 32, strip.frameCount, strip.startFrame, strip.delay);
}

TEST(AnimStage, ShowsEachFrameForTheDelay) {
    struct Case {
        const char *name;
        Strip strip;
        int32_t mode;
        std::function<int32_t(int32_t)> frameIn;  // the frame drawn in pass 0, 1, ...
        std::function<int32_t(int32_t)> statusAfter;
    };
    const auto never = [](int32_t) { return 0; };
    const auto always = [](int32_t) { return 1; };
    const Case cases[] = {
        {"circles", {4, 1, 3}, 0, [](int32_t p) { return p / 3 % 4 + 1; }, never},
        {"circles, started late", {4, 3, 2}, 0, [](int32_t p) { return (p / 2 + 2) % 4 + 1; }, never},
        {"every pass", {5, 1, 1}, 0, [](int32_t p) { return p % 5 + 1; }, never},
        // Frame 4 is set at the end of pass 8 and first drawn in pass 9.
        {"once",
         {4, 1, 3},
         5,
         [](int32_t p) { return std::min(p / 3 + 1, 4); },
         [](int32_t p) { return p >= 8 ? 1 : 0; }},
        {"still picture", {1, 1, 2}, 0, [](int32_t) { return 1; }, never},
        {"still picture once", {1, 1, 2}, 1, [](int32_t) { return 1; }, always},
        {"no delay", {4, 2, 0}, 0, [](int32_t) { return 2; }, never},
        {"negative delay", {4, 2, -1}, 1, [](int32_t) { return 2; }, never},
        {"beyond the strip", {4, 5, 2}, 1, [](int32_t p) { return p / 2 + 5; }, never},
    };
    for (const Case &c : cases) {
        SpriteRecord record;
        ShowStrip(record, c.strip);
        EXPECT_EQ(SetSpriteAnimMode(HandleOf(&record), c.mode), 0);
        for (int32_t pass = 0; pass < 40; ++pass) {
            ASSERT_EQ(record.Frame, c.frameIn(pass)) << c.name << " pass " << pass;
            AnimStage(record);
            ASSERT_EQ(GetSpriteAnimModeStatus(HandleOf(&record)), c.statusAfter(pass))
                << c.name << " pass " << pass;
        }
    }
}

TEST(AnimStage, StopsWhereADelayIsWrittenBelowTheTimer) {
    SpriteRecord record;
    ShowStrip(record, {4, 1, 10});
    for (int32_t pass = 0; pass < 5; ++pass) AnimStage(record);
    ChangeSpritePara(HandleOf(&record), 28, 3);
    for (int32_t pass = 0; pass < 50; ++pass) AnimStage(record);
    EXPECT_EQ(record.Frame, 1);
    ShowStrip(record, {4, 1, 3});
    for (int32_t pass = 0; pass < 3; ++pass) AnimStage(record);
    EXPECT_EQ(record.Frame, 2) << "a new strip starts the timer anew";
    record.FrameTimer = kHighest;
    AnimStage(record);
    EXPECT_EQ(record.FrameTimer, kLowest) << "the timer wraps";
    ShowStrip(record, {kLowest, kHighest, 1});
    AnimStage(record);
    EXPECT_EQ(record.Frame, kLowest) << "the frame wraps";
}

// Nine strips, sprites on their way in all directions, and the strip for standing in the pass after the last
// step.
TEST(FacingStage, ShowsTheStripOfTheHeading) {
    SpriteRecord record;
    const auto sprite = HandleOf(&record);
    for (int32_t direction = 0; direction < 9; ++direction)
        EXPECT_EQ(SetSpriteAnimMove(sprite, direction, 100 + direction, 200 + direction), 0);
    const auto words = WordsOf(record);
    EXPECT_EQ(words.at(160), 101);
    EXPECT_EQ(words.at(220), 208);
    EXPECT_EQ(words.at(224), 100);
    for (const int32_t direction : {-1, 9, kLowest, kHighest})
        EXPECT_EQ(SetSpriteAnimMove(sprite, direction, 1, 2), 0);
    EXPECT_EQ(WordsOf(record), words);

    SetSpriteSpeed(sprite, 1, 1);
    constexpr int32_t kCodes[3][3] = {{7, 8, 1}, {6, 0, 2}, {5, 4, 3}};
    for (int32_t y = -1; y <= 1; ++y)
        for (int32_t x = -1; x <= 1; ++x) {
            SetSpritePos(sprite, 50, 60, 50 + x, 60 + y);
            for (const int32_t code : {kCodes[y + 1][x + 1], 0}) {
                FacingStage(record);
                MoveStage(record);
                EXPECT_EQ(record.SourceX, 100 + code) << x << ", " << y;
                EXPECT_EQ(record.SourceY, 200 + code) << x << ", " << y;
            }
        }
}

TEST(SetSpriteAnim, WritesTheStripForAllDirectionsAndNothingElse) {
    SpriteRecord record;
    record.AnimOnce = 1;
    record.FrameTimer = 9;
    EXPECT_EQ(SetSpriteAnim(HandleOf(&record), 11, 22, 3, 4, 5, 6, 7), 0);
    std::map<int32_t, intptr_t> expected = {{4, 11}, {8, 22}, {12, 3}, {16, 4},
                                            {20, 5}, {24, 6}, {28, 7}, {144, 1}};
    for (int32_t position = 160; position < 232; position += 8) {
        expected[position] = 11;
        expected[position + 4] = 22;
    }
    EXPECT_EQ(WordsOf(record), expected);

    SetSpriteAnimMode(HandleOf(&record), kLowest);
    EXPECT_EQ(record.AnimOnce, 1);
    SetSpriteAnimMode(HandleOf(&record), 0);
    EXPECT_EQ(record.AnimOnce, 0);
    EXPECT_EQ(SetSpriteAnim(0, 1, 2, 3, 4, 5, 6, 7) + SetSpriteAnimMove(0, 1, 2, 3) +
                  SetSpriteAnimMode(0, 1) + GetSpriteAnimModeStatus(0),
              0);
}

}  // namespace
}  // namespace fenlight
