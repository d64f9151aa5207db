// SPDX-License-Identifier: Zlib
// The tests of boxes, the search for pairs and the point under the mouse, on lists without a thread.
#include <gtest/gtest.h>

#include <algorithm>

#include "fenlight/sprite_collision.h"
#include "fenlight/sprite_layers.h"
#include "frame/vector_level.h"
#include "platform/system/failure_point.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_scene.h"

namespace fenlight::test {
namespace {

using Handles = std::vector<uintptr_t>;

uintptr_t AddBox(int32_t x, int32_t y, int32_t width, int32_t height) {
    return HandleOf(&Scene::Add({0, 0, 0, 0, 0, 0, width, height, 1, 1, 0, x, y, 0, 0}));
}

TEST(CollideBoxes, CountTheEdgeOnePixelPastTheFrame) {
    const struct {
        std::array<int32_t, 4> other;  // X, Y, Width, Height beside one of 10 x 8 at (0, 0)
        int32_t result;
    } cases[] = {{{10, 0, 5, 5}, 1},   {{11, 0, 5, 5}, 0},       {{-5, 0, 5, 5}, 1},
                 {{-6, 0, 5, 5}, 0},   {{0, 8, 5, 5}, 1},        {{0, 9, 5, 5}, 0},
                 {{0, -5, 5, 5}, 1},   {{0, -6, 5, 5}, 0},       {{10, 8, 5, 5}, 1},
                 {{10, 9, 5, 5}, 0},   {{3, 3, 2, 2}, 1},        {{-9, -9, 99, 99}, 1},
                 {{4, -50, 0, 99}, 1}, {{kHighest, 0, 9, 9}, 0}, {{kLowest, 0, 9, 9}, 0}};
    for (const auto &test : cases) {
        const Scene scene;
        const uintptr_t a = AddBox(0, 0, 10, 8);
        const uintptr_t b = AddBox(test.other[0], test.other[1], test.other[2], test.other[3]);
        const Handles table{0, b};
        uintptr_t pair[2];
        SCOPED_TRACE(testing::PrintToString(test.other));
        EXPECT_EQ(Collide(a, b), test.result);
        EXPECT_EQ(Collide(b, a), test.result);
        EXPECT_EQ(CollideMore(a, table.data(), 2), test.result ? b : 0);
        EXPECT_EQ(CollideAll(a), test.result ? b : 0);
        EXPECT_EQ(CollideUnknown(pair), test.result);
    }
}

TEST(CollideBoxes, HaveTheirOwnRulesOfWhoTakesPart) {
    const Scene scene;
    const uintptr_t a = AddBox(0, 0, 10, 10), b = AddBox(2, 2, 10, 10), c = AddBox(4, 4, 10, 10);
    const Handles table{c, a, b};
    uintptr_t pairs[6];
    EXPECT_EQ(CollideMore(a, table.data(), 3), c) << "the first in the table";
    EXPECT_EQ(CollideMore(a, table.data() + 1, 2), a) << "itself, if it stands there";
    EXPECT_EQ(CollideMore(a, table.data(), 0), 0u);
    EXPECT_EQ(CollideAll(b), a);
    EXPECT_EQ(CollideAll(a), b) << "the first in the list, not itself";
    EXPECT_EQ(Collide(a, a), 1);
    SwapSpriteLayers(b, c);  // the frame's chain still has the old order
    EXPECT_EQ(CollideAll(a), c);

    RecordOf(a)->State = 1;
    EXPECT_EQ(Collide(a, b) + Collide(b, a) + Collide(a, a) + Collision(a, b, 1, 1), 0);
    EXPECT_EQ(CollideMore(a, table.data(), 3), c);
    EXPECT_EQ(CollideAll(a), c);
    EXPECT_EQ(CollideMore(b, table.data() + 1, 1), 0u) << "found by nobody";
    ASSERT_EQ(CollideUnknown(pairs), 1);
    EXPECT_EQ(Handles(pairs, pairs + 2), (Handles{c, b}));

    RecordOf(a)->State = 0;
    RecordOf(c)->FixMode = 7;
    EXPECT_EQ(CollideAll(a), c);
    EXPECT_EQ(Collide(a, c), 1);
    ASSERT_EQ(CollideUnknown(pairs), 1);
    EXPECT_EQ(Handles(pairs, pairs + 2), (Handles{a, b}));
}

TEST(CollideBoxes, GiveNothingForNothing) {
    const uintptr_t table[] = {0, 0};
    uintptr_t pairs[2];
    EXPECT_EQ(CollideAll(0) + CollideMore(0, table, 2) + MouseOverSprite(table, 2, 0, 0), 0u);
    EXPECT_EQ(Collide(0, 0) + Collision(0, 0, 1, 1) + CollideUnknown(pairs) + CollideUnknown(nullptr), 0);
    EXPECT_EQ(SetBackAutoCollision(0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    const Scene scene;
    const uintptr_t a = AddBox(0, 0, 10, 10);
    EXPECT_EQ(CollideUnknown(pairs), 0);
    EXPECT_EQ(CollideMore(a, nullptr, 5) + CollideMore(a, table, 2) + CollideMore(a, &a, -1), 0u);
    EXPECT_EQ(MouseOverSprite(nullptr, 5, 1, 1) + MouseOverSprite(&a, 0, 1, 1), 0u);
    EXPECT_EQ(Collide(a, 0) + Collide(0, a) + Collision(a, 0, 1, 1), 0);
    RecordOf(a)->ImageDC = scene.image;
    EXPECT_EQ(Collision(a, a, 1, 1), 1);
    EXPECT_EQ(Collision(a, a, 0, 1) + Collision(a, a, 1, -1), 0);
}

// Every pair in the list's order, by the rules one after the other.
Handles AllPairs(const std::array<uintptr_t, 4> &filter) {
    Handles pairs;
    for (SpriteRecord *a = SpriteList.load(); a != nullptr; a = NextOf(*a))
        for (SpriteRecord *b = NextOf(*a); b != nullptr; b = NextOf(*b)) {
            if (a->FixMode != 0 || b->FixMode != 0 || Collide(HandleOf(a), HandleOf(b)) == 0) continue;
            const bool isHeld = std::any_of(filter.begin(), filter.end(), [&](uintptr_t sprite) {
                return sprite != 0 && (sprite == a->Self || sprite == b->Self);
            });
            if (filter[3] == 0 || isHeld) pairs.insert(pairs.end(), {HandleOf(a), HandleOf(b)});
        }
    return pairs;
}

Handles FoundPairs(size_t expected) {
    Handles pairs(expected + 2, 1);
    const int32_t count = CollideUnknown(pairs.data());
    EXPECT_EQ(pairs[expected] + pairs[expected + 1], 2u) << "written beyond the pairs";
    pairs.resize(2 * static_cast<size_t>(count));
    return pairs;
}

TEST(CollideUnknown, FindsThePairsOfThePlainSearchInItsOrder) {
    std::mt19937 random(11);
    const auto from = [&random](int64_t lowest, int64_t highest) {
        return static_cast<int32_t>(
            lowest + static_cast<int64_t>(random() % static_cast<uint64_t>(highest - lowest + 1)));
    };
    constexpr struct {
        int32_t count, world, largest;
        bool hasStrays;  // a few at the ends of all numbers, or as large as the world
    } kLists[] = {{2, 20, 20, false},     {23, 60, 20, true},
                  {24, 60, 20, false},    {64, 100, 30, true},
                  {65, 1, 9, false},      {300, 900, 40, true},
                  {513, 2000, 50, true},  {700, 40, 30, false},
                  {1100, 9000, 60, true}, {200, kHighest, kHighest, true}};
    for (const auto &list : kLists) {
        SCOPED_TRACE(testing::Message() << list.count << " sprites in " << list.world);
        const Scene scene;
        Handles sprites;
        for (int32_t i = 0; i < list.count; ++i) {
            const bool isStray = list.hasStrays && random() % 16 == 0, isFar = isStray && random() % 2 == 0;
            const int32_t lowest = isFar ? kLowest : 0, highest = isFar ? kHighest : list.world;
            const int32_t largest = isStray ? list.world : list.largest;
            const int32_t x = from(lowest, highest), y = from(lowest, highest);
            sprites.push_back(AddBox(x, y, from(-2, largest), from(-2, largest)));
            RecordOf(sprites.back())->FixMode = random() % 20 == 0;
            RecordOf(sprites.back())->State = random() % 20 == 0 ? 2 : 0;
        }
        for (int i = 0; i < 5; ++i) SwapSpriteLayers(sprites[random() % sprites.size()], sprites.back());
        const auto any = [&] { return sprites[random() % sprites.size()]; };
        const std::array<uintptr_t, 4> filters[] = {
            {}, {any(), any(), any(), 0}, {any(), 0, any(), any()}, {0, 0, 0, any()}};
        for (const auto &filter : filters) {
            SetCollideUnknownSprite(filter[0], filter[1], filter[2], filter[3]);
            const Handles expected = AllPairs(filter);
            for (const VectorLevel level : {VectorLevel::Plain, VectorLevel::Avx2, VectorLevel::Avx512}) {
                ForceVectorLevel(level);
                ASSERT_EQ(FoundPairs(expected.size()), expected) << "level " << static_cast<int>(level);
            }
            platform::FailFrom(platform::Operation::Memory, 1);
            EXPECT_EQ(FoundPairs(expected.size()), expected) << "without memory";
            platform::ForgetFailures();
        }
    }
    SetCollideUnknownSprite(0, 0, 0, 0);
    ReleaseVectorLevel();
}

TEST(MouseOverSprite, LooksAtTheViewAndAtTheFirstRecord) {
    const Scene scene;
    const uintptr_t first = AddBox(500, 500, 1, 1), inWorld = AddBox(100, 80, 10, 8),
                    inView = AddBox(60, 60, 10, 8);
    const Handles table{inWorld, 0, inView};
    RecordOf(first)->ScrollX = 40;
    RecordOf(first)->ScrollY = 20;
    RecordOf(inView)->ScrollMode = 1;
    const auto at = [&](int32_t x, int32_t y) { return MouseOverSprite(table.data(), 3, x, y); };
    EXPECT_EQ(at(60, 60), inWorld) << "both lie there, the first in the table is found";
    EXPECT_EQ(at(69, 67), inWorld);
    EXPECT_EQ(at(70, 60) + at(60, 68) + at(59, 60) + at(60, 59) + at(100, 80), 0u);
    RecordOf(inWorld)->State = 3;
    EXPECT_EQ(at(60, 60), inWorld) << "its own State is not looked at";
    RecordOf(inWorld)->ScrollMode = 2;
    EXPECT_EQ(at(60, 60), inWorld) << "only 1 is fixed to the view";
    RecordOf(inWorld)->ScrollMode = 1;
    EXPECT_EQ(at(60, 60), inView);
    EXPECT_EQ(at(100, 80), inWorld);
    RecordOf(first)->State = 3;
    EXPECT_EQ(at(100, 80), 0u);
}

}  // namespace
}  // namespace fenlight::test
