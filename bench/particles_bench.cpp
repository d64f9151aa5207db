// SPDX-License-Identifier: Zlib
// Frames of 10,000 stars and of 64 effects of 1000 particles on a picture of 1024 x 768, beside plain writes
// of the same pixels into an array: the least that any program has to do that erases and draws them. The
// writes are recorded beforehand, so the plain loop neither moves particles nor looks at what lies behind
// them nor checks for the edges. An item is a particle that is shown in one frame.
#include <benchmark/benchmark.h>

#include <span>
#include <vector>

#include "fenlight/platform/system.h"
#include "frame/random.h"
#include "particles/pixel_effects.h"
#include "particles/star_field.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

constexpr int32_t kWidth = 1024, kHeight = 768, kStars = 10000, kEffects = 64, kParticles = 1000;
// Rows of 4096 bytes would all meet in the same sets of the cache.
constexpr int32_t kPitch = kWidth + 16;

class Surface {
  public:
    explicit Surface(int noise) {
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                SetPixel(context_, x, y, static_cast<COLORREF>(noise * (x * 64 + y * 8192)) & 0xFFFFFF);
    }
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;
    ~Surface() { platform::DeleteSurfaceContext(context_); }
    operator HDC() const { return context_; }

  private:
    HDC context_ = platform::CreateSurfaceContext(kWidth, kHeight);
};

// Where the pixels of one particle lie in the array; the one in front of it takes those off the picture.
struct Writes {
    int32_t erased, drawn;
};

int32_t IndexOf(int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && x < kWidth && y < kHeight ? 1 + y * kPitch + x : 0;
}

void WritePlainly(std::vector<uint32_t> &picture, std::span<const Writes> frame) {
    for (const Writes &writes : frame) {
        picture[static_cast<size_t>(writes.erased)] = 0;
        picture[static_cast<size_t>(writes.drawn)] = 0xFFFFFF;
    }
    benchmark::ClobberMemory();
}

std::vector<uint32_t> EmptyArray() { return std::vector<uint32_t>(1 + kPitch * kHeight); }

// A field in full flight.
class Field {
  public:
    Field(HDC dest, HDC background) {
        RandomSeed(1);
        if (!MakeStarField({dest, background, 0, 0, kWidth, kHeight, kStars, 0, 0})) std::abort();
        for (int frame = 0; frame < 300; ++frame) RunStarFrame();
    }
    Field(const Field &) = delete;
    Field &operator=(const Field &) = delete;
    ~Field() { FreeStarField(); }
};

void StarsOnBlack(benchmark::State &state) {
    const Surface dest(0);
    const Field field(dest, 0);
    for (auto _ : state) RunStarFrame();
    state.SetItemsProcessed(state.iterations() * kStars);
}
BENCHMARK(StarsOnBlack)->Unit(benchmark::kMicrosecond);

void StarsBeforePicture(benchmark::State &state) {
    const Surface dest(1), background(1);
    const Field field(dest, background);
    for (auto _ : state) RunStarFrame();
    state.SetItemsProcessed(state.iterations() * kStars);
}
BENCHMARK(StarsBeforePicture)->Unit(benchmark::kMicrosecond);

void StarsPlainWrites(benchmark::State &state) {
    constexpr size_t kFrames = 16;
    std::vector<Writes> writes;
    {
        const Surface dest(0);
        const Field field(dest, 0);
        for (size_t frame = 0; frame < kFrames; ++frame, RunStarFrame())
            for (const StarRecord &star : std::span(CurrentStars(), kStars))
                writes.push_back({IndexOf(star.prevX, star.prevY), IndexOf(star.x, star.y)});
    }
    auto picture = EmptyArray();
    size_t frame = 0;
    for (auto _ : state)
        WritePlainly(picture, std::span(writes).subspan(kStars * (frame++ % kFrames), kStars));
    state.SetItemsProcessed(state.iterations() * kStars);
}
BENCHMARK(StarsPlainWrites)->Unit(benchmark::kMicrosecond);

// What a user would write instead for one kind of particle: a loop over an array of his own.
struct OwnStar {
    int32_t x, y, prevX, prevY, age, vx, vy;
};

void StarsOwnLoop(benchmark::State &state) {
    std::vector<OwnStar> stars;
    {
        const Surface dest(0);
        const Field field(dest, 0);
        for (const StarRecord &s : std::span(CurrentStars(), kStars))
            stars.push_back({s.x, s.y, s.prevX, s.prevY, s.age, s.vx, s.vy});
    }
    auto picture = EmptyArray();
    const auto background = picture;
    for (auto _ : state) {
        for (OwnStar &s : stars) {
            if (const auto old = static_cast<size_t>(IndexOf(s.prevX, s.prevY)))
                picture[old] = background[old];
            if (const auto now = static_cast<size_t>(IndexOf(s.x, s.y)))
                picture[now] = s.age < 64 ? 0x808080 : s.age < 128 ? 0xC0C0C0 : 0xFFFFFF;
            s.prevX = s.x;
            s.prevY = s.y;
            s.x += s.vx;
            s.y += s.vy;
            if (++s.age < 256 && IndexOf(s.x, s.y) != 0) continue;
            s.x = kWidth / 2 + s.vx * 32;
            s.y = kHeight / 2 + s.vy * 32;
            s.age = 48;
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kStars);
}
BENCHMARK(StarsOwnLoop)->Unit(benchmark::kMicrosecond);

// A screenful of bursts.
void SetEffects(HDC dest, HDC background, int32_t colourMode) {
    RandomSeed(3);
    for (int32_t i = 0; i < kEffects; ++i)
        AddPixelEffect({dest, background, 64 + i % 8 * 128, 48 + i / 8 * 96, 0x80C0FF, 8, 12, 2, kParticles,
                        colourMode, 40});
}

bool IsAnyLeft() {
    for (const auto &slot : EffectTable)
        if (slot.load(std::memory_order_relaxed) != nullptr) return true;
    return false;
}

// Frames of the bursts' lives, which are all shown for 40 frames after a delay of up to 11.
struct Frames {
    int first, end;
    int64_t shown, writes;
};
constexpr int64_t kAll = int64_t{kEffects} * kParticles;
// All particles are under way.
constexpr Frames kFullFlight{12, 39, kAll * 27, kAll * 27};
// The last frame of a particle takes it off again.
constexpr Frames kWholeLife{0, 1000, kAll * 40, kAll * 41};

void RunFrames(int first, int end) {
    for (int frame = first; frame < end && IsAnyLeft(); ++frame) RunEffectsFrame();
}

template <const Frames &frames>
void Effects(benchmark::State &state) {
    const Surface dest(1), background(1);
    for (auto _ : state) {
        state.PauseTiming();
        SetEffects(dest, background, static_cast<int32_t>(state.range(0)));
        RunFrames(0, frames.first);
        state.ResumeTiming();
        RunFrames(frames.first, frames.end);
        state.PauseTiming();
        RunFrames(0, 1000);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * frames.shown);
}
BENCHMARK(Effects<kFullFlight>)
    ->Name("EffectsFlying")
    ->ArgName("colourMode")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Effects<kWholeLife>)
    ->Name("Effects")
    ->ArgName("colourMode")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

void RecordFrame(std::vector<Writes> &writes) {
    for (const auto &slot : EffectTable) {
        PixelEffectBlock *effect = slot.load(std::memory_order_relaxed);
        if (effect == nullptr) continue;
        for (const PixelParticle &particle :
             std::span(reinterpret_cast<PixelParticle *>(effect + 1), kParticles))
            if (particle.life != 0 && particle.life <= effect->lifeFrames) {
                writes.push_back({IndexOf(particle.prevX, particle.prevY), IndexOf(particle.x, particle.y)});
                if (particle.life == 1) writes.push_back({IndexOf(particle.x, particle.y), 0});
            }
    }
}

template <const Frames &frames>
void EffectsPlainWrites(benchmark::State &state) {
    std::vector<Writes> writes;
    SetEffects(0, 0, 1);
    RunFrames(0, frames.first);
    for (int frame = frames.first; frame < frames.end && IsAnyLeft(); ++frame, RunEffectsFrame())
        RecordFrame(writes);
    RunFrames(0, 1000);
    auto picture = EmptyArray();
    for (auto _ : state) WritePlainly(picture, writes);
    if (static_cast<int64_t>(writes.size()) != frames.writes)
        state.SkipWithError("not every particle was shown in all its frames");
    state.SetItemsProcessed(state.iterations() * frames.shown);
}
BENCHMARK(EffectsPlainWrites<kFullFlight>)->Name("EffectsFlyingPlainWrites")->Unit(benchmark::kMillisecond);
BENCHMARK(EffectsPlainWrites<kWholeLife>)->Name("EffectsPlainWrites")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fenlight
