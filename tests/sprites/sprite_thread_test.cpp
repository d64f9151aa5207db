// SPDX-License-Identifier: Zlib
#include "fenlight/sprite_thread.h"

#include <gtest/gtest.h>

#include "frame/frame_semaphore.h"
#include "platform/system/handle_table.h"
#include "sprites/sprite_scene.h"

namespace fenlight::test {
namespace {

using platform::CountHandles;
using platform::HandleKind;

using Pauses = std::vector<uint32_t>;

// One frame whose stages take `work` milliseconds.
Pauses PausesOfFrame(SteppedClock &clock, uint32_t work) {
    clock.sleeps.clear();
    RunFrame();
    clock.now += work;
    PaceFrame();
    return clock.sleeps;
}

// Looks before any test has run a frame.
struct RateAtLoad : ::testing::Environment {
    void SetUp() override { EXPECT_EQ(GetSpritesFps(), 62); }
};
const auto *const rateAtLoad = ::testing::AddGlobalTestEnvironment(new RateAtLoad);

TEST(SpriteThread, PacesItsFramesAndTellsTheirRate) {
    SteppedClock clock;
    Scene scene;
    scene.Add(1, 1);
    const struct {
        uint32_t start, work;
        size_t naps;
        int32_t framesPerSecond;
    } frames[] = {
        {1000, 0, 12, 83}, {1000, 11, 1, 83},  {1000, 12, 0, 83},      {1000, 13, 0, 76},
        {1000, 40, 0, 25}, {1000, 1001, 0, 0}, {0xFFFFFFFA, 5, 7, 83}, {0xFFFFFFFA, 20, 0, 50},
    };
    for (const auto &frame : frames) {
        clock.now = frame.start;
        EXPECT_EQ(PausesOfFrame(clock, frame.work), Pauses(frame.naps, 1)) << frame.work;
        EXPECT_EQ(GetSpritesFps(), frame.framesPerSecond) << frame.work;
    }
}

TEST(SpriteThread, BrakesBeforeEachPassAndAfterEachFrame) {
    SteppedClock clock;
    Scene scene;
    for (int i = 0; i < 4; ++i) scene.Add(1, 1);
    SpriteThreadBrake(5);
    SystemThreadBrake(7);
    EXPECT_EQ(PausesOfFrame(clock, 0), (Pauses{5, 5, 5, 5, 7}));
    EXPECT_EQ(GetSpritesFps(), 50) << "20 ms; the pause after the frame is not part of it";
    SpriteThreadBrake(INT32_MIN);
    SystemThreadBrake(-1);
    EXPECT_EQ(PausesOfFrame(clock, 12), Pauses());
}

// The thread with real sprites on it, and nothing left of it afterwards.
TEST(SpriteThread, RunsFromTheFirstSpriteToTheLast) {
    const int threads = CountHandles(HandleKind::Thread), semaphores = CountHandles(HandleKind::Semaphore);
    const HurriedClock clock;
    Scene scene;
    for (int round = 0; round < 20; ++round) {
        const uintptr_t sprite = scene.Start(30, 20);
        ASSERT_NE(sprite, 0u);
        ASSERT_TRUE(WaitUntil([&] { return TestSprite(sprite, 140) == 20; })) << "two passes";
        // The end comes with the last living sprite, or is waited for.
        const uintptr_t last = scene.Start(60, 40);
        DeleteSprite(sprite);
        if (round % 2 == 0)
            DeleteAllSprites();
        else
            DeleteSprite(last);
        ASSERT_TRUE(WaitUntil([] { return SpriteList.load() == nullptr; }));
        EXPECT_EQ(SpriteThread.load(), 0u);
        EXPECT_EQ(CountHandles(HandleKind::Thread), threads);
        EXPECT_EQ(CountHandles(HandleKind::Semaphore), semaphores);
        ASSERT_TRUE(SamePicture("thread-screen", scene.screen.Get(), scene.background));
    }
}

// A sprite made in the moment in which the thread ends lives in the old list or starts a new one, but is
// never lost.
TEST(SpriteThread, LosesNoSpriteThatIsMadeWhileItEnds) {
    const HurriedClock clock;
    Scene scene;
    uintptr_t sprite = scene.Start(30, 20);
    std::mt19937 random(11);
    // A busy machine needs long for a round.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (int round = 0; round < 10 || (round < 150 && std::chrono::steady_clock::now() < deadline); ++round) {
        DeleteSprite(sprite);
        for (auto spin = random() % 3000; spin != 0; --spin)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        sprite = scene.Start(30, 20);
        ASSERT_NE(sprite, 0u);
        ASSERT_TRUE(WaitUntil([&] { return TestSprite(sprite, 132) == 20; })) << "drawn once";
        ASSERT_EQ(ExistSprite(sprite), 0);
    }
    DeleteAllSprites();
    EXPECT_EQ(SpriteList.load(), nullptr);
}

// Another user of the semaphore keeps the frames away, and gets its own turn in the pause after a frame. Its
// handle outlives the thread's.
TEST(SpriteThread, TakesTurnsWithTheOtherDrawingThreads) {
    const HurriedClock clock;
    Scene scene;
    const HANDLE semaphore = OpenFrameSemaphore();
    ASSERT_NE(semaphore, 0u);
    constexpr DWORD kHalfAMinute = 30000;
    uintptr_t sprite = 0;
    for (int round = 0; round < 3; ++round) {
        clock.StandStill(true);
        EXPECT_EQ(WaitForSingleObject(semaphore, kHalfAMinute), WAIT_OBJECT_0);
        sprite = scene.Start(30, 20);
        GiveTurns();
        EXPECT_EQ(TestSprite(sprite, 132), 0) << "not drawn";
        ReleaseSemaphore(semaphore, 1, nullptr);
        EXPECT_TRUE(WaitUntil([&] { return TestSprite(sprite, 132) == 20; }));
        EXPECT_EQ(WaitForSingleObject(semaphore, kHalfAMinute), WAIT_OBJECT_0) << "in the pause";
        ReleaseSemaphore(semaphore, 1, nullptr);
        clock.StandStill(false);
        DeleteAllSprites();
    }
    CloseFrameSemaphore(semaphore);
}

TEST(SpriteThread, StopsAsOftenAsItWasToldAndGoesOnAsOften) {
    const HurriedClock clock;
    Scene scene;
    const uintptr_t sprite = scene.Start(30, 20);
    const auto isStamped = [&] { return TestSprite(sprite, 148) == 0; };
    for (int round = 0; round < 20; ++round) {
        StopAllSprites(1);
        StopAllSprites(2);
        StopAllSprites(1);
        StopAllSprites(0);
        SpriteToHDC(sprite);
        // No frame may end; a running thread would have ended many in this time.
        GiveTurns();
        EXPECT_FALSE(isStamped());
        StopAllSprites(0);
        ASSERT_TRUE(WaitUntil(isStamped));
    }
    DeleteAllSprites();
}

}  // namespace
}  // namespace fenlight::test
