// SPDX-License-Identifier: Zlib
#include "sprites/waypoint_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/system/failure_point.h"
#include "sprites/loose_sprite.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

constexpr int16_t kPoints[] = {3, 0, 3, -4, -1, 0};

using Trace = std::vector<std::array<int32_t, 5>>;  // X, Y, TargetX, TargetY, TableIndex

Trace RunTable(int32_t tableMode) {
    LooseSprite sprite({10, 20}, {10, 20}, {2, 2});
    SpriteTableMode(sprite.Handle(), tableMode);
    std::vector<int16_t> array(std::begin(kPoints), std::end(kPoints));
    EXPECT_EQ(MoveSpriteWithTable(sprite.Handle(), array.data(), 3, 10, 20, 0), 0);
    std::fill(array.begin(), array.end(), int16_t{-9999});  // the caller's array can go
    Trace trace;
    for (int32_t frame = 0; frame < 8; ++frame) {
        MoveStage(sprite);
        trace.push_back({sprite.X, sprite.Y, sprite.TargetX, sprite.TargetY, sprite.TableIndex});
    }
    return trace;
}

// Worked out by hand: waypoints (13, 20), (13, 16), (9, 20), the next target in the frame of arrival.
TEST(WaypointTable, LeadsFromPointToPoint) {
    Trace expected = {{10, 20, 13, 20, 1}, {12, 20, 13, 20, 1}, {13, 20, 13, 16, 2}, {13, 18, 13, 16, 2},
                      {13, 16, 9, 20, 2},  {11, 18, 9, 20, 2},  {9, 20, 9, 20, 2},   {9, 20, 9, 20, 2}};
    EXPECT_EQ(RunTable(1), expected);
    expected[4][4] = expected[5][4] = 0;
    expected[6] = {9, 20, 13, 20, 1};
    expected[7] = {11, 20, 13, 20, 1};
    for (const int32_t mode : {0, 2, -1}) EXPECT_EQ(RunTable(mode), expected) << "mode " << mode;
}

TEST(WaypointTable, TakesOneWaypointPerRunOfALine) {
    LooseSprite sprite({0, 0}, {0, 0}, {5, 0});
    const int16_t points[] = {2, 0, 2, 3};
    MoveSpriteWithTable(sprite.Handle(), points, 2, 0, 0, 0);
    SetSpriteMovingMode(sprite.Handle(), 1);
    for (const Point expected : {Point{2, 0}, {2, 3}, {2, 0}}) {
        MoveStage(sprite);
        EXPECT_EQ(sprite.Position(), expected);
        EXPECT_EQ(HasSpriteArrived(sprite.Handle()), 1) << "seen between two frames";
    }
}

TEST(WaypointTable, IsTakenAwayByWhatHoldsNoWaypoint) {
    const std::pair<const int16_t *, int32_t> cases[] = {
        {nullptr, 3}, {kPoints, 0}, {kPoints, kLowest}, {kPoints, 3}};  // the last finds no memory
    for (const auto &[points, entries] : cases) {
        LooseSprite sprite;
        Words expected = WordsOf(sprite);
        MoveSpriteWithTable(sprite.Handle(), kPoints, 3, 7, 8, 2);
        platform::FailOnce(platform::Operation::Memory, 1);
        EXPECT_EQ(MoveSpriteWithTable(sprite.Handle(), points, entries, 1, 2, 1), 0) << entries;
        platform::ForgetFailures();
        MoveStage(sprite);
        EXPECT_EQ(WordsOf(sprite), expected) << entries;
    }
}

// Whatever callers put into the words, the target is one of the table's or stays as it was.
TEST(WaypointTable, ReadsInsideTheTableOnly) {
    for (const int32_t start : {kLowest, -1, 3, kHighest}) {
        LooseSprite sprite;
        MoveSpriteWithTable(sprite.Handle(), kPoints, 3, 1, 2, start);
        EXPECT_EQ(sprite.TableIndex, 0) << "start " << start;
    }
    for (const int32_t index : {kLowest, -1, 0, 1, 2, 3, 1 << 28, kHighest})
        for (const int32_t length : {kLowest, 0, 1, 2, 3, 4, kHighest}) {
            LooseSprite sprite;
            MoveSpriteWithTable(sprite.Handle(), kPoints, 3, kHighest, 0, 0);
            ChangeSpritePara(sprite.Handle(), 312, index);
            ChangeSpritePara(sprite.Handle(), 316, length);
            ChangeSpritePara(sprite.Handle(), 320, 0x10);
            TakeNextWaypoint(sprite);
            const int32_t entries = std::min(length, 3);
            const int32_t used = index >= 0 && index < entries ? index : 0;
            const int32_t wrapped[] = {kLowest + 2, kLowest + 2, kHighest - 1};
            EXPECT_EQ(sprite.TargetX, entries < 1 ? 0 : wrapped[used]) << index << " of " << length;
            EXPECT_EQ(sprite.TableIndex, entries < 1 ? index : (used + 1) % entries)
                << index << " of " << length;
        }
}

// Each table's waypoints and base add up to (0, 0), so any mixture of two tables shows as another target.
TEST(WaypointTable, IsReplacedWholeBesideARunningThread) {
    LooseSprite sprite;
    const auto replace = [&](int32_t call) {
        const auto k = static_cast<int16_t>(call % 50 + 1);
        const std::vector<int16_t> points(static_cast<size_t>(2 * k), k);
        MoveSpriteWithTable(sprite.Handle(), points.data(), k, -k, -k, k - 1);
    };
    const auto isMixture = [&] {
        TakeNextWaypoint(sprite);
        const Point target = sprite.Target();
        sprite.TargetX = sprite.TargetY = 0;
        return target != Point{0, 0};
    };
    EXPECT_EQ(CountBeside(100000, replace, isMixture), 0);
}

}  // namespace
}  // namespace fenlight
