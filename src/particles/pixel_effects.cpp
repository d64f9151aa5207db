// SPDX-License-Identifier: Zlib
#include "particles/pixel_effects.h"

#include <algorithm>
#include <span>
#include <type_traits>

#include "fenlight/platform/system.h"
#include "frame/random.h"
#include "particles/particle_pixels.h"
#include "particles/record_words.h"

namespace fenlight {

static_assert(sizeof(PixelParticle) == 32);
static_assert(sizeof(PixelEffectBlock) == 56 + 2 * sizeof(uintptr_t));

constinit std::array<std::atomic<PixelEffectBlock *>, kEffectSlots> EffectTable{};

namespace {

constexpr uint32_t kLongestDelay = 12;
constexpr int32_t kGravityPeriod = 8;
constexpr uint32_t kAnyColour = 0xFFFFFF;

// Vectors take whole numbers of records; those behind the last particle have no life.
size_t RoomFor(size_t particles) {
    return (particles + kRecordsAtOnce - 1) / kRecordsAtOnce * kRecordsAtOnce;
}

// The bytes have to fit into 32 bits, as they always had to.
size_t BlockBytes(int32_t particleCount) {
    const size_t bytes =
        RoomFor(static_cast<size_t>(particleCount)) * sizeof(PixelParticle) + sizeof(PixelEffectBlock) + 4;
    return bytes <= UINT32_MAX ? bytes : 0;
}

// Without a radius or a range of speeds no draw could end; below 0 frames of life never would.
bool IsEffect(const EffectArguments &arguments) {
    return arguments.radius >= 1 && arguments.speedRange >= 2 && arguments.particleCount >= 1 &&
           arguments.lifeFrames >= 0 && BlockBytes(arguments.particleCount) != 0;
}

std::span<PixelParticle> ParticlesOf(PixelEffectBlock &effect) {
    return {reinterpret_cast<PixelParticle *>(&effect + 1), static_cast<size_t>(effect.particleCount)};
}

int32_t DrawBelow(int32_t limit) { return static_cast<int32_t>(RandomDraw(static_cast<uint32_t>(limit))); }

// Of the pairs with two speeds one in four passes, of those with one speed one in two.
void DrawSpeeds(PixelParticle &particle, int32_t range) {
    do {
        particle.vx = DrawBelow(range) - range / 2;
        particle.vy = DrawBelow(range) - range / 2;
    } while ((particle.vx == 0 && particle.vy == 0) || (particle.vx != 0 && RandomDraw(2) != 0) ||
             (particle.vy != 0 && RandomDraw(2) != 0));
}

// On the side that the particle flies to.
int32_t StartOf(int32_t centre, int32_t distance, int32_t speed) {
    return speed < 0 ? WrappedDifference(WrappedDifference(centre, distance), speed)
                     : WrappedSum(WrappedSum(centre, distance), speed);
}

void MakeParticle(PixelParticle &particle, const EffectArguments &arguments) {
    particle.prevX = particle.prevY = kParkedAt;
    particle.life = WrappedSum(DrawBelow(kLongestDelay), arguments.lifeFrames);
    const int32_t dx = DrawBelow(arguments.radius);
    const int32_t dy = DrawBelow(arguments.radius);
    DrawSpeeds(particle, arguments.speedRange);
    particle.x = StartOf(arguments.x, dx, particle.vx);
    particle.y = StartOf(arguments.y, dy, particle.vy);
    particle.particleColour = arguments.colour;
}

PixelEffectBlock *MakeEffect(const EffectArguments &arguments) {
    auto *effect = static_cast<PixelEffectBlock *>(GlobalAlloc(GPTR, BlockBytes(arguments.particleCount)));
    if (effect == nullptr) return nullptr;
    effect->destDC = arguments.destDC;
    effect->backgroundDC = arguments.backgroundDC;
    effect->x = arguments.x;
    effect->y = arguments.y;
    effect->colour = arguments.colour;
    effect->radius = arguments.radius;
    effect->speedRange = arguments.speedRange;
    effect->gravityMode = arguments.gravityMode;
    effect->particleCount = arguments.particleCount;
    effect->colourMode = arguments.colourMode;
    effect->lifeFrames = arguments.lifeFrames;
    effect->phase = 1;
    for (PixelParticle &particle : ParticlesOf(*effect)) MakeParticle(particle, arguments);
    return effect;
}

std::atomic<PixelEffectBlock *> *FirstFreeSlot() {
    const auto slot = std::find_if(EffectTable.begin(), EffectTable.end(), [](const auto &candidate) {
        return candidate.load(std::memory_order_relaxed) == nullptr;
    });
    return slot != EffectTable.end() ? &*slot : nullptr;
}

// Another caller may have been faster; then the next free slot will do.
bool Publish(PixelEffectBlock *effect, std::atomic<PixelEffectBlock *> *slot) {
    for (; slot != nullptr; slot = FirstFreeSlot()) {
        PixelEffectBlock *free = nullptr;
        if (slot->compare_exchange_strong(free, effect, std::memory_order_release, std::memory_order_relaxed))
            return true;
    }
    return false;
}

// Each of the three bytes that is not 0 goes down by 1.
uint32_t Fade(uint32_t colour) {
    const uint32_t highBits = (colour | ((colour & 0x7F7F7F) + 0x7F7F7F)) & 0x808080;
    return colour - (highBits >> 7);
}

struct Gravity {
    int32_t x, y;
};

Gravity GravityOf(int32_t mode) {
    switch (mode) {
        case 1:
            return {1, 0};
        case 2:
            return {0, 1};
        case 3:
            return {-1, 0};
        case 4:
            return {0, -1};
        default:
            return {0, 0};
    }
}

ParticleRules NextRules(PixelEffectBlock &effect) {
    const int32_t phase = effect.phase == 1 ? kGravityPeriod : effect.phase - 1;
    StoreWord(effect.phase, phase);
    const Gravity gravity = phase == 1 ? GravityOf(effect.gravityMode) : Gravity{0, 0};
    return {effect.lifeFrames, effect.colourMode, effect.colour, gravity.x, gravity.y, nullptr};
}

bool IsShown(const PixelParticle &particle, const ParticleRules &rules) {
    return particle.life != 0 && particle.life <= rules.lifeFrames;
}

uint32_t NextColour(uint32_t colour, const ParticleRules &rules, size_t shownBefore) {
    switch (rules.colourMode) {
        case kFading:
            return Fade(colour);
        case kSteady:
            return rules.colour;
        case kRandom:
            return rules.randomColours[shownBefore];
        default:
            return colour;
    }
}

void Move(PixelParticle &particle, const ParticleRules &rules, size_t shownBefore) {
    const int32_t x = particle.x, y = particle.y, vx = particle.vx, vy = particle.vy;
    CopyPair(particle.prevX, particle.x);
    StoreWord(particle.x, WrappedSum(x, vx));
    StoreWord(particle.y, WrappedSum(y, vy));
    StoreWord(particle.vx, WrappedSum(vx, rules.gravityX));
    StoreWord(particle.vy, WrappedSum(vy, rules.gravityY));
    StoreWord(particle.particleColour, NextColour(particle.particleColour, rules, shownBefore));
}

// Returns how many particles are shown.
template <class Pixels>
size_t MoveParticles(std::span<PixelParticle> particles, const ParticleRules &rules, const Pixels &pixels,
                     PixelJobs<typename Pixels::Place> &jobs) {
    if constexpr (std::is_same_v<Pixels, WordPixels>) {
        if (const auto move = ChooseParticleKernels().moveParticles)
            return move(particles.data(), RoomFor(particles.size()), rules, pixels.Shape(), jobs);
    }
    size_t shown = 0;
    for (PixelParticle &particle : particles) {
        if (particle.life == 0) continue;
        const bool isShown = IsShown(particle, rules), isLast = particle.life == 1;
        if (isLast) jobs.last.Add(jobs.count);
        if (isShown || isLast)
            jobs.Add(pixels.PlaceOf(particle.prevX, particle.prevY),
                     isShown ? pixels.PlaceOf(particle.x, particle.y) : pixels.PlaceOf(kParkedAt, kParkedAt),
                     Pixels::JobColour(particle.particleColour));
        if (isShown) Move(particle, rules, shown++);
        StoreWord(particle.life, WrappedDifference(particle.life, 1));
    }
    return shown;
}

// One for each particle that will be shown, drawn together: the generator's lock costs more than a number.
// Vectors read beyond the last.
class RandomColours {
  public:
    RandomColours(std::span<const PixelParticle> particles, const ParticleRules &rules) {
        if (rules.colourMode != kRandom) return;
        const auto count =
            std::count_if(particles.begin(), particles.end(),
                          [&](const PixelParticle &particle) { return IsShown(particle, rules); });
        RandomFill(words_, count, 0, kAnyColour);
    }
    const uint32_t *First() const { return reinterpret_cast<const uint32_t *>(words_); }

  private:
    int32_t words_[kRecordsAtATime + kRecordsAtOnce];
};

// False: no particle was shown.
bool RunEffect(PixelEffectBlock &effect) {
    const ParticleRules rules = NextRules(effect);
    bool isAnyShown = false;
    const auto move = [&](std::span<PixelParticle> particles, const auto &pixels, auto &jobs) {
        const RandomColours random(particles, rules);
        ParticleRules rulesOfPart = rules;
        rulesOfPart.randomColours = random.First();
        isAnyShown |= MoveParticles(particles, rulesOfPart, pixels, jobs) != 0;
    };
    WorkOnPixels({.dest = effect.destDC, .background = effect.backgroundDC}, ParticlesOf(effect), move);
    return isAnyShown;
}

}  // namespace

PixelEffectBlock *AddPixelEffect(const EffectArguments &arguments) noexcept {
    std::atomic<PixelEffectBlock *> *slot = FirstFreeSlot();
    if (slot == nullptr || !IsEffect(arguments)) return nullptr;
    PixelEffectBlock *effect = MakeEffect(arguments);
    if (effect == nullptr) return nullptr;
    if (Publish(effect, slot)) return effect;
    GlobalFree(effect);
    return nullptr;
}

void RunEffectsFrame() noexcept {
    for (auto &slot : EffectTable) {
        PixelEffectBlock *effect = slot.load(std::memory_order_acquire);
        if (effect == nullptr || RunEffect(*effect)) continue;
        GlobalFree(effect);
        slot.store(nullptr, std::memory_order_release);
    }
}

}  // namespace fenlight

using namespace fenlight;

void *SetPixelEffect(uintptr_t destDC, uintptr_t backgroundDC, int32_t x, int32_t y, uint32_t colour,
                     int32_t radius, int32_t speedRange, int32_t gravityMode, int32_t particleCount,
                     int32_t colourMode, int32_t lifeFrames) noexcept {
    return AddPixelEffect({destDC, backgroundDC, x, y, colour, radius, speedRange, gravityMode, particleCount,
                           colourMode, lifeFrames});
}
