// SPDX-License-Identifier: Zlib
#include "fenlight/sprite_list.h"

#include <gtest/gtest.h>

#include "fenlight/sprite_animation.h"
#include "fenlight/sprite_movement.h"
#include "fenlight/sprite_thread.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_scene.h"
#include "sprites/stages.h"

namespace fenlight::test {
namespace {

using platform::CountHandles;
using platform::HandleKind;
using platform::Operation;

constexpr SpriteArguments kArguments{11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25};

TEST(SpriteList, StoresTheArgumentsWhereTheyBelong) {
    Scene scene;
    scene.Add(1, 1);
    const uintptr_t sprite = InitSprite(11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25);
    Words expected = {{68, 13}, {84, 14}, {120, static_cast<intptr_t>(sprite)}};
    int32_t position = 0;
    for (const intptr_t value : {11, 15, 16, 17, 18, 19, 20, 21, 22, 23, 22, 23, 24, 25, 12})
        expected[4 * position++] = value;
    for (position = 160; position < 232; position += 4) expected[position] = position % 8 ? 16 : 15;
    for (position = 252; position <= 264; position += 4) expected[position] = -1;
    EXPECT_EQ(WordsOf(*RecordOf(sprite)), expected);
    int32_t infos[8];
    EXPECT_EQ(GetSpriteInfos(sprite, infos), infos);
    EXPECT_EQ(Numbers(infos, infos + 8), (Numbers{22, 23, 22, 23, 1, 24, 25, 20}));
    RecordOf(sprite)->TargetY = 99;
    GetSpriteInfos(sprite, infos);
    EXPECT_EQ(Numbers(infos, infos + 8), (Numbers{22, 23, 22, 99, 0, 24, 25, 20}));
}

TEST(SpriteList, AnswersHandleZeroAndAnEmptyListQuietly) {
    const auto answerEmptily = [] {
        int32_t infos[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_EQ(InitSprite5(nullptr), 0u);
        EXPECT_EQ(CopySprite(0), 0u);
        EXPECT_EQ(DeleteSprite(0) | MoveSprite(0, 5, 6), 0);
        EXPECT_EQ(ExistSprite(0), -1);
        EXPECT_EQ(TestSprite(0, 32), 0);
        EXPECT_EQ(GetSpriteInfos(0, infos), nullptr);
        EXPECT_EQ(infos[0], 1);
        EXPECT_EQ(GetSpriteX(0) | GetSpriteY(0) | SpriteToHDC(0), 0);
        EXPECT_EQ(CountSprites(), 1);
        EXPECT_EQ(CountAllSprites(), 1);
    };
    answerEmptily();
    EXPECT_EQ(CleanUp(5) | StopAllSprites(1) | StopAllSprites(0) | DeleteAllSprites(), 0);
    SpriteThreadBrake(5);
    SystemThreadBrake(5);
    const auto loose = std::make_unique<SpriteRecord>();
    EXPECT_EQ(DeleteSprite(HandleOf(loose.get())) | MoveSprite(HandleOf(loose.get()), 3, 4), 0);
    EXPECT_EQ(WordsOf(*loose), Words{});
    EXPECT_EQ(CopySprite(HandleOf(loose.get())), 0u);
    Scene scene;
    const SpriteRecord &record = scene.Add(3, 4);
    answerEmptily();
    EXPECT_EQ(record.State, 0);
    EXPECT_EQ(GetSpriteInfos(HandleOf(&record), nullptr), nullptr);
}

TEST(SpriteList, CopiesEveryWordButTheLinksAndTheTable) {
    Scene scene;
    SpriteRecord &source = scene.Add(1, 1);
    scene.Add(2, 2);
    const int16_t waypoints[] = {1, 2, 3, 4};
    MoveSpriteWithTable(HandleOf(&source), waypoints, 2, 100, 200, 1);
    const auto isLink = [](int32_t position) { return position == 88 || position == 120 || position == 320; };
    for (int32_t position = 4; position < 1024; position += 4) {
        const bool isTable = position >= 312 && position <= 328;
        if (!isLink(position) && !isTable) WriteWord(source, position, 1000 + position);
    }
    const uintptr_t copy = CopySprite(HandleOf(&source));
    ASSERT_NE(copy, 0u);
    EXPECT_EQ(NextOf(*NextOf(source)), RecordOf(copy));
    EXPECT_EQ(TestSprite(copy, 88), 0);
    EXPECT_EQ(TestSprite(copy, 120), static_cast<intptr_t>(copy));
    for (int32_t position = 0; position < 1024; position += 4) {
        if (isLink(position)) continue;
        EXPECT_EQ(TestSprite(copy, position), ReadWord(source, position)) << position;
    }
    EXPECT_NE(TestSprite(copy, 320), ReadWord(source, 320));
    FreeWaypointTable(source);
    SetSpritePos(copy, 0, 0, 0, 0);
    TakeNextWaypoint(*RecordOf(copy));
    EXPECT_EQ((Numbers{RecordOf(copy)->TargetX, RecordOf(copy)->TargetY}), (Numbers{103, 204}));
    EXPECT_NE(CopySprite(HandleOf(&source)), 0u) << "no table to copy is no failure";
}

// Erased, erased again, finished, and it moves in both frames of its erasure; a new delete call starts over.
TEST(SpriteList, TakesADeletedSpriteThroughItsStatesOneStepAFrame) {
    Scene scene;
    SpriteRecord &sprite = scene.Add(10, 10);
    scene.Add(50, 40);
    sprite.FixMode = 7;
    sprite.SpeedX = 2;
    MoveSprite(HandleOf(&sprite), 50, 10);
    DeleteSprite(HandleOf(&sprite));
    const auto state = [&] {
        return Numbers{sprite.State, GetSpriteX(HandleOf(&sprite)), CountSprites(), CountAllSprites()};
    };
    EXPECT_EQ(state(), (Numbers{1, 10, 1, 2}));
    for (const int32_t frame : {1, 2, 3}) {
        Scene::Step(1);
        EXPECT_EQ(state(), (frame == 1 ? Numbers{2, 12, 1, 2} : Numbers{3, 14, 1, 2})) << frame;
        EXPECT_EQ(ExistSprite(HandleOf(&sprite)), -1);
    }
    DeleteSprite(HandleOf(NextOf(sprite)));
    EXPECT_EQ(CountSprites(), 1) << "the last one counts whatever its state";
    // It was never drawn, so the place that it wiped is the corner, which is left alone from now on.
    for (const HDC context : {HDC{scene.screen}, HDC{scene.back}}) SetPixel(context, 3, 3, 0x123456);
    Scene::Step(1);
    for (const HDC context : {HDC{scene.screen}, HDC{scene.back}})
        EXPECT_EQ(GetPixel(context, 3, 3), 0x123456u);
    DeleteSprite(HandleOf(&sprite));
    EXPECT_EQ(sprite.State, 1);
    Scene::Step(1);
    EXPECT_EQ(sprite.State, 2);
    EXPECT_EQ(sprite.FixMode, 0);
    EXPECT_FALSE(AreAllFinished());
    EXPECT_EQ(SpriteList.load(), &sprite) << "a finished first sprite stays first";
}

// A letter for each record: lower case lives, upper case is finished. The mark is a or b.
TEST(SpriteList, CleansUpFinishedSpritesBetweenTheSecondAndTheLast) {
    const struct {
        const char *before, *after;
    } cases[] = {{"A", "A"},           {"AA", "AA"},       {"AAA", "AAA"},
                 {"aAAA", "aAA"},      {"AAAA", "AAA"},    {"aaAAAa", "aaa"},
                 {"AAbABAB", "AAbBB"}, {"aaaBa", "aaaBa"}, {"aaAaAaAA", "aaaaA"},
                 {"AAAAAAAAAA", "AAA"}};
    for (const auto &test : cases) {
        SCOPED_TRACE(test.before);
        Scene scene;
        for (const char *letter = test.before; *letter != 0; ++letter) {
            SpriteRecord &record = scene.Add(1, 1);
            record.Mark = *letter | 0x20;
            if (*letter < 'a') record.State = 3;
        }
        CleanUp('a');
        CleanUp('b');  // dropped: the first one still waits
        CleanUpStage();
        std::string after;
        for (SpriteRecord *record = SpriteList; record != nullptr; record = NextOf(*record))
            after += static_cast<char>(record->State == 3 ? record->Mark & ~0x20 : int32_t{record->Mark});
        EXPECT_EQ(after, test.after);
        EXPECT_EQ(SpriteList.load()->CleanUpRequest | SpriteList.load()->CleanUpMark, 0);
    }
}

TEST(SpriteList, ClearsTheLinksToSpritesThatAreFreed) {
    Scene scene;
    SpriteRecord &first = scene.Add(1, 1), &second = scene.Add(2, 2);
    const uintptr_t leader = HandleOf(&scene.Add(3, 3));
    SpriteRecord &follower = scene.Add(4, 4);
    AttachSprite(HandleOf(&follower), leader, 1, 1);
    AttachSpriteAnim(HandleOf(&first), leader);
    AttachSprite(HandleOf(&second), HandleOf(&first), 0, 0);
    DeleteSprite(leader);
    Scene::Step(2);
    CleanUp(0);
    Scene::Step(1);
    EXPECT_EQ(NextOf(second), &follower);
    EXPECT_EQ(follower.AttachedTo, 0u);
    EXPECT_EQ(first.AnimFrom, 0u);
    EXPECT_EQ(second.AttachedTo, HandleOf(&first));
}

// A sprite that came to life since the thread's own look at the states stops its end.
TEST(SpriteList, EndsOnlyWhereNobodyLives) {
    Scene scene;
    scene.Add(1, 1).State = kStateFinished;
    SpriteRecord &last = scene.Add(2, 2);
    EXPECT_FALSE(EndFinishedList([]() noexcept { ADD_FAILURE() << "detached"; }));
    EXPECT_EQ(NextOf(*SpriteList), &last);
    last.State = kStateFinished;
    EXPECT_TRUE(EndFinishedList([]() noexcept {}));
    EXPECT_EQ(SpriteList.load(), nullptr);
}

// Makes the n-th operation of a kind fail until `act` succeeds, and says how often it had to.
int CountFailures(Operation operation, const std::function<uintptr_t()> &act) {
    for (int number = 1;; ++number) {
        platform::FailOnce(operation, number);
        const uintptr_t result = act();
        platform::ForgetFailures();
        if (result != 0) return number - 1;
    }
}

TEST(SpriteList, LeavesNothingBehindWhereASpriteCannotBeMade) {
    const HurriedClock clock;
    const int threads = CountHandles(HandleKind::Thread), semaphores = CountHandles(HandleKind::Semaphore);
    const auto expectNothing = [&] {
        EXPECT_EQ(SpriteList.load(), nullptr);
        EXPECT_EQ(CountHandles(HandleKind::Thread), threads);
        EXPECT_EQ(CountHandles(HandleKind::Semaphore), semaphores);
    };
    const auto makeFirst = [&] {
        const uintptr_t sprite = InitSprite5(&kArguments);
        if (sprite == 0) expectNothing();
        return sprite;
    };
    for (Operation operation : {Operation::Memory, Operation::Thread, Operation::Semaphore}) {
        EXPECT_GE(CountFailures(operation, makeFirst), 1) << static_cast<int>(operation);
        DeleteAllSprites();
        expectNothing();
    }
    Scene scene;
    const uintptr_t source = HandleOf(&scene.Add(1, 1));
    const int16_t waypoints[] = {1, 2, 3, 4};
    MoveSpriteWithTable(source, waypoints, 2, 0, 0, 0);
    EXPECT_EQ(CountFailures(Operation::Memory, [&] { return CopySprite(source); }), 2);
    EXPECT_EQ(CountFailures(Operation::Memory, [&] { return InitSprite5(&kArguments); }), 1);
    EXPECT_EQ(CountAllSprites(), 3) << "nothing but the two that succeeded was linked";
}

}  // namespace
}  // namespace fenlight::test
