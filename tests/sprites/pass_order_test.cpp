// SPDX-License-Identifier: Zlib
// What each stage of a pass finds done by the stages before it, and leaves for those behind it.
#include <gtest/gtest.h>

#include "fenlight/sprite_animation.h"
#include "fenlight/sprite_movement.h"
#include "sprites/sprite_scene.h"

namespace fenlight::test {
namespace {

// Strip n starts at X = 100 n.
void GiveNineStrips(const SpriteRecord &record) {
    for (int32_t direction = 0; direction < 9; ++direction)
        SetSpriteAnimMove(HandleOf(&record), direction, 100 * direction, 0);
}

// Left of its rectangle, heading further to the left.
TEST(PassOrder, FacingAndLookingAheadComeBeforeTurningRoundAndThatBeforeMoving) {
    Scene scene;
    SpriteRecord &record = scene.Add(10, 30);
    GiveNineStrips(record);
    SetSpriteSpeed(HandleOf(&record), 4, 4);
    MoveSprite(HandleOf(&record), -50, 30);
    SpriteMovingRect(HandleOf(&record), 10, -1, 60, -1);
    for (const Numbers &expected : {Numbers{600, 6, 60, 14}, Numbers{200, 18, 60, 18}}) {
        Scene::Step(1);
        EXPECT_EQ((Numbers{record.SourceX, record.NextX, record.TargetX, record.X}), expected);
    }
}

// The leader comes later in the list, so what is copied is what it showed in the frame before.
TEST(PassOrder, CopyingALeadersPictureOverrulesFacingAndComesBeforeDrawing) {
    Scene scene;
    SpriteRecord &follower = scene.Add(10, 30, 1), &leader = scene.Add(60, 30, 3);
    GiveNineStrips(follower);
    SetSpriteAnim(HandleOf(&leader), 0, 0, 12, 10, Scene::kFrames, 3, 0);
    MoveSprite(HandleOf(&follower), 90, 30);
    AttachSpriteAnim(HandleOf(&follower), HandleOf(&leader));
    Scene::Step(1);
    EXPECT_EQ(follower.SourceX, 0);
    EXPECT_EQ(follower.FrameX, 2 * 12);
    Picture expected = scene.background;
    scene.Paint(expected, 10, 30, 3);
    scene.Paint(expected, 60, 30, 3);
    EXPECT_TRUE(SamePicture("leaders-picture", scene.screen.Get(), expected));
}

TEST(PassOrder, SlowPeriodsAndTheCageComeFirstAndServeSpritesInEveryState) {
    for (int32_t state = kStateAlive; state <= kStateFinished; ++state) {
        Scene scene;
        SpriteRecord &record = scene.Add(90, 30);
        scene.Add(1, 1);
        record.State = state;
        GiveNineStrips(record);
        MoveSprite(HandleOf(&record), 95, 30);
        SlowDownSprite(HandleOf(&record), 5, 5);
        SetSpriteCage(HandleOf(&record), 0, 0, 50, 50, 20, 10);
        Scene::Step(1);
        EXPECT_EQ((Numbers{record.SlowCountX, record.SlowCountY, record.X}), (Numbers{1, 1, 20})) << state;
        EXPECT_EQ(record.SourceX, 0) << "at home it stands";
        EXPECT_EQ((Numbers{record.DrawnX, record.DrawnY}),
                  state == kStateAlive ? (Numbers{20, 10}) : (Numbers{0, 0}))
            << state;
        EXPECT_EQ(record.FrameTimer, state == kStateFinished ? 0 : 1) << state;
    }
}

// As the caller's delete call and the fix stage leave it when they meet: FixMode was written last.
TEST(PassOrder, ErasesASpriteThatWasFixedInTheMomentOfItsDeletion) {
    for (const int32_t mode : {1, INT32_MIN}) {
        Scene scene;
        scene.Add(60, 30).FixMode = mode;
        SpriteRecord &record = scene.Add(10, 30);
        Scene::Step(1);
        DeleteSprite(HandleOf(&record));
        record.FixMode = mode;
        Scene::Step(2);
        EXPECT_EQ(record.State, kStateFinished);
        EXPECT_TRUE(SamePicture("erased", scene.screen.Get(), scene.background)) << mode;
        EXPECT_TRUE(SamePicture("back", scene.back.Get(), scene.background)) << mode;
    }
}

}  // namespace
}  // namespace fenlight::test
