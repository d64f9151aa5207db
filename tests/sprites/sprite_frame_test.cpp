// SPDX-License-Identifier: Zlib
// Frames, stepped without the thread: what they leave on the three contexts, and what each stage of a pass
// finds done by the stages before it.
#include <gtest/gtest.h>

#include "fenlight/sprite_animation.h"
#include "fenlight/sprite_layers.h"
#include "fenlight/sprite_movement.h"
#include "platform/system/failure_point.h"
#include "sprites/sprite_scene.h"
#include "sprites/stages.h"

namespace fenlight::test {
namespace {

// The drawing of one sprite by plain transfers through a mask, its inverse and two temporary pictures.
void DrawByTransfers(const SpriteRecord &record, HDC back) {
    const int32_t x = record.X, y = record.Y, width = record.Width, height = record.Height;
    const int32_t frameX = record.SourceX + width * (record.Frame - 1), sourceY = record.SourceY;
    const HDC image = record.ImageDC, screen = record.ScreenDC;
    HBITMAP bitmaps[4];
    HDC contexts[4];
    for (size_t i = 0; i < 4; ++i) {
        bitmaps[i] = i < 2 ? CreateBitmap(width, height, 1, 1, nullptr)
                           : CreateCompatibleBitmap(screen, width, height);
        SelectObject(contexts[i] = CreateCompatibleDC(screen), bitmaps[i]);
    }
    const auto [mask, inverse, compose, frame] = contexts;
    const COLORREF old = SetBkColor(image, GetPixel(image, frameX + width - 1, sourceY));
    BitBlt(mask, 0, 0, width, height, image, frameX, sourceY, SRCCOPY);
    SetBkColor(image, old);
    BitBlt(inverse, 0, 0, width, height, mask, 0, 0, NOTSRCCOPY);
    BitBlt(compose, 0, 0, width, height, back, x, y, SRCCOPY);
    BitBlt(compose, 0, 0, width, height, mask, 0, 0, SRCAND);
    BitBlt(frame, 0, 0, width, height, image, frameX, sourceY, SRCCOPY);
    BitBlt(frame, 0, 0, width, height, inverse, 0, 0, SRCAND);
    BitBlt(compose, 0, 0, width, height, frame, 0, 0, SRCINVERT);
    BitBlt(back, x, y, width, height, compose, 0, 0, SRCCOPY);
    for (size_t i = 0; i < 4; ++i) {
        DeleteDC(contexts[i]);
        DeleteObject(bitmaps[i]);
    }
}

TEST(DrawStage, PaintsWhatTheSequenceOfTransfersPaints) {
    Scene scene;
    Canvas expected(Scene::kWidth, Scene::kHeight);
    expected.Put(scene.background);
    std::mt19937 random(3);
    for (int i = 0; i < 60; ++i) {
        SpriteRecord &record = scene.Add(static_cast<int32_t>(random() % 120) - 15,
                                         static_cast<int32_t>(random() % 90) - 15, 1 + i % Scene::kFrames);
        if (i % 5 == 0) record.Width = 1 + static_cast<int32_t>(random() % 12);
        if (i % 4 == 1) record.SourceX = static_cast<int32_t>(random() % 12);
        if (i % 7 == 0) record.SourceY = static_cast<int32_t>(random() % 5), record.Height = 5;
        // The key colour is found anew in each pass.
        if (i == 30) SetPixel(scene.image, 11, 0, GetPixel(scene.image, 3, 3));
        DrawByTransfers(record, expected);
        DrawStage(record);
        EXPECT_EQ(record.FrameX, record.SourceX + record.Width * (record.Frame - 1));
    }
    EXPECT_TRUE(SamePicture("draw-by-transfers", scene.back.Get(), expected.Get()));
}

// Whatever sprites do, the screen shows the background with all sprites painted in list order, and the back
// buffer is clean between frames.
TEST(Frame, ShowsEverySpriteOnceOverACleanBackground) {
    Scene scene;
    Canvas otherScreen(Scene::kWidth, Scene::kHeight), otherBack(Scene::kWidth, Scene::kHeight);
    otherScreen.Put(scene.background);
    otherBack.Put(scene.background);
    std::vector<SpriteRecord *> sprites;
    std::mt19937 random(5);
    for (int i = 0; i < 150; ++i) {
        SpriteArguments arguments = scene.Sprite(0, 0, 1 + i % Scene::kFrames);
        // Three runs of contexts, so that the copies are collected and handed over more than once.
        if (i / 50 == 1) arguments.screenDC = otherScreen, arguments.backDC = otherBack;
        sprites.push_back(&Scene::Add(arguments));
    }
    for (int frame = 0; frame < 12; ++frame) {
        Picture expected[2] = {scene.background, scene.background};
        for (size_t i = 0; i < sprites.size(); ++i) {
            SpriteRecord &sprite = *sprites[i];
            const auto x = static_cast<int32_t>(random() % 130) - 20,
                       y = static_cast<int32_t>(random() % 90) - 15;
            SetSpritePos(HandleOf(&sprite), x, y, x, y);
            if (frame == 8 && i % 3 == 0) DeleteSprite(HandleOf(&sprite));
            if (frame < 8 || i % 3 != 0) scene.Paint(expected[i / 50 == 1], x, y, sprite.Frame);
        }
        // Without memory the copies are made in smaller lots.
        if (frame == 5) ReleaseFrameBuffers(), platform::FailFrom(platform::Operation::Memory, 1);
        Scene::Step(1);
        platform::ForgetFailures();
        EXPECT_TRUE(SamePicture("frame-screen", scene.screen.Get(), expected[0])) << frame;
        EXPECT_TRUE(SamePicture("frame-other-screen", otherScreen.Get(), expected[1])) << frame;
        EXPECT_TRUE(SamePicture("frame-back", scene.back.Get(), scene.background)) << frame;
        EXPECT_TRUE(SamePicture("frame-clean", scene.clean.Get(), scene.background)) << frame;
    }
}

TEST(Frame, StampsASpriteIntoTheBackgroundOnce) {
    Scene scene;
    scene.Add(10, 10, 1);
    SpriteRecord &sprite = scene.Add(15, 14, 2);
    scene.Add(12, 18, 3);
    Picture expected = scene.background, both = scene.background;
    scene.Paint(both, 10, 10, 1);
    scene.Paint(both, 15, 14, 2);
    // The rectangle as it stands after the draw: lower layers are in it, higher ones are not.
    for (int y = 14; y < 24; ++y)
        for (int x = 15; x < 27; ++x) expected.At(x, y) = both.At(x, y);
    SpriteToHDC(HandleOf(&sprite));
    Scene::Step(1);
    EXPECT_TRUE(SamePicture("stamp", scene.clean.Get(), expected));
    EXPECT_EQ(sprite.StampRequest, 0);
    SetSpritePos(HandleOf(&sprite), 60, 40, 60, 40);
    Scene::Step(1);
    EXPECT_TRUE(SamePicture("stamp-once", scene.clean.Get(), expected));
    sprite.FixMode = 1;
    SpriteToHDC(HandleOf(&sprite));
    Scene::Step(1);
    EXPECT_EQ(sprite.StampRequest, 0) << "lost without a stamp";
    EXPECT_TRUE(SamePicture("stamp-fixed", scene.clean.Get(), expected));
}

TEST(Frame, LeavesThePictureOfAFixedSpriteUntilItIsDeleted) {
    Scene scene;
    scene.Add(60, 40);
    SpriteRecord &sprite = scene.Add(20, 20, 2);
    Scene::Step(1);
    sprite.FixRequestMode = 3;
    sprite.FixRequest = 1;
    sprite.SpeedX = 1;
    MoveSprite(HandleOf(&sprite), 25, 20);
    Picture expected = scene.background;
    scene.Paint(expected, 60, 40);
    Picture withSprite = expected;
    scene.Paint(withSprite, 20, 20, 2);
    Scene::Step(4);
    EXPECT_EQ(sprite.FixMode, 3) << "from the pass that finds the request";
    EXPECT_EQ(sprite.FixRequest, 0);
    EXPECT_EQ(sprite.X, 24) << "moves on unseen";
    EXPECT_EQ(sprite.DrawnX, 23);
    EXPECT_TRUE(SamePicture("fixed-left", scene.screen.Get(), withSprite));
    // It wipes the last two places only, which here cover the picture.
    sprite.PreviousX = 20;
    DeleteSprite(HandleOf(&sprite));
    // As the delete call and the fix stage leave it when they meet: FixMode was written last.
    sprite.FixMode = INT32_MIN;
    Scene::Step(2);
    EXPECT_EQ(sprite.State, kStateFinished);
    EXPECT_TRUE(SamePicture("fixed-wiped", scene.screen.Get(), expected));
    EXPECT_TRUE(SamePicture("fixed-back", scene.back.Get(), scene.background));
}

TEST(Frame, CostsNoMoreThanAnInvisibleSpriteWhereArgumentsAreBad) {
    Scene scene;
    scene.Add(40, 30);
    Picture expected = scene.background;
    scene.Paint(expected, 40, 30);
    const HBITMAP foreign = CreateBitmap(96, 64, 1, 32, nullptr);
    const HBRUSH brush = CreateSolidBrush(0xFF);
    const HDC deleted = CreateCompatibleDC(0);
    DeleteDC(deleted);
    for (int32_t position : {0, 56, 68, 84})
        for (uintptr_t dead :
             {uintptr_t{0}, uintptr_t{3}, ~uintptr_t{0}, uintptr_t{0x12345678}, foreign, brush, deleted}) {
            SpriteRecord &record = scene.Add(70, 5);
            WriteWord(record, position, static_cast<intptr_t>(dead));
            // Without a clean background the back buffer cannot be restored.
            record.FixMode = position == 84;
        }
    Scene::Step(2);
    EXPECT_TRUE(SamePicture("bad-contexts", scene.screen.Get(), expected));
    DeleteObject(foreign);
    DeleteObject(brush);
    const int32_t extremes[] = {INT32_MIN, INT32_MIN + 1, -1, 0, INT32_MAX - 1, INT32_MAX};
    for (int position : {4, 8, 12, 16, 24, 32, 36})
        for (int32_t value : extremes) {
            SpriteRecord &record = scene.Add(200, 200);
            WriteWord(record, position, value);
            record.TargetX = record.X;
            record.TargetY = record.Y;
            SpriteToHDC(HandleOf(&record));
        }
    Scene::Step(3);
    EXPECT_TRUE(SamePicture("bad-numbers-clean", scene.clean.Get(), scene.background));
    EXPECT_TRUE(SamePicture("bad-numbers-back", scene.back.Get(), scene.background));
}

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
        SetSpriteFixMode(HandleOf(&record), INT32_MIN);
        Scene::Step(1);
        EXPECT_EQ(GetSpriteFixMode(HandleOf(&record)), state == kStateAlive ? INT32_MIN : 0) << state;
        EXPECT_EQ((Numbers{record.SlowCountX, record.SlowCountY, record.X}), (Numbers{1, 1, 20})) << state;
        EXPECT_EQ(record.SourceX, 0) << "at home it stands";
        EXPECT_EQ((Numbers{record.DrawnX, record.DrawnY}),
                  state == kStateAlive ? (Numbers{20, 10}) : (Numbers{0, 0}))
            << state;
        EXPECT_EQ(record.FrameTimer, state == kStateFinished ? 0 : 1) << state;
    }
}

}  // namespace
}  // namespace fenlight::test
