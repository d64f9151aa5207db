// SPDX-License-Identifier: Zlib
// The collision with a mask, stepped by hand, and its settings beside the thread.
#include <gtest/gtest.h>

#include "fenlight/sound.h"
#include "fenlight/sprite_collision.h"
#include "sound/sound_voice.h"
#include "sound/wave_image.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_scene.h"
#include "sprites/stages.h"

namespace fenlight::test {
namespace {

constexpr int kSize = 64;
constexpr int32_t kLeft = -7, kTop = -8, kRight = 901, kBottom = 902;

// White, with black points to run into.
struct Mask : Canvas {
    Mask() : Canvas(kSize, kSize) { Blacken({}); }
    void Blacken(const std::vector<Point> &points) {
        Picture picture(kSize, kSize);
        for (uint32_t &pixel : picture.pixels) pixel = 0xFFFFFF;
        for (const Point &point : points) picture.At(point[0], point[1]) = 0;
        Put(picture);
    }
};

// A frame of 11 x 9 pixels on its way from (19, 30) to (20, 30).
struct Runner : LooseSprite {
    Runner(const Mask &mask, int32_t mode, uintptr_t sound = 0) : LooseSprite({19, 30}, {500, 31}, {1, 0}) {
        Width = 11;
        Height = 9;
        FrameCount = 5;
        Frame = 3;
        SetBackAutoCollision(Handle(), mask, mode, kLeft, kTop, kRight, kBottom, 4, 2, 6, sound);
    }
    void Run() {
        LookAheadStage(*this);
        BackgroundCollisionStage(*this);
    }
};

// Worked out by hand: quarters are 2 and 2, halves 5 and 4, three quarters 6 and 6.
const std::map<Point, Point> kTargets{
    {{22, 31}, {500, kBottom}}, {{25, 30}, {500, kBottom}}, {{26, 31}, {500, kBottom}},
    {{29, 32}, {kLeft, 31}},    {{30, 34}, {kLeft, 31}},    {{29, 36}, {kLeft, 31}},
    {{20, 31}, {kRight, 31}},   {{20, 34}, {kRight, 31}},   {{20, 35}, {kRight, 31}},
    {{22, 37}, {500, kTop}},    {{25, 38}, {500, kTop}},    {{26, 37}, {500, kTop}}};

TEST(BackgroundCollision, ProbesTwelvePointsAndTurnsRoundAtEachEdge) {
    Mask mask;
    for (int32_t y = 25; y < 45; ++y)
        for (int32_t x = 15; x < 35; ++x) {
            mask.Blacken({{x, y}});
            Runner runner(mask, 2);
            runner.Run();
            const auto hit = kTargets.find({x, y});
            EXPECT_EQ(runner.Target(), hit == kTargets.end() ? (Point{500, 31}) : hit->second)
                << x << ' ' << y;
            EXPECT_EQ(runner.BackCollideMode, 2);
        }
}

class Sound {
  public:
    Sound() {
        EXPECT_EQ(DSoundInit(0), 0);
        const std::string image = WaveImage().Whole();
        handle = DSoundLoadMemory(image.data(), static_cast<int32_t>(image.size()));
        EXPECT_NE(handle, 0u);
    }
    Sound(const Sound &) = delete;
    Sound &operator=(const Sound &) = delete;
    ~Sound() {
        DSoundUnLoad(handle);
        DSoundDeInit();
    }
    // How many voices were started since the last question.
    uint32_t Started() {
        const uint32_t index = reinterpret_cast<SoundBlock *>(handle)->voiceIndex, before = last_;
        last_ = index;
        return (index + kVoiceCount - before) % kVoiceCount;
    }
    uintptr_t handle;

  private:
    uint32_t last_ = 0;
};

TEST(BackgroundCollision, ReactsByItsMode) {
    const std::map<char, Point> edges{{'T', {25, 30}}, {'R', {30, 34}}, {'B', {25, 38}}, {'L', {20, 34}}};
    const struct {
        int32_t mode;
        std::string hit;
        int32_t x, y;
        uint32_t voices;
    } cases[] = {{0, "T", 500, 31, 0},         {1, "", 500, 31, 0},        {1, "TR", 19, 30, 1},
                 {2, "TR", kLeft, kBottom, 2}, {2, "TB", 500, kTop, 2},    {3, "", 500, kTop, 0},
                 {3, "T", 500, kBottom, 1},    {4, "", kRight, 31, 0},     {4, "R", kLeft, 31, 1},
                 {5, "", 500, kBottom, 0},     {5, "B", 500, kTop, 1},     {5, "T", 500, kBottom, 1},
                 {6, "", kLeft, 31, 0},        {6, "LB", kRight, kTop, 2}, {8, "TR", 500, 31, 0},
                 {1112, "T", 500, 31, 0},      {-1, "TR", 500, 31, 2},     {kLowest, "T", 500, 31, 1}};
    Sound sound;
    Mask mask;
    sound.Started();
    for (const auto &test : cases) {
        SCOPED_TRACE(testing::Message() << "mode " << test.mode << " hits " << test.hit);
        std::vector<Point> black;
        for (const char edge : test.hit) black.push_back(edges.at(edge));
        mask.Blacken(black);
        Runner runner(mask, test.mode, sound.handle);
        runner.Run();
        EXPECT_EQ(runner.Target(), (Point{test.x, test.y}));
        EXPECT_EQ(runner.Position(), (Point{19, 30}));
        EXPECT_EQ(sound.Started(), test.voices);
        EXPECT_EQ(runner.BackCollideMode, test.mode);
    }
}

TEST(BackgroundCollision, FindsNothingOutsideTheMaskAndInDeadContexts) {
    Mask mask;
    mask.Blacken({{0, 0}, {63, 63}, {63, 0}, {0, 63}});
    for (const Point &next : {Point{-40, -40}, Point{80, 30}, Point{kHighest - 3, kLowest}, Point{30, 200}}) {
        Runner runner(mask, 2);
        SetSpritePos(runner.Handle(), next[0], next[1], next[0], next[1]);
        runner.Run();
        runner.BackCollideDC = 12345;
        runner.Run();
        EXPECT_EQ(runner.Target(), next);
    }
}

TEST(BackgroundCollision, ExplodesOnceAndGoesOnItsLastFrame) {
    Sound sound;
    Mask mask;
    mask.Blacken({{25, 30}});
    Runner runner(mask, 7, sound.handle);
    sound.Started();
    Words expected = WordsOf(runner);
    runner.FrameTimer = 3;
    runner.Run();
    for (int32_t position = 160; position <= 228; position += 4)
        expected[position] = position % 8 == 0 ? kLeft : kTop;
    constexpr int32_t kChanged[] = {4, kLeft, 8, kTop, 12, kRight, 16,   kBottom, 20, 4,   24,
                                    2, 28,    6, 144,  1,  268,    1111, 276,     20, 280, 30};
    for (size_t i = 0; i < std::size(kChanged); i += 2) expected[kChanged[i]] = kChanged[i + 1];
    expected.erase(48);  // SpeedX
    EXPECT_EQ(WordsOf(runner), expected);
    EXPECT_EQ(sound.Started(), 1u);

    // A picture that reaches nothing black, and one that does.
    runner.Width = 11;
    runner.Height = 9;
    runner.Frame = 4;
    mask.Blacken({});
    runner.Run();
    EXPECT_EQ(runner.State, 0) << "only a pass with a hit ends it";
    mask.Blacken({{19 + 5, 30}});
    runner.Frame = 3;
    runner.Run();
    EXPECT_EQ(runner.BackCollideMode, 1111);
    runner.Frame = 4;
    runner.FixMode = 1;
    runner.Run();
    EXPECT_EQ((std::array<int32_t, 3>{runner.State, runner.BackCollideMode, runner.FixMode}),
              (std::array<int32_t, 3>{1, 0, 0}));
    EXPECT_EQ(sound.Started(), 0u);

    Runner brief(mask, 7);
    mask.Blacken({{25, 30}});
    brief.BackFrame = 4;
    brief.Run();
    EXPECT_EQ(brief.State, 1) << "its first frame is its last one";
}

TEST(BackgroundCollision, SeesItsTenValuesWholeBesideACaller) {
    Mask mask;
    mask.Blacken({{25, 30}});
    Runner runner(mask, 2);
    const int32_t mixed = CountBeside(
        100000,
        [&](int32_t round) {
            const int32_t number = round % 2 ? 7 : -9;
            SetBackAutoCollision(runner.Handle(), mask, 7, number, number, 11, 9, number, number - 1, number,
                                 0);
        },
        [&] {
            SetSpritePos(runner.Handle(), 19, 30, 500, 30);
            SetSpriteSpeed(runner.Handle(), 1, 0);
            runner.SourceX = 0;
            runner.Run();
            const int32_t number = runner.SourceX;
            return number != 0 && (runner.SourceY != number || runner.FrameCount != number ||
                                   runner.Frame != number - 1 || runner.FrameDelay != number);
        });
    EXPECT_EQ(mixed, 0);
}

}  // namespace
}  // namespace fenlight::test
