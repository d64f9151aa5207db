// SPDX-License-Identifier: Zlib
// Scrolling worlds, frame by frame without the thread: what the settings become, where sprites of both
// coordinate systems stand between frames, and what the screen shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "fenlight/sprite_movement.h"
#include "fenlight/sprite_worlds.h"
#include "sprites/background_settings.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_scene.h"
#include "sprites/stages.h"

namespace fenlight::test {
namespace {

constexpr int32_t kStays = 888888;
using Settings = std::array<int32_t, 7>;

void Set(const Settings &values) {
    EXPECT_EQ(
        0, InitSpriteBackground(values[0], values[1], values[2], values[3], values[4], values[5], values[6]));
}

Settings Infos() {
    Settings values;
    EXPECT_EQ(GetBackgroundInfos(values.data()), values.data());
    return values;
}

// A scene whose settings start and end at 0. The world is the scene's, the window on it is smaller.
struct World : Scene {
    static constexpr int kViewWidth = 40, kViewHeight = 30;
    Canvas window{kViewWidth, kViewHeight};

    World() { Set({}); }
    ~World() { Set({}); }
    SpriteRecord &AddTo(HDC shownOn, Point place, Point target, Point speed, int32_t mode) {
        SpriteArguments arguments = Sprite(place[0], place[1]);
        arguments.screenDC = shownOn;
        SpriteRecord &record = Add(arguments);
        SetSpritePos(HandleOf(&record), place[0], place[1], target[0], target[1]);
        SetSpriteSpeed(HandleOf(&record), speed[0], speed[1]);
        EXPECT_EQ(SpriteScrollMode(HandleOf(&record), mode), 0);
        return record;
    }
    SpriteRecord &AddTied(Point place, Point target, int32_t speed) {
        return AddTo(window, place, target, {speed, speed}, 1);
    }
};

Numbers PlacesOf(const std::vector<SpriteRecord *> &sprites) {
    Numbers places;
    for (const SpriteRecord *sprite : sprites)
        places.insert(places.end(), {sprite->X, sprite->Y, sprite->TargetX, sprite->TargetY});
    return places;
}

TEST(Background, KeepsWhatWasSetAndIsSteppedByFramesAlone) {
    EXPECT_EQ(GetBackgroundInfos(nullptr), nullptr);
    EXPECT_EQ(SpriteScrollMode(0, 1), 0);
    EXPECT_EQ(Infos(), (Settings{})) << "when the library is loaded";
    World scene;
    Set({-1, 640, 480, 100, 50, 2, -3});
    const SpriteRecord &first = scene.Add(1, 1);
    EXPECT_EQ(first.ScrollX, 0) << "no frame yet";
    Scene::Step(3);
    EXPECT_EQ((Settings{first.BackgroundMode, first.ViewWidth, first.ViewHeight, first.ScrollX, first.ScrollY,
                        first.ScrollStepX, first.ScrollStepY}),
              (Settings{-1, 640, 480, 104, 44, 2, -3}));
    FreeRecords(SpriteList.exchange(nullptr));
    EXPECT_EQ(Infos(), (Settings{-1, 640, 480, 106, 41, 2, -3})) << "survives the list";
}

// A position set while a frame steps it is not lost: what frames use never lies before it.
TEST(Background, TakesAPositionThatIsSetBesideTheStep) {
    World scene;
    SpriteRecord &first = scene.Add(1, 1);
    Set({0, 0, 0, 0, 0, 1, 0});
    constexpr int32_t kRounds = 200'000, kFurther = 10'000;
    std::atomic<int32_t> lastSet{0};
    int32_t lost = 0, before = -1;
    const auto fellBack = [&] {
        // Never so many steps that the position to be set next lies behind them.
        if (before > lastSet + kFurther / 2) {
            if (lastSet < kRounds * kFurther) std::this_thread::yield();
            return false;
        }
        BackgroundStage(first);
        return first.ScrollX <= std::exchange(before, first.ScrollX);
    };
    const auto setFurther = [&](int32_t round) {
        if (round >= kRounds) return;
        if (Infos()[3] < lastSet) ++lost;
        InitSpriteBackground(kStays, kStays, kStays, (round + 1) * kFurther, kStays, kStays, kStays);
        lastSet = (round + 1) * kFurther;
    };
    EXPECT_EQ(CountBeside(kRounds, setFurther, fellBack), 0);
    EXPECT_EQ(lost, 0);
    EXPECT_GE(Infos()[3], kRounds * kFurther);
}

// One sprite as the model knows it: its place in its own coordinates and where it was drawn last.
struct ModelSprite {
    Point place, target, speed;
    int32_t mode;
    int screen;
    Point drawn{0, 0};

    void Move() {
        for (size_t axis : {0u, 1u})
            place[axis] += std::clamp(target[axis] - place[axis], -speed[axis], speed[axis]);
    }
};

void CopyBlock(Picture &target, const Picture &source, Point to, Point size, Point from) {
    for (int32_t y = 0; y < target.height; ++y)
        for (int32_t x = 0; x < target.width; ++x) {
            const int64_t sourceX = int64_t{from[0]} + x - to[0], sourceY = int64_t{from[1]} + y - to[1];
            const bool isInBlock = x >= to[0] && x - to[0] < size[0] && y >= to[1] && y - to[1] < size[1];
            if (isInBlock && sourceX >= 0 && sourceX < source.width && sourceY >= 0 &&
                sourceY < source.height)
                target.At(x, y) = source.At(static_cast<int>(sourceX), static_cast<int>(sourceY));
        }
}

// The whole screen against a drawing of the world, of which a window is cut out (or, with background mode 0,
// the old and the new place of each sprite), through a run of settings.
TEST(World, ShowsTheViewOfAllSpritesWhereverItScrolls) {
    World scene;
    Canvas otherScreen(World::kViewWidth, World::kViewHeight);
    Picture expected[2] = {Noise(40, 30, 12), Noise(40, 30, 13)};
    scene.window.Put(expected[0]);
    otherScreen.Put(expected[1]);
    // The last one is in the world as all are, but the view goes to the first one's screen.
    std::vector<ModelSprite> model = {{{30, 20}, {70, 44}, {3, 1}, 0, 0}, {{5, 6}, {5, 6}, {2, 2}, 1, 0},
                                      {{9, 12}, {27, 3}, {2, 1}, -7, 0},  {{60, 50}, {60, 50}, {1, 1}, 0, 0},
                                      {{10, 8}, {50, 30}, {1, 1}, 0, 1},  {{2, 18}, {2, 18}, {1, 1}, 1, 1}};
    std::vector<SpriteRecord *> sprites;
    for (const ModelSprite &sprite : model)
        sprites.push_back(&scene.AddTo(sprite.screen == 0 ? scene.window : otherScreen, sprite.place,
                                       sprite.target, sprite.speed, sprite.mode));
    struct Change {
        int frame;
        Settings settings;
    };
    const Change changes[] = {{0, {1, 40, 30, 0, 0, 2, 1}},
                              {6, {kStays, kStays, kStays, kStays, kStays, -3, 4}},
                              {12, {kStays, 25, 11, 56, 34, 0, 0}},
                              {14, {kStays, 40, 30, 70, 50, kStays, -9}},   // beyond the world
                              {18, {kStays, 4000, 3000, -17, -5, 1, 0}},    // larger than the world
                              {22, {kStays, 0, 30, 3, 3, kStays, kStays}},  // nothing
                              {24, {kStays, 40, -30, kStays, kStays, kStays, kStays}},
                              {26, {0, 40, 30, 8, 5, 1, 1}},  // rectangles, tied sprites at their shift
                              {32, {2, kStays, kStays, 20, 10, 0, 0}},
                              {34, {0, kStays, kStays, 0, kStays, kStays, kStays}},
                              {36, {1, kStays, kStays, kHighest, kLowest, 5, -5}}};
    Settings settings{};
    for (int frame = 0; frame < 40; ++frame) {
        SCOPED_TRACE(frame);
        for (const Change &change : changes)
            if (change.frame == frame) {
                Set(change.settings);
                for (size_t i = 0; i < settings.size(); ++i)
                    if (change.settings[i] != kStays) settings[i] = change.settings[i];
            }
        const Point scroll{settings[3], settings[4]};
        Picture world = scene.background;
        std::vector<Point> formerly;
        for (ModelSprite &sprite : model) {
            formerly.push_back(sprite.drawn);
            sprite.drawn = sprite.place;
            if (sprite.mode != 0)
                for (size_t axis : {0u, 1u}) sprite.drawn[axis] = WrapAdd(sprite.place[axis], scroll[axis]);
            if (std::abs(int64_t{sprite.drawn[0]}) < 1000)
                scene.Paint(world, sprite.drawn[0], sprite.drawn[1]);
        }
        if (settings[0] != 0) CopyBlock(expected[0], world, {0, 0}, {settings[1], settings[2]}, scroll);
        for (size_t i = 0; i < model.size() && settings[0] == 0; ++i)
            for (const Point &place : {formerly[i], model[i].drawn})
                CopyBlock(expected[model[i].screen], world, place, {12, 10}, place);
        Scene::Step(1);
        EXPECT_TRUE(SamePicture("world-window", scene.window.Get(), expected[0]));
        EXPECT_TRUE(SamePicture("world-other", otherScreen.Get(), expected[1]));
        EXPECT_TRUE(SamePicture("world-back", scene.back.Get(), scene.background));
        Numbers places;
        for (ModelSprite &sprite : model) {
            sprite.Move();
            places.insert(places.end(),
                          {sprite.place[0], sprite.place[1], sprite.target[0], sprite.target[1]});
        }
        EXPECT_EQ(PlacesOf(sprites), places);
        settings[3] = WrapAdd(settings[3], settings[5]);
        settings[4] = WrapAdd(settings[4], settings[6]);
        EXPECT_EQ(Infos(), settings);
    }
    EXPECT_TRUE(SamePicture("world-clean", scene.clean.Get(), scene.background));
}

// The cage is tested before the shift. Rectangle and waypoints are in the world, and a target that they set
// goes along with the view from then on.
TEST(World, HasTheCageInTheViewButRectangleAndWaypointsInTheWorld) {
    World scene;
    Set({1, 40, 30, 100, 0, 2, 0});
    SpriteRecord &caged = scene.AddTied({34, 10}, {90, 10}, 4);
    SpriteRecord &turned = scene.AddTied({15, 10}, {40, 10}, 5);
    SpriteRecord &guided = scene.AddTied({5, 7}, {5, 7}, 50);
    SetSpriteCage(HandleOf(&caged), 0, 0, 50, 50, 20, 10);
    SpriteMovingRect(HandleOf(&turned), 110, -1, 130, -1);
    const int16_t waypoints[] = {120, 7, 130, 9};
    MoveSpriteWithTable(HandleOf(&guided), waypoints, 2, 0, 0, 0);
    // After each frame: X of the caged one, of the turned one, and X and target of the guided one.
    const Numbers trace[] = {{38, 20, 5, 20},  {42, 25, 20, 28}, {46, 30, 28, 16}, {50, 25, 16, 24},
                             {20, 20, 24, 12}, {20, 15, 12, 20}, {20, 10, 20, 8},  {20, 5, 8, 16},
                             {20, 0, 16, 4},   {20, 0, 4, 12}};
    for (const Numbers &expected : trace) {
        Scene::Step(1);
        EXPECT_EQ((Numbers{caged.X, turned.X, guided.X, guided.TargetX}), expected);
    }
    EXPECT_EQ((Point{caged.DrawnX, caged.ScrollShiftX}), (Point{138, 118}));
}

// Between its pass and the end of the frame a sprite's mode may be switched, or it may be deleted.
TEST(World, TakesAShiftOffExactlyWhereOneWasPutOn) {
    World scene;
    Set({1, 40, 30, 1000, -500, 0, 0});
    std::vector<SpriteRecord *> sprites;
    for (int32_t i = 0; i < 4; ++i) sprites.push_back(&scene.AddTied({10 + i, 20 + i}, {30, 20 + i}, 0));
    const auto [first, switchedOff, switchedOn, deleted] =
        std::array{sprites[0], sprites[1], sprites[2], sprites[3]};
    SpriteScrollMode(HandleOf(switchedOn), 0);
    const Numbers before = PlacesOf(sprites);
    for (int frame = 0; frame < 2; ++frame) {
        BackgroundStage(*first);
        for (SpriteRecord *sprite : sprites) RunPass(*sprite, *first);
        EXPECT_EQ((Numbers{first->Y, switchedOff->X, switchedOn->X, deleted->X}),
                  frame == 0 ? (Numbers{-480, 1011, 12, 1013}) : (Numbers{-480, 11, 1012, 13}));
        SpriteScrollMode(HandleOf(switchedOff), 0);
        SpriteScrollMode(HandleOf(switchedOn), 1);
        DeleteSprite(HandleOf(deleted));
        PresentStage(*first);
        RestoreStage(*first);
        EXPECT_EQ(PlacesOf(sprites), before) << frame;
    }
}

}  // namespace
}  // namespace fenlight::test
