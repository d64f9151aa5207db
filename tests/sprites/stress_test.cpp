// SPDX-License-Identifier: Zlib
// Every exported sprite function at random against the running thread.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "fenlight/images.h"
#include "fenlight/platform/windows.h"
#include "fenlight/sprite_animation.h"
#include "fenlight/sprite_collision.h"
#include "fenlight/sprite_layers.h"
#include "fenlight/sprite_movement.h"
#include "fenlight/sprite_thread.h"
#include "fenlight/sprite_worlds.h"
#include "fenlight/tiles.h"
#include "sprites/sprite_scene.h"

namespace fenlight::test {
namespace {

// A caller that keeps to the rules: it forgets a handle before the record can be freed. The first sprite
// stands far away and lives until all are deleted, so that the list does not end by itself.
class RandomCaller {
  public:
    RandomCaller(const Scene &scene, uint32_t seed) : scene_(scene), random_(seed) { MakeFirst(); }
    RandomCaller(const RandomCaller &) = delete;
    RandomCaller &operator=(const RandomCaller &) = delete;
    ~RandomCaller() { InitSpriteBackground(0, 0, 0, 0, 0, 0, 0); }

    void CallSomething() {
        static constexpr std::array kCalls = {
            &RandomCaller::MakeSprite, &RandomCaller::MakeSprite, &RandomCaller::Delete,
            &RandomCaller::Forget,     &RandomCaller::Ask,        &RandomCaller::Move,
            &RandomCaller::Tabulate,   &RandomCaller::StopAndGo,  &RandomCaller::Show,
            &RandomCaller::ChangeWord, &RandomCaller::Layer,      &RandomCaller::Layer,
            &RandomCaller::DeleteMany, &RandomCaller::Collide};
        (this->*kCalls[Below(kCalls.size())])();
        if (Below(4000) == 0) StartOver();
    }

  private:
    struct Handle {
        uintptr_t sprite;
        int32_t mark;
        bool isDeleted;
    };

    uint32_t Below(size_t end) { return static_cast<uint32_t>(random_() % end); }
    int32_t Number() { return static_cast<int32_t>(Below(160)) - 30; }
    Handle &AnyHandle() {
        if (handles_.empty()) MakeSprite();
        return handles_[Below(handles_.size())];
    }
    uintptr_t Any() { return AnyHandle().sprite; }

    void MakeFirst() {
        first_ = scene_.Start(5000, 5000);
        ASSERT_NE(first_, 0u);
        MarkSprite(first_, 99);
    }
    void MakeSprite() {
        if (handles_.size() >= 60) return;
        SpriteArguments arguments = scene_.Sprite(Number(), Number(), 1 + static_cast<int32_t>(Below(4)));
        arguments.frameDelay = static_cast<int32_t>(Below(3));
        handles_.push_back({InitSprite5(&arguments), 0, false});
        if (Below(3) != 0) return;
        const Handle source = AnyHandle();
        const uintptr_t copy = CopySprite(source.sprite);
        // One of a deleted sprite may be finished, and freed by a request that waits, in this very frame.
        if (!source.isDeleted) handles_.push_back({copy, source.mark, false});
    }
    void Delete() {
        Handle &handle = AnyHandle();
        DeleteSprite(handle.sprite);
        handle.isDeleted = true;
    }
    void Forget() {
        const auto mark = static_cast<int32_t>(Below(3));
        std::erase_if(handles_,
                      [&](const Handle &handle) { return handle.isDeleted && handle.mark == mark; });
        CleanUp(mark);
    }
    void Ask() {
        EXPECT_LE(static_cast<size_t>(CountSprites()), static_cast<size_t>(CountAllSprites()));
        for (const Handle &handle : handles_) {
            EXPECT_EQ(ExistSprite(handle.sprite), handle.isDeleted ? -1 : 0);
            EXPECT_EQ(GetSpriteMark(handle.sprite), handle.mark);
            EXPECT_GT(GetSpriteLayer(handle.sprite), 1) << "lost from the list";
        }
        EXPECT_LE(GetSpritesFps(), 83);
        int32_t infos[8];
        EXPECT_EQ(GetBackgroundInfos(infos), infos);
        const uintptr_t sprite = Any();
        EXPECT_EQ(GetSpriteInfos(sprite, infos), infos);
        EXPECT_EQ(TestSprite(sprite, 120), static_cast<intptr_t>(sprite));
        for (const auto get : {GetSpriteX, GetSpriteY, HasSpriteArrived, GetSpriteMoveX, GetSpriteMoveY,
                               GetSpriteMoveXY, GetSpriteAnimModeStatus, GetSpriteFixMode})
            get(sprite);
    }
    void Move() {
        MoveSprite(Any(), Number(), Number());
        SetSpriteSpeed(Any(), Number() / 20, Number() / 20);
        SetSpritePos(Any(), Number(), Number(), Number(), Number());
        AttachSprite(Any(), Below(3) == 0 ? 0 : Any(), Number(), Number());
        SlowDownSprite(Any(), Number() / 10, Number() / 10);
        SetSpriteMovingMode(Any(), static_cast<int32_t>(Below(2)));
        SpriteMovingRect(Any(), Number(), Number(), Number(), Number());
        SetSpriteCage(Any(), Number(), Number(), Number(), Number(), Number(), Number());
    }
    void Tabulate() {
        std::array<int16_t, 20> points;
        for (int16_t &value : points) value = static_cast<int16_t>(Number());
        const int32_t entries = static_cast<int32_t>(Below(13)) - 2;
        MoveSpriteWithTable(Any(), Below(4) == 0 ? nullptr : points.data(), entries, Number(), Number(),
                            Number());
        SpriteTableMode(Any(), static_cast<int32_t>(Below(2)));
    }
    // What the thread draws, where and how fast.
    void Show() {
        AttachSpriteAnim(Any(), Below(2) == 0 ? 0 : Any());
        SetSpriteAnim(Any(), 0, 0, 12, 10, 4, 1, static_cast<int32_t>(Below(3)));
        SetSpriteAnimMove(Any(), Number() / 10, 12, 0);
        SetSpriteAnimMode(Any(), static_cast<int32_t>(Below(2)));
        SpriteToHDC(Any());
        SpriteThreadBrake(static_cast<int32_t>(Below(2)));
        SystemThreadBrake(static_cast<int32_t>(Below(2)));
        SetSpriteFixMode(Any(), static_cast<int32_t>(Below(2)));
        const std::array table{Any(), uintptr_t{0}, Any(), Any()};
        VisualTableFix(table.data(), sizeof table, Number(), Number(), 100 + Number(), 60 + Number());
        InitSpriteBackground(static_cast<int32_t>(Below(2)), Number(), Number(), Number(), Number(),
                             Number() / 20, Number() / 20);
        SpriteScrollMode(Any(), static_cast<int32_t>(Below(2)));
        // Tiles into the background and into what the thread draws in.
        static constexpr uint8_t kMap[] = {0, 1, 2, 3, 2, 1, 255, 0};
        static constexpr uint16_t kList[] = {0, 2, 1111};
        SetTiles(scene_.image, 0, 2, 2, 12, 10, kMap, 4, 1, 0, Below(2) == 0 ? scene_.clean : scene_.back,
                 Number(), Number(), Below(2) == 0 ? 0 : -1, Below(2) == 0 ? kList : nullptr);
    }
    void StopAndGo() {
        StopAllSprites(1);
        DeleteSprite(0);
        Tabulate();
        CountAllSprites();
        StopAllSprites(0);
    }
    // The mark, some numbers, positions of no word.
    void ChangeWord() {
        Handle &handle = AnyHandle();
        if (!handle.isDeleted) {
            handle.mark = static_cast<int32_t>(Below(3));
            Below(2) == 0 ? ChangeSpritePara(handle.sprite, 156, handle.mark)
                          : MarkSprite(handle.sprite, handle.mark);
        }
        for (int32_t position : {24, 64, 488, 560, 1020, 1024, -4, 33})
            ChangeSpritePara(Any(), position, Number());
    }
    void Layer() {
        for (uint32_t i = Below(3) == 0 ? 70 : 1; i > 0; --i) {
            SetSpriteLayer(Any(), Number());
            BringSpriteToTop(Any());
            BringSpriteToBottom(Any());
        }
        SetSpriteLayer(first_, 2);
        EXPECT_EQ(SwapSpriteLayers(Any(), Any()), 0);
        EXPECT_EQ(SwapSpriteLayers(Any(), first_), -1);
        EXPECT_EQ(GetSpriteLayer(first_), 1);
    }
    void DeleteMany() {
        const auto mark = static_cast<int32_t>(Below(20));
        auto chosen = std::count_if(handles_.begin(), handles_.end(), [&](const Handle &handle) {
            return !handle.isDeleted && handle.mark == mark;
        });
        EXPECT_EQ(DeleteSpritesMark(mark), chosen);
        const auto deleted = DeleteSpritesIfAnimReady() + DeleteAllXSprites(Number()) +
                             DeleteAllYSprites(Number()) + static_cast<int32_t>(chosen);
        chosen = 0;
        for (Handle &handle : handles_)
            if (!handle.isDeleted && (handle.isDeleted = ExistSprite(handle.sprite) == -1)) ++chosen;
        EXPECT_EQ(deleted, chosen);
    }
    void Collide() {
        std::vector<uintptr_t> pairs(2 * 61 * 60 / 2), table;
        for (const Handle &handle : handles_) table.push_back(handle.sprite);
        const auto count = static_cast<int32_t>(table.size());
        SetCollideUnknownSprite(Any(), 0, Any(), Below(2) == 0 ? 0 : Any());
        const auto found = static_cast<size_t>(CollideUnknown(pairs.data()));
        for (size_t i = 0; i < 2 * found; ++i) EXPECT_NE(pairs[i], first_) << "stands far away";
        CollideMore(Any(), table.data(), count);
        CollideAll(Any());
        Collision(Any(), Any(), 1 + Number() % 2, 1);
        MouseOverSprite(table.data(), count, Number(), Number());
        const auto mode = static_cast<int32_t>(Below(9));
        if (mode == 7) return;  // it would delete sprites behind the caller's back
        SetBackAutoCollision(Any(), scene_.clean, mode, Number(), Number(), Number(), Number(), 4, 1, 1, 0);
    }
    void StartOver() {
        DeleteAllSprites();
        EXPECT_EQ(SpriteList.load(), nullptr);
        handles_.clear();
        MakeFirst();
    }

    const Scene &scene_;
    std::mt19937 random_;
    uintptr_t first_ = 0;
    std::vector<Handle> handles_;  // without the first
};

TEST(SpriteStress, SurvivesEveryCallAgainstTheRunningThread) {
    const HurriedClock clock;
    const Scene scene;
    RandomCaller caller(scene, 20);
    // Some seconds, and on a machine that has no time for the sprite thread until its frames have run beside
    // the calls.
    const auto start = std::chrono::steady_clock::now();
    const auto isWithin = [start](int seconds) {
        return std::chrono::steady_clock::now() - start < std::chrono::seconds(seconds);
    };
    for (int call = 0; (call < 4000000 && isWithin(3)) || (clock.Looks() <= 100 && isWithin(60)); ++call)
        caller.CallSomething();
    DeleteAllSprites();
    EXPECT_EQ(SpriteList.load(), nullptr);
    EXPECT_EQ(SpriteThread.load(), 0u);
    EXPECT_GT(clock.Looks(), 100u) << "frames ran beside the calls";
}

// Contexts of all four kinds that end while the thread draws with them.
TEST(SpriteStress, SurvivesContextsThatGoWhileTheyAreInUse) {
    const HurriedClock clock;
    const Scene scene;
    const uintptr_t sprite = scene.Start(5, 5);
    for (int round = 0; round < 400 || clock.Looks() < 400; ++round) {
        const uintptr_t image = CreateImage(GetDC(0), 64, 64);
        ASSERT_NE(image, 0u);
        ChangeSpritePara(sprite, std::array{0, 56, 68, 84}[static_cast<size_t>(round) % 4],
                         static_cast<intptr_t>(image));
        SpriteToHDC(sprite);
        if (round % 3 == 0) std::this_thread::yield();
        EXPECT_EQ(FreeImage(image), 1);
    }
    DeleteAllSprites();
}

}  // namespace
}  // namespace fenlight::test
