// SPDX-License-Identifier: Zlib
#include <algorithm>

#include "fenlight/fx_smoothing.h"
#include "fx/fx_picture.h"
#include "fx/smoothing/smoothing_judges.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using platform::Operation;

// One call, on buffers that may be one in several roles.
struct Scene {
    GuardedBuffer *source, *fx, *mask;
    uint32_t key = 0;
    int32_t flags = 0;
    uint32_t extraPasses = 0;
    HDC dc = 0;
    int32_t x = 0, y = 0;
};

struct Effect {
    const char *name;
    int32_t (*call)(const Scene &scene);
    void (*judge)(const Scene &scene);
};

constexpr Effect kEffects[] = {
    {"Blur", [](const Scene &s) { return Blur(s.dc, s.x, s.y, s.fx->Handle()); },
     [](const Scene &s) { JudgeBlur(*s.fx); }},
    {"Smooth", [](const Scene &s) { return Smooth(s.dc, s.x, s.y, s.fx->Handle(), s.mask->Handle()); },
     [](const Scene &s) { JudgeSmooth(*s.fx, *s.mask); }},
    {"Fog",
     [](const Scene &s) { return Fog(s.dc, s.x, s.y, s.source->Handle(), s.fx->Handle(), s.mask->Handle()); },
     [](const Scene &s) { JudgeFog(*s.source, *s.fx, *s.mask); }},
    {"Antialiasing",
     [](const Scene &s) {
         return Antialiasing(s.dc, s.x, s.y, s.fx->Handle(), s.key, s.flags, s.extraPasses);
     },
     [](const Scene &s) { JudgeAntialiasing(*s.fx, s.key, s.flags, s.extraPasses); }},
    {"Rustle", [](const Scene &s) { return Rustle(s.dc, s.x, s.y, s.fx->Handle()); },
     [](const Scene &s) { JudgeRustle(*s.fx); }},
};
constexpr size_t kFog = 2, kRustle = 4;

class Smoothing : public FXLevels {
  protected:
    // A key that some pixels have, one that none can have, or that of the last pixel.
    uint32_t NoisyKey() {
        const uint32_t colours[] = {0xFFFFFFFF, 0, 0xFF00FF, 0xFFFFFF, 0x01000000, 0x7FFFFFFF};
        return colours[dice() % std::size(colours)];
    }
};

TEST_P(Smoothing, EffectsDoWhatTheirDefinitionsSayAndNothingElse) {
    const Twins twins(70, 38);
    for (uint32_t scene = 0; scene < 4000; ++scene) {
        const size_t kind = scene % std::size(kEffects);
        std::vector<GuardedBuffer> buffers = dice.Roles(), expected = buffers;
        const size_t source = dice() % 10 == 0 ? 1 : 0, mask = dice() % 10 == 0 ? dice() % 2 : 2;
        const int32_t flags = dice.Between(-8, 7);
        Scene actual{&buffers[source], &buffers[1], &buffers[mask], NoisyKey(), flags, dice() % 3};
        if (dice() % 3 == 0)
            actual.dc = twins.dc, actual.x = dice.Between(0, 5), actual.y = dice.Between(0, 5);
        Scene judged = actual;
        judged.source = &expected[source], judged.fx = &expected[1], judged.mask = &expected[mask];

        SCOPED_TRACE(testing::Message() << kEffects[kind].name << ", scene " << scene);
        RandomSeed(scene + 1);
        ASSERT_EQ(kEffects[kind].call(actual), 0);
        const uint32_t nextDraw = RandomDraw(0xFFFFFFFF);
        if (kind == kRustle) std::copy_n(buffers[1].At(0), 3, expected[1].At(0));
        RandomSeed(scene + 1);
        kEffects[kind].judge(judged);
        ASSERT_TRUE(SameBuffers(buffers, expected)) << "flags " << flags << ", key " << actual.key;
        ASSERT_EQ(RandomDraw(0xFFFFFFFF), nextDraw) << "drawn another number of times";
        // The block, shown in the size of the source and no further than either reaches.
        FXHeader shown = expected[kind == kFog ? source : 1].header;
        shown.biSizeImage = std::min(shown.biSizeImage, expected[1].header.biSizeImage);
        if (actual.dc != 0) PaintFX(twins.expected, actual.x, actual.y, shown, expected[1].At(0));
        ASSERT_TRUE(twins.Same(kEffects[kind].name));
    }
}

TEST_P(Smoothing, TracesWorkedByHand) {
    GuardedBuffer light(5, 5), noise(4, 4), lone(5, 5);
    light.Fill(0);
    light[3 * 12] = 200;
    EXPECT_EQ(Blur(0, 0, 0, light.Handle()), 0);
    const int blurred[3][3] = {{0, 50, 12}, {50, 25, 9}, {12, 9, 4}};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(light[3 * (5 * (i / 3 + 1) + i % 3 + 1)], blurred[i / 3][i % 3]) << i;

    noise.Fill(0);
    EXPECT_EQ(Rustle(0, 0, 0, noise.Handle()), 0);
    const char *const sequence = "bwwwwbbbbbwwwbw";
    for (int i = 1; i < 16; ++i) EXPECT_EQ(noise[3 * i], sequence[i - 1] == 'w' ? 255 : 0) << i;

    // The weights of a lone bright byte in its own place and beside it.
    for (const auto &[flags, own, beside] : {std::array{2, 0, 60}, {3, 80, 40}}) {
        lone.Fill(0);
        lone[3 * 12] = lone[3 * 12 + 1] = 240;
        EXPECT_EQ(Antialiasing(0, 0, 0, lone.Handle(), 0, flags, 0), 0);
        EXPECT_EQ(int{lone[3 * 12]}, own);
        EXPECT_EQ(int{lone[3 * 13]}, beside);
        EXPECT_EQ(int{lone[3 * 13 + 1]}, flags == 2 ? beside : 48);
    }
}

// Also of what turns up only after many passes: pictures that come again every second pass, or stay.
TEST_P(Smoothing, AntialiasingEndsSoonWithBillionsOfPasses) {
    size_t longestRound = 0;
    for (int i = 0; i < 40; ++i) {
        const GuardedBuffer start = dice.Noise(dice.Between(5, 12), dice.Between(5, 9), dice.Values());
        const uint32_t key = i % 4 == 0 ? 0u : NoisyKey();
        const int32_t flags = i % 4;
        std::vector<Bytes> history;
        GuardedBuffer judged = start;
        size_t first = 0;
        do {
            history.push_back(judged.bytes);
            // The key is found once; the last pixel never changes.
            JudgeAntialiasing(judged, key, flags, 0);
            first = static_cast<size_t>(std::find(history.begin(), history.end(), judged.bytes) -
                                        history.begin());
        } while (first == history.size());
        const size_t round = history.size() - first;
        longestRound = std::max(longestRound, round);
        for (const uint64_t passes : {15u, 16u, 17u, 18u, 40u, 4001u, 4294967295u}) {
            GuardedBuffer actual = start;
            ASSERT_EQ(Antialiasing(0, 0, 0, actual.Handle(), key, flags, static_cast<uint32_t>(passes - 1)),
                      0);
            ASSERT_EQ(actual.bytes, history[passes < first ? passes : first + (passes - first) % round])
                << passes << " passes, scene " << i << ", flags " << flags;
        }
    }
    EXPECT_GT(longestRound, 1u) << "no picture that comes again";
}

TEST_P(Smoothing, BuffersStayAsTheyWereWithoutMemoryOrWithoutABuffer) {
    std::vector<GuardedBuffer> buffers{dice.Noise(9, 9), dice.Noise(8, 8), dice.Noise(8, 8)};
    const std::vector<GuardedBuffer> before = buffers;
    GuardedBuffer &fx = buffers[1], &mask = buffers[2];
    const Scene scene{&buffers[0], &fx, &mask, 0, 0, 100};
    for (const Effect &effect : kEffects) {
        for (int operation = 1;; ++operation) {
            RandomSeed(5);
            platform::FailOnce(Operation::Memory, operation);
            EXPECT_EQ(effect.call(scene), 0);
            const bool hasFailed = platform::CountOperations(Operation::Memory) >= operation;
            platform::ForgetFailures();
            if (!hasFailed) break;
            EXPECT_TRUE(SameBuffers(buffers, before)) << effect.name;
            const uint32_t draw = RandomDraw(0xFFFFFFFF);
            RandomSeed(5);
            EXPECT_EQ(RandomDraw(0xFFFFFFFF), draw);
        }
        EXPECT_FALSE(SameBuffer(fx, before[1])) << effect.name << " with memory";
        fx.Set(before[1].Block());
        mask.Set(before[2].Block());
    }

    const Canvas canvas(9, 9);
    const uintptr_t handles[] = {buffers[0].Handle(), fx.Handle(), mask.Handle()};
    for (size_t missing = 0; missing < 3; ++missing) {
        const auto handle = [&](size_t i) { return i == missing ? 0 : handles[i]; };
        EXPECT_EQ(Fog(canvas.context, 0, 0, handle(0), handle(1), handle(2)), 0);
        const uintptr_t noMask = missing == 1 ? handles[2] : 0;
        EXPECT_EQ(Smooth(canvas.context, 0, 0, handle(1), noMask), 0);
    }
    EXPECT_EQ(Blur(canvas.context, 0, 0, 0) | Antialiasing(canvas.context, 0, 0, 0, 0, 0, 0) |
                  Rustle(canvas.context, 0, 0, 0),
              0);
    EXPECT_TRUE(SameBuffers(buffers, before)) << "no handle";
    EXPECT_TRUE(SamePicture("no handle", PictureOf(canvas.context, 9, 9), Picture(9, 9)));
}

INSTANTIATE_TEST_SUITE_P(Levels, Smoothing, kEachLevel);

}  // namespace
}  // namespace fenlight::test
