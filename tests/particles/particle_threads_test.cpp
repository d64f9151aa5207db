// SPDX-License-Identifier: Zlib
// The threads of stars and effects: their ends, their failures, and all drawing threads against each other.
#include "fenlight/sprite_thread.h"
#include "particle_scene.h"
#include "particles/effects_thread.h"
#include "particles/pixel_effects.h"
#include "particles/star_field.h"

namespace fenlight::test {
namespace {

struct Opened {
    int threads = CountHandles(HandleKind::Thread), semaphores = CountHandles(HandleKind::Semaphore);
    bool operator==(const Opened &) const = default;
};

bool WaitForStars() {
    return WaitUntil([] { return StatusStars() == 1; });
}
bool WaitForEffects() {
    return WaitUntil([] { return !IsEffectsThreadAlive(); });
}
// The effects' last thread handle stays open; here is one to begin with.
Opened RunEffectsOnce() {
    InitPixelEffects();
    DeInitPixelEffects();
    EXPECT_TRUE(WaitForEffects());
    return {};
}
bool AreEffectsOver() {
    return std::all_of(EffectTable.begin(), EffectTable.end(), [](auto &slot) { return slot == nullptr; });
}

TEST(ParticleThreads, StarsRunUntilToldToEndAndCanRunAgain) {
    const HurriedClock clock;
    const Opened before;
    Canvas dest(120, 90);
    const Picture black(120, 90);
    for (int round = 0; round < 20; ++round) {
        void *stars = Stars(dest, 0, 0, 0, 120, 90, 200, 5, 0);
        ASSERT_NE(stars, nullptr);
        EXPECT_EQ(StatusStars(), 0);
        EXPECT_EQ(Stars(dest, 0, 0, 0, 5, 5, 1, 0, 0), nullptr) << "one field at a time";
        OptionStars(0, 0, 3, 0, round % 2);
        ASSERT_TRUE(WaitUntil([&] { return Look(dest, 120, 90).pixels != black.pixels; }));
        NoStars(round % 2 == 0 ? 2 : 3);
        ASSERT_TRUE(WaitForStars());
        EXPECT_EQ(Opened(), before);
        ASSERT_TRUE(SamePicture("thread-stars", dest.Get(), black)) << "wiped";
    }
}

// Whatever the order of the calls: one thread, a good handle, and effects that wait for it.
TEST(ParticleThreads, EffectsHaveOneThread) {
    const HurriedClock clock;
    const Opened before = RunEffectsOnce();
    Canvas dest(60, 60), background(60, 60);
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        ASSERT_NE(SetPixelEffect(dest, background, 30, 30, 0xFFFFFF, 9, 9, 2, 60, 1, 2), nullptr);
        const HANDLE thread = InitPixelEffects();
        DWORD code = 0;
        ASSERT_EQ(GetExitCodeThread(thread, &code), 1) << "not a good handle";
        EXPECT_EQ(InitPixelEffects(), 0u);
        EXPECT_LE(CountHandles(HandleKind::Semaphore), before.semaphores + 1) << "each thread has its own";
        ASSERT_TRUE(WaitUntil(AreEffectsOver));
        EXPECT_EQ(DeInitPixelEffects(), 0);
        if (round % 3 != 0) continue;
        ASSERT_EQ(WaitForSingleObject(thread, 30000), WAIT_OBJECT_0);
        ASSERT_FALSE(IsEffectsThreadAlive());
        ASSERT_EQ(Opened(), before);
    }
    EXPECT_TRUE(WaitForEffects());
    EXPECT_TRUE(SamePicture("thread-effects", dest.Get(), background.Get()));
}

TEST(ParticleThreads, LeaveNothingBehindWhereTheSystemRefuses) {
    const HurriedClock clock;
    const Opened before = RunEffectsOnce();
    const int32_t status = StatusStars();
    for (const Operation operation : {Operation::Memory, Operation::Semaphore, Operation::Thread}) {
        platform::FailOnce(operation, 1);
        EXPECT_EQ(Stars(0, 0, 0, 0, 9, 9, 5, 0, 0), nullptr);
        EXPECT_EQ(CurrentStars(), nullptr);
        EXPECT_EQ(StatusStars(), status);
        platform::FailOnce(operation, 1);
        EXPECT_TRUE(operation == Operation::Memory || InitPixelEffects() == 0);
        platform::ForgetFailures();
        EXPECT_EQ(Opened(), before);
    }
    EXPECT_EQ(RunEffectsOnce(), before) << "as if it had not been asked";
}

// Two callers who fill the table at the same time, beside the thread or without it, get each slot once.
TEST(ParticleThreads, EffectsAreAddedByManyThreads) {
    const HurriedClock clock;
    Canvas dest(60, 60);
    for (const int32_t life : {2, 1000}) {
        std::atomic<int> added{0};
        const auto fill = [&] {
            for (int i = 0; i < 400; ++i)
                added += SetPixelEffect(dest, dest, 30, 30, 0xFF, 3, 3, 0, 20, 2, life) != nullptr ? 1 : 0;
        };
        if (life == 2) InitPixelEffects();
        std::thread one(fill), other(fill);
        one.join();
        other.join();
        DeInitPixelEffects();
        EXPECT_TRUE(WaitForEffects());
        EXPECT_TRUE(added == 256 || life == 2) << added;
        for (auto &slot : EffectTable)
            if (PixelEffectBlock *effect = slot) effect->lifeFrames = 0;
        RunEffectsFrame();
        EXPECT_TRUE(AreEffectsOver());
    }
}

// Sprites, stars and effects on one context start and stop against each other, the sprite thread and the
// effects thread are stopped in the middle of their work, and contexts go while they are drawn on.
TEST(ParticleThreads, StartAndStopAgainstEachOther) {
    const HurriedClock clock;
    const Opened before = RunEffectsOnce();
    Scene scene;
    auto doomed = std::make_unique<Canvas>(Scene::kWidth, Scene::kHeight);
    const StarRecord *stars = nullptr;
    HANDLE effects = 0;
    uintptr_t sprite = 0;
    int rounds[3] = {};
    std::mt19937 random(21);
    const auto below = [&random](int32_t end) {
        return static_cast<int32_t>(random() % static_cast<uint32_t>(end));
    };
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    const auto step = [&] {
        switch (below(10)) {
            case 0:
                if (sprite == 0)
                    sprite = scene.Start(below(80), below(50));
                else
                    DeleteAllSprites(), sprite = 0, ++rounds[0];
                break;
            case 1:
                if (stars != nullptr) break;
                stars =
                    static_cast<StarRecord *>(Stars(scene.screen, below(2) == 0 ? scene.clean : *doomed, 0, 0,
                                                    Scene::kWidth, Scene::kHeight, 300, below(3), below(2)));
                ASSERT_NE(stars, nullptr);
                break;
            case 2:
                if (stars == nullptr) break;
                NoStars(1 + below(3));
                ASSERT_TRUE(WaitForStars());
                stars = nullptr;
                ++rounds[1];
                break;
            case 3:
                effects = InitPixelEffects();
                break;
            case 4:
                DeInitPixelEffects();
                ++rounds[2];
                break;
            case 5:
                SetPixelEffect(below(2) == 0 ? scene.screen : *doomed, below(2) == 0 ? scene.clean : *doomed,
                               below(90), below(60), 0xFF00FF, 5, 5, below(5), 80, below(4), below(9));
                break;
            case 6:
                if (sprite == 0) break;
                StopAllSprites(1);
                GiveTurns();
                StopAllSprites(0);
                break;
            case 7:
                SuspendThread(effects);
                GiveTurns();
                ResumeThread(effects);
                break;
            case 8:
                doomed = std::make_unique<Canvas>(Scene::kWidth, Scene::kHeight);
                break;
            default:
                OptionStars(below(9), below(9), below(5) - 2, below(5) - 2, below(3));
                EXPECT_TRUE(stars == nullptr || std::atomic_ref(stars[below(300)].age) >= 0);
        }
    };
    while (!HasFatalFailure() &&
           (std::chrono::steady_clock::now() < deadline || *std::min_element(rounds, rounds + 3) < 3))
        step();
    NoStars(2);
    EXPECT_TRUE(stars == nullptr || WaitForStars());
    DeleteAllSprites();
    InitPixelEffects();
    EXPECT_TRUE(IsEffectsThreadAlive());
    EXPECT_TRUE(WaitUntil(AreEffectsOver));
    DeInitPixelEffects();
    EXPECT_TRUE(WaitForEffects());
    EXPECT_EQ(Opened(), before);
}

}  // namespace
}  // namespace fenlight::test
