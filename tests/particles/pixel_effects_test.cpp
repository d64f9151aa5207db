// SPDX-License-Identifier: Zlib
#include "particles/pixel_effects.h"

#include <cstring>

#include "particle_scene.h"
#include "particles/effects_thread.h"

namespace fenlight::test {
namespace {

int LiveEffects() {
    return static_cast<int>(std::count_if(EffectTable.begin(), EffectTable.end(),
                                          [](const auto &slot) { return slot.load() != nullptr; }));
}

// Effects run out by themselves; how many frames that took.
int EmptyTable() {
    int frames = 0;
    for (; LiveEffects() != 0 && frames < 10000; ++frames) RunEffectsFrame();
    return frames;
}

PixelParticle *ParticlesOf(PixelEffectBlock *effect) { return reinterpret_cast<PixelParticle *>(effect + 1); }

// The definition once more, particle by particle and pixel by pixel.
struct PlainEffect {
    EffectArguments a;
    std::vector<PixelParticle> particles{};
    int32_t phase = 1;
    bool isOver = false;

    static int32_t Draw(int32_t limit) {
        return static_cast<int32_t>(RandomDraw(static_cast<uint32_t>(limit)));
    }

    void Make() {
        for (int32_t i = 0; i < a.particleCount; ++i) {
            PixelParticle p{0, 0, -111, -111, 0, 0, 0, a.colour};
            p.life = Draw(12) + a.lifeFrames;
            const int32_t dx = Draw(a.radius), dy = Draw(a.radius);
            for (bool isRefused = true; isRefused;) {
                p.vx = Draw(a.speedRange) - a.speedRange / 2;
                p.vy = Draw(a.speedRange) - a.speedRange / 2;
                isRefused = p.vx == 0 && p.vy == 0;
                if (!isRefused && p.vx != 0) isRefused = Draw(2) != 0;
                if (!isRefused && p.vy != 0) isRefused = Draw(2) != 0;
            }
            p.x = p.vx < 0 ? a.x - dx - p.vx : a.x + dx + p.vx;
            p.y = p.vy < 0 ? a.y - dy - p.vy : a.y + dy + p.vy;
            particles.push_back(p);
        }
    }
    void Restore(const PixelParticle &p) const {
        SetPixel(a.destDC, p.prevX, p.prevY, GetPixel(a.backgroundDC, p.prevX, p.prevY));
    }
    void Show(PixelParticle &p) const {
        Restore(p);
        p.prevX = p.x;
        p.prevY = p.y;
        SetPixel(a.destDC, p.x, p.y, p.particleColour);
        p.x += p.vx;
        p.y += p.vy;
        if (phase == 1 && a.gravityMode == 1) ++p.vx;
        if (phase == 1 && a.gravityMode == 2) ++p.vy;
        if (phase == 1 && a.gravityMode == 3) --p.vx;
        if (phase == 1 && a.gravityMode == 4) --p.vy;
        if (a.colourMode == 0)
            for (uint32_t unit = 1; unit <= 0x10000; unit *= 256)
                if ((p.particleColour & unit * 255) != 0) p.particleColour -= unit;
        if (a.colourMode == 1) p.particleColour = a.colour;
        if (a.colourMode == 2) p.particleColour = RandomDraw(0xFFFFFF);
    }
    void RunFrame() {
        if (isOver) return;
        if (--phase == 0) phase = 8;
        int drawn = 0;
        for (PixelParticle &p : particles) {
            if (p.life == 0) continue;
            if (p.life <= a.lifeFrames) {
                Show(p);
                ++drawn;
            }
            if (--p.life == 0) Restore(p);
        }
        isOver = drawn == 0;
    }
};

// Effects of many kinds, made and run by the library and by the definition with the same draws.
TEST(PixelEffects, AreMadeAndRunAsDefinedInAllFormats) {
    uint32_t seed = 1;
    ForAllContexts([&seed](int bits, int behind) {
        const ContextPair actual(bits, behind), expected(bits, behind);
        const bool isDead = behind == kDead;
        std::vector<PlainEffect> plain;
        std::vector<PixelEffectBlock *> effects;
        for (int32_t kind = 0; kind < 12; ++kind) {
            EffectArguments arguments{actual.dest,
                                      actual.backgroundDC,
                                      45 + 5 * kind,
                                      40 - 4 * kind,
                                      0xFF010203u * static_cast<uint32_t>(kind + 1),
                                      1 + kind * kind,
                                      2 + kind,
                                      kind % 6,
                                      kind == 3 ? 700 : 1 + 7 * kind,
                                      (kind + 1) % 5,
                                      3 * kind};
            RandomSeed(seed);
            effects.push_back(AddPixelEffect(arguments));
            arguments.destDC = expected.dest;
            if (!isDead) arguments.backgroundDC = expected.backgroundDC;
            plain.push_back({arguments});
            RandomSeed(seed);
            plain.back().Make();
            seed += 2;
        }
        for (int frame = 0; LiveEffects() != 0; ++frame, seed += 2) {
            ASSERT_LT(frame, 50);
            for (size_t i = 0; i < plain.size(); ++i) {
                if (plain[i].isOver) continue;
                ASSERT_EQ(EffectTable[i], effects[i]);
                ASSERT_EQ(std::memcmp(ParticlesOf(effects[i]), plain[i].particles.data(),
                                      plain[i].particles.size() * sizeof(PixelParticle)),
                          0)
                    << "effect " << i << " frame " << frame;
            }
            RandomSeed(seed);
            RunEffectsFrame();
            RandomSeed(seed);
            for (PlainEffect &effect : plain) effect.RunFrame();
            ASSERT_TRUE(SamePicture("effects", actual.dest.Get(), expected.dest.Get())) << frame;
        }
        for (const PlainEffect &effect : plain) EXPECT_TRUE(effect.isOver);
    });
}

// Worked out by hand: a red spark that fades to black, not further, while it falls faster in every 8th frame.
TEST(PixelEffects, TraceOfASpark) {
    Canvas dest(40, 40), background(40, 40);
    background.Put(Picture(40, 40, 0x123456));
    dest.Put(Picture(40, 40, 0x123456));
    PixelEffectBlock *effect = AddPixelEffect({dest, background, 5, 5, 5, 1, 2, 2, 1, 0, 20});
    ASSERT_NE(effect, nullptr);
    ParticlesOf(effect)[0] = {10, 3, -111, -111, 20, 1, 0, 5};
    const int rows[] = {3, 3, 3, 3, 3, 3, 3, 3, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 15, 17};
    for (int frame = 0; frame < 20; ++frame) {
        RunEffectsFrame();
        Picture expected(40, 40, 0x123456);
        const int red = std::max(5 - frame, 0);
        if (frame < 19) expected.At(10 + frame, rows[frame]) = static_cast<uint32_t>(red) << 16;
        ASSERT_TRUE(SamePicture("spark", dest.Get(), expected)) << frame;
        ASSERT_EQ(LiveEffects(), 1);
    }
    RunEffectsFrame();
    EXPECT_EQ(LiveEffects(), 0);
}

TEST(PixelEffects, WrapTheWidestNumbers) {
    PixelEffectBlock *effect =
        AddPixelEffect({0, 0, INT32_MAX, INT32_MIN, 0, INT32_MAX, INT32_MAX, 1, 50, 2, INT32_MAX});
    ASSERT_NE(effect, nullptr);
    for (int frame = 0; frame < 40; ++frame) RunEffectsFrame();
    for (int i = 0; i < 50; ++i) ParticlesOf(effect)[i].life = 0;
    EXPECT_EQ(EmptyTable(), 1);
}

TEST(PixelEffects, LiveAsLongAsTheyShowSomething) {
    Canvas dest(60, 60);
    const auto add = [&](int32_t count, int32_t life) {
        return AddPixelEffect({dest, dest, 30, 30, 0xFFFFFF, 5, 6, 0, count, 1, life});
    };
    ASSERT_NE(add(1000, 0), nullptr);
    EXPECT_EQ(EmptyTable(), 1) << "nothing to show";
    ASSERT_NE(add(1000, 100), nullptr);
    EXPECT_EQ(EmptyTable(), 112) << "100 frames from a delay of up to 11, and one to notice the end";
    PixelEffectBlock *late = add(2, 9);
    ParticlesOf(late)[0].life = ParticlesOf(late)[1].life = 10;
    EXPECT_EQ(EmptyTable(), 1) << "all in their delay";
}

TEST(PixelEffects, FillTheTableAndNoMore) {
    Canvas dest(60, 60);
    EffectArguments arguments{dest, dest, 30, 30, 0xFF, 5, 6, 0, 100, 1, 3};
    for (size_t i = 0; i < kEffectSlots; ++i) {
        arguments.lifeFrames = i == 70 ? 1 : 30;
        ASSERT_NE(AddPixelEffect(arguments), nullptr);
        ASSERT_EQ(LiveEffects(), static_cast<int>(i) + 1);
    }
    EXPECT_EQ(AddPixelEffect(arguments), nullptr);
    while (LiveEffects() == 256) RunEffectsFrame();
    PixelEffectBlock *next = AddPixelEffect(arguments);
    EXPECT_EQ(EffectTable[70], next);
    EXPECT_EQ(AddPixelEffect(arguments), nullptr);
    EmptyTable();
}

TEST(PixelEffects, RefuseWhatMakesNoParticle) {
    const EffectArguments good;
    for (const auto &[member, value] : std::initializer_list<std::pair<int32_t EffectArguments::*, int32_t>>{
             {&EffectArguments::radius, 0},
             {&EffectArguments::radius, INT32_MIN},
             {&EffectArguments::speedRange, 1},
             {&EffectArguments::speedRange, 0},
             {&EffectArguments::speedRange, -9},
             {&EffectArguments::particleCount, 0},
             {&EffectArguments::particleCount, -1},
             {&EffectArguments::particleCount, 134217726},
             {&EffectArguments::lifeFrames, -1},
             {&EffectArguments::particleCount, INT32_MAX}}) {
        EffectArguments arguments = good;
        arguments.*member = value;
        EXPECT_EQ(AddPixelEffect(arguments), nullptr) << value;
    }
    platform::FailOnce(Operation::Memory, 1);
    EXPECT_EQ(AddPixelEffect(good), nullptr);
    platform::ForgetFailures();
    EXPECT_EQ(LiveEffects(), 0);
}

TEST(PixelEffects, PauseUntilTwentyMilliseconds) {
    SteppedClock clock;
    for (const auto &[work, naps] : {std::pair{0u, 20u}, {19u, 1u}, {20u, 0u}, {5000u, 0u}}) {
        clock.sleeps.clear();
        const uint32_t start = clock.now = 0xFFFFFFF5;
        clock.now += work;
        PaceEffectsFrame(start);
        EXPECT_EQ(clock.sleeps, std::vector<uint32_t>(naps, 1)) << work;
    }
}

}  // namespace
}  // namespace fenlight::test
