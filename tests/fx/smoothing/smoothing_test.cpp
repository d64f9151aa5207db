// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <functional>
#include <random>

#include "fenlight/fx_smoothing.h"
#include "fx/fx_picture.h"
#include "fx/smoothing/smoothing_judges.h"
#include "platform/system/failure_point.h"
#include "support/each_level.h"

namespace fenlight::test {
namespace {

using platform::Operation;

// One call, on buffers that may be one in several roles.
struct Scene {
    Buffer *source, *fx, *mask;
    uint32_t key = 0;
    int32_t flags = 0;
    uint32_t extraPasses = 0;
};

struct Effect {
    const char *name;
    int32_t (*call)(uintptr_t dc, int32_t x, int32_t y, const Scene &scene);
    void (*judge)(const Scene &scene);
};

constexpr Effect kEffects[] = {
    {"Blur",
     [](uintptr_t dc, int32_t x, int32_t y, const Scene &s) { return Blur(dc, x, y, s.fx->Handle()); },
     [](const Scene &s) { JudgeBlur(*s.fx); }},
    {"Smooth",
     [](uintptr_t dc, int32_t x, int32_t y, const Scene &s) {
         return Smooth(dc, x, y, s.fx->Handle(), s.mask->Handle());
     },
     [](const Scene &s) { JudgeSmooth(*s.fx, *s.mask); }},
    {"Fog",
     [](uintptr_t dc, int32_t x, int32_t y, const Scene &s) {
         return Fog(dc, x, y, s.source->Handle(), s.fx->Handle(), s.mask->Handle());
     },
     [](const Scene &s) { JudgeFog(*s.source, *s.fx, *s.mask); }},
    {"Antialiasing",
     [](uintptr_t dc, int32_t x, int32_t y, const Scene &s) {
         return Antialiasing(dc, x, y, s.fx->Handle(), s.key, s.flags, s.extraPasses);
     },
     [](const Scene &s) { JudgeAntialiasing(*s.fx, s.key, s.flags, s.extraPasses); }},
    {"Rustle",
     [](uintptr_t dc, int32_t x, int32_t y, const Scene &s) { return Rustle(dc, x, y, s.fx->Handle()); },
     [](const Scene &s) { JudgeRustle(*s.fx); }},
};
constexpr size_t kFog = 2, kRustle = 4;

class Smoothing : public EachLevel {
  protected:
    int32_t Pick(int32_t low, int32_t high) {
        return low + static_cast<int32_t>(random_() % static_cast<uint32_t>(high - low + 1));
    }
    // Sizes at which rows are shorter than a vector, a word of marks or the rows that run in step; now and
    // then rows longer than any piece in which they are taken.
    Buffer NoisyBuffer(int32_t width, int32_t height) {
        Buffer buffer(width, height, Pick(0, 1) != 0, Pick(0, 1) != 0);
        const uint32_t values = Pick(0, 2) == 0 ? 256 : 2;
        for (int64_t i = 0; i < buffer.Size(); ++i)
            buffer[i] = static_cast<uint8_t>(random_() % values * 131);
        return buffer;
    }
    // A key that some pixels have, one that none can have, or that of the last pixel.
    uint32_t NoisyKey() {
        const uint32_t colours[] = {0xFFFFFFFF, 0, 0x830083, 0x838383, 0x01000000, 0x7F838383};
        return colours[random_() % std::size(colours)];
    }

    std::mt19937 random_{20261123};
};

// The block of one buffer, shown in the size of another and no further than that reaches.
Picture Shown(Buffer &block, const Buffer &size, int32_t x, int32_t y, const Picture &target) {
    Buffer shown(size.header.biWidth, size.header.biHeight, false);
    shown.header.biSizeImage = std::min(block.header.biSizeImage, size.header.biSizeImage);
    shown.header.Pixels = (block.Handle(), block.header.Pixels);
    const Picture picture = PictureInBlock(shown.header, (3 * size.header.biWidth + 3) / 4 * 4);
    Picture expected = target;
    for (int32_t row = 0; row < std::min(picture.height, target.height - y); ++row)
        for (int32_t column = 0; column < std::min(picture.width, target.width - x); ++column)
            expected.At(x + column, y + row) = picture.At(column, row);
    return expected;
}

TEST_P(Smoothing, EffectsDoWhatTheirDefinitionsSayAndNothingElse) {
    const Canvas canvas(70, 38);
    for (uint32_t scene = 0; scene < 4000; ++scene) {
        const size_t kind = scene % std::size(kEffects);
        const int32_t width = Pick(0, 40) == 0 ? Pick(250, 700) : Pick(1, 67), height = Pick(1, 35);
        const bool isMixed = Pick(0, 4) == 0;  // buffers of different sizes
        std::vector<Buffer> buffers;
        for (int i = 0; i < 3; ++i)
            buffers.push_back(isMixed ? NoisyBuffer(Pick(1, 67), Pick(1, 35)) : NoisyBuffer(width, height));
        std::vector<Buffer> expected = buffers;
        const size_t source = Pick(0, 9) == 0 ? 1 : 0, mask = Pick(0, 9) == 0 ? Pick(0, 1) : 2;
        Scene actualScene{&buffers[source], &buffers[1],     &buffers[mask],
                          NoisyKey(),       Pick(0, 15) - 8, static_cast<uint32_t>(Pick(0, 2))};
        Scene judgedScene = actualScene;
        judgedScene.source = &expected[source];
        judgedScene.fx = &expected[1];
        judgedScene.mask = &expected[mask];

        const int32_t x = Pick(0, 5), y = Pick(0, 5);
        const uintptr_t dc = Pick(0, 2) == 0 ? canvas.context : 0;
        const Picture before = PictureOf(canvas.context, 70, 38);
        RandomSeed(scene + 1);
        ASSERT_EQ(kEffects[kind].call(dc, x, y, actualScene), 0);
        const uint32_t nextDraw = RandomDraw(0xFFFFFFFF);
        if (kind == kRustle) std::copy_n(&buffers[1][0], 3, &expected[1][0]);
        RandomSeed(scene + 1);
        kEffects[kind].judge(judgedScene);
        for (size_t i = 0; i < buffers.size(); ++i)
            ASSERT_EQ(buffers[i].bytes, expected[i].bytes)
                << kEffects[kind].name << ", scene " << scene << ", buffer " << i << " of "
                << buffers[i].header.biWidth << " x " << buffers[i].header.biHeight << ", flags "
                << actualScene.flags << ", key " << actualScene.key;
        ASSERT_EQ(RandomDraw(0xFFFFFFFF), nextDraw) << kEffects[kind].name << " drew another number of times";
        const Buffer &size = expected[kind == kFog ? source : 1];
        ASSERT_TRUE(SamePicture(kEffects[kind].name, PictureOf(canvas.context, 70, 38),
                                dc == 0 ? before : Shown(expected[1], size, x, y, before)));
    }
}

// The first pixels of one colour, alone in an otherwise black picture.
Buffer Black(int32_t width, int32_t height) {
    Buffer buffer(width, height, false);
    for (int64_t i = 0; i < buffer.Size(); ++i) buffer[i] = 0;
    return buffer;
}

TEST_P(Smoothing, TracesWorkedByHand) {
    Buffer light = Black(5, 5);
    light[3 * 12] = 200;
    EXPECT_EQ(Blur(0, 0, 0, light.Handle()), 0);
    const int blurred[3][3] = {{0, 50, 12}, {50, 25, 9}, {12, 9, 4}};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(light[3 * (5 * (i / 3 + 1) + i % 3 + 1)], blurred[i / 3][i % 3]) << i;

    Buffer noise = Black(4, 4);
    EXPECT_EQ(Rustle(0, 0, 0, noise.Handle()), 0);
    const char *const sequence = "bwwwwbbbbbwwwbw";
    for (int i = 1; i < 16; ++i) EXPECT_EQ(noise[3 * i], sequence[i - 1] == 'w' ? 255 : 0) << i;

    // The weights of a lone bright byte in its own place and beside it.
    for (const auto &[flags, own, beside] : {std::array{2, 0, 60}, {3, 80, 40}}) {
        Buffer lone = Black(5, 5);
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
        const Buffer start = NoisyBuffer(Pick(5, 12), Pick(5, 9));
        const uint32_t key = i % 4 == 0 ? 0u : NoisyKey();
        const int32_t flags = i % 4;
        std::vector<std::vector<uint8_t>> history;
        Buffer judged = start;
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
            Buffer actual = start;
            ASSERT_EQ(Antialiasing(0, 0, 0, actual.Handle(), key, flags, static_cast<uint32_t>(passes - 1)),
                      0);
            ASSERT_EQ(actual.bytes, history[passes < first ? passes : first + (passes - first) % round])
                << passes << " passes, scene " << i << ", flags " << flags;
        }
    }
    EXPECT_GT(longestRound, 1u) << "no picture that comes again";
}

TEST_P(Smoothing, BuffersStayAsTheyWereWithoutMemoryOrWithoutABuffer) {
    Buffer source = NoisyBuffer(9, 9), fx = NoisyBuffer(8, 8), mask = NoisyBuffer(8, 8);
    const Buffer sourceBefore = source, fxBefore = fx, maskBefore = mask;
    const Scene scene{&source, &fx, &mask, 0, 0, 100};
    const auto expectUntouched = [&](const char *what) {
        EXPECT_EQ(source.bytes, sourceBefore.bytes) << what;
        EXPECT_EQ(fx.bytes, fxBefore.bytes) << what;
        EXPECT_EQ(mask.bytes, maskBefore.bytes) << what;
    };
    for (const Effect &effect : kEffects) {
        for (int operation = 1;; ++operation) {
            RandomSeed(5);
            platform::FailOnce(Operation::Memory, operation);
            EXPECT_EQ(effect.call(0, 0, 0, scene), 0);
            const bool hasFailed = platform::CountOperations(Operation::Memory) >= operation;
            platform::ForgetFailures();
            if (!hasFailed) break;
            expectUntouched(effect.name);
            const uint32_t draw = RandomDraw(0xFFFFFFFF);
            RandomSeed(5);
            EXPECT_EQ(RandomDraw(0xFFFFFFFF), draw);
        }
        EXPECT_NE(fx.bytes, fxBefore.bytes) << effect.name << " with memory";
        fx.bytes = fxBefore.bytes;
        mask.bytes = maskBefore.bytes;
    }

    const Canvas canvas(9, 9);
    const uintptr_t handles[] = {source.Handle(), fx.Handle(), mask.Handle()};
    for (size_t missing = 0; missing < 3; ++missing) {
        const auto handle = [&](size_t i) { return i == missing ? 0 : handles[i]; };
        EXPECT_EQ(Fog(canvas.context, 0, 0, handle(0), handle(1), handle(2)), 0);
        const uintptr_t noMask = missing == 1 ? handles[2] : 0;
        EXPECT_EQ(Smooth(canvas.context, 0, 0, handle(1), noMask), 0);
    }
    EXPECT_EQ(Blur(canvas.context, 0, 0, 0) | Antialiasing(canvas.context, 0, 0, 0, 0, 0, 0) |
                  Rustle(canvas.context, 0, 0, 0),
              0);
    expectUntouched("no handle");
    EXPECT_TRUE(SamePicture("no handle", PictureOf(canvas.context, 9, 9), Picture(9, 9)));
}

INSTANTIATE_TEST_SUITE_P(Levels, Smoothing, kEachLevel);

}  // namespace
}  // namespace fenlight::test
