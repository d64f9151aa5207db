// SPDX-License-Identifier: Zlib
#include "sprites/waypoint_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <thread>
#include <tuple>
#include <vector>

#include "fenlight/sprite_movement.h"
#include "platform/system/failure_point.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
constexpr int16_t kPoints[] = {3, 0, 3, -2, -1, 0};

// A sprite that frees its table.
struct TableSprite : SpriteRecord {
    ~TableSprite() { FreeWaypointTable(*this); }
    uintptr_t Handle() { return HandleOf(this); }
    void Place(int32_t x, int32_t y) { SetSpritePos(Handle(), x, y, x, y); }
};

using TableWords = std::array<int32_t, 4>;
TableWords WordsOf(const SpriteRecord &record) {
    return {record.TableIndex, record.TableLength, record.TableBaseX, record.TableBaseY};
}

using Trace = std::vector<std::array<int32_t, 5>>;  // X, Y, TargetX, TargetY, TableIndex

Trace RunTable(int32_t tableMode, int32_t frames) {
    TableSprite sprite;
    sprite.Place(10, 20);
    SetSpriteSpeed(sprite.Handle(), 2, 2);
    SpriteTableMode(sprite.Handle(), tableMode);
    {
        std::vector<int16_t> array(std::begin(kPoints), std::end(kPoints));
        EXPECT_EQ(MoveSpriteWithTable(sprite.Handle(), array.data(), 3, 10, 20, 0), 0);
        std::fill(array.begin(), array.end(), int16_t{-9999});
    }
    Trace trace;
    for (int32_t frame = 0; frame < frames; ++frame) {
        MoveStage(sprite);
        trace.push_back({sprite.X, sprite.Y, sprite.TargetX, sprite.TargetY, sprite.TableIndex});
    }
    return trace;
}

// Worked out by hand: waypoints (13, 20), (13, 18), (9, 20), two pixels a frame, the next target in the frame
// of arrival.
TEST(WaypointTable, LeadsFromPointToPoint) {
    const Trace common = {{10, 20, 13, 20, 1}, {12, 20, 13, 20, 1}, {13, 20, 13, 18, 2}};
    Trace once = common;
    once.insert(once.end(), {{13, 18, 9, 20, 2}, {11, 20, 9, 20, 2}, {9, 20, 9, 20, 2}, {9, 20, 9, 20, 2}});
    EXPECT_EQ(RunTable(1, 7), once);
    Trace repeated = common;
    repeated.insert(repeated.end(),
                    {{13, 18, 9, 20, 0}, {11, 20, 9, 20, 0}, {9, 20, 13, 20, 1}, {11, 20, 13, 20, 1}});
    for (const int32_t mode : {0, 2, -1}) EXPECT_EQ(RunTable(mode, 7), repeated) << "mode " << mode;
}

TEST(WaypointTable, TakesOneWaypointPerRunOfALine) {
    TableSprite sprite;
    SetSpriteSpeed(sprite.Handle(), 5, 0);
    const int16_t points[] = {2, 0, 2, 3};
    MoveSpriteWithTable(sprite.Handle(), points, 2, 0, 0, 0);
    SetSpriteMovingMode(sprite.Handle(), 1);
    for (const auto &[x, y] : {std::pair{2, 0}, {2, 3}, {2, 0}}) {
        MoveStage(sprite);
        EXPECT_EQ(std::pair(+sprite.X, +sprite.Y), std::pair(x, y));
        EXPECT_EQ(HasSpriteArrived(sprite.Handle()), 1) << "seen between two frames";
    }
}

TEST(WaypointTable, IsTakenAwayByWhatHoldsNoWaypoint) {
    struct Case {
        const char *name;
        const int16_t *points;
        int32_t entries;
        bool isOutOfMemory;
    };
    const Case cases[] = {{"no array", nullptr, 3, false},
                          {"no entries", kPoints, 0, false},
                          {"fewer than none", kPoints, kLowest, false},
                          {"no memory", kPoints, 3, true}};
    for (const Case &c : cases) {
        TableSprite sprite;
        MoveSpriteWithTable(sprite.Handle(), kPoints, 3, 7, 8, 2);
        sprite.TargetX = 50;
        if (c.isOutOfMemory) platform::FailOnce(platform::Operation::Memory, 1);
        EXPECT_EQ(MoveSpriteWithTable(sprite.Handle(), c.points, c.entries, 1, 2, 1), 0) << c.name;
        platform::ForgetFailures();
        EXPECT_EQ(sprite.Table, 0U) << c.name;
        EXPECT_EQ(WordsOf(sprite), TableWords{}) << c.name;
        MoveStage(sprite);
        EXPECT_EQ(sprite.TargetX, 50) << c.name;
    }
}

// Whatever callers put into the words, the target is one of the table's or stays as it was.
TEST(WaypointTable, ReadsInsideTheTableOnly) {
    for (const int32_t start : {kLowest, -1, 3, kHighest}) {
        TableSprite sprite;
        MoveSpriteWithTable(sprite.Handle(), kPoints, 3, 1, 2, start);
        EXPECT_EQ(WordsOf(sprite), (TableWords{0, 3, 1, 2})) << "start " << start;
    }
    for (const int32_t index : {kLowest, -1, 0, 1, 2, 3, 1 << 28, kHighest})
        for (const int32_t length : {kLowest, 0, 1, 2, 3, 4, kHighest}) {
            TableSprite sprite;
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

TEST(WaypointTable, CopyHasABlockOfItsOwn) {
    TableSprite source;
    MoveSpriteWithTable(source.Handle(), kPoints, 3, 100, 200, 1);
    TableSprite copy;
    ASSERT_TRUE(CopyWaypointTable(source, copy));
    EXPECT_NE(copy.Table, source.Table);
    MoveSpriteWithTable(source.Handle(), nullptr, 0, 0, 0, 0);
    TakeNextWaypoint(copy);
    EXPECT_EQ(std::tuple(+copy.TargetX, +copy.TargetY, +copy.TableIndex), std::tuple(103, 198, 2));

    TableSprite second;
    platform::FailOnce(platform::Operation::Memory, 1);
    EXPECT_FALSE(CopyWaypointTable(copy, second));
    platform::ForgetFailures();
    EXPECT_EQ(second.Table, 0U);
    EXPECT_TRUE(CopyWaypointTable(source, second)) << "nothing to copy is no failure";
}

// Each table's waypoints and base add up to (0, 0), so any mixture of two tables shows as another target.
TEST(WaypointTable, IsReplacedWholeBesideARunningThread) {
    TableSprite sprite;
    std::atomic<bool> isDone{false};
    std::thread caller([&] {
        for (int32_t call = 0; call < 50000; ++call) {
            const auto k = static_cast<int16_t>(call % 50 + 1);
            const std::vector<int16_t> points(static_cast<size_t>(2 * k), k);
            MoveSpriteWithTable(sprite.Handle(), points.data(), k, -k, -k, k - 1);
        }
        isDone = true;
    });
    int32_t mixtures = 0;
    while (!isDone) {
        TakeNextWaypoint(sprite);
        mixtures += sprite.TargetX != 0 || sprite.TargetY != 0;
        sprite.TargetX = sprite.TargetY = 0;
    }
    caller.join();
    EXPECT_EQ(mixtures, 0);
}

}  // namespace
}  // namespace fenlight
