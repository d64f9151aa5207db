// SPDX-License-Identifier: Zlib
#include "particles/pixel_effects.h"

#include <algorithm>
#include <span>

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
enum ColourMode : int32_t { kFading = 0, kSteady = 1, kRandom = 2 };

// The bytes have to fit into 32 bits, as they always had to.
size_t BlockBytes(int32_t particleCount) {
    const int64_t bytes =
        int64_t{particleCount} * int64_t{sizeof(PixelParticle)} + int64_t{sizeof(PixelEffectBlock)} + 4;
    return bytes <= int64_t{UINT32_MAX} ? static_cast<size_t>(bytes) : 0;
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
    particle.prevX = particle.prevY = kNowhere;
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

// What one effect does in one frame.
class EffectFrame {
  public:
    explicit EffectFrame(PixelEffectBlock &effect)
        : lifeFrames_(effect.lifeFrames),
          colourMode_(effect.colourMode),
          colour_(effect.colour),
          gravity_(NextGravity(effect)) {}

    // Some of the particles. Returns whether it has written a pixel.
    template <class Pixels>
    bool Run(std::span<PixelParticle> particles, const Pixels &pixels) {
        const EffectFrame frame = *this;  // a copy, which need not be read anew after each pixel
        RandomColours random;
        if (colourMode_ == kRandom) random.Draw(CountShown(particles));
        bool hasWritten = false, isAnyShown = false;
        for (size_t i = 0; i < particles.size(); ++i) {
            PixelParticle &particle = particles[i];
            FetchAhead(particle);
            FetchPixelAhead(particles, i, pixels);
            const int32_t life = particle.life;
            if (life == 0) continue;
            if (life <= frame.lifeFrames_) {
                hasWritten |= frame.Show(particle, pixels, random);
                isAnyShown = true;
            }
            StoreWord(particle.life, WrappedDifference(life, 1));
            if (life == 1) hasWritten |= pixels.GiveBack(particle.prevX, particle.prevY);
        }
        isAnyShown_ |= isAnyShown;
        return hasWritten;
    }
    bool IsAnyShown() const { return isAnyShown_; }

  private:
    // Drawn together, for the generator's lock costs more than a number.
    class RandomColours {
      public:
        void Draw(int64_t count) { RandomFill(colours_, count, 0, kAnyColour); }
        uint32_t Next() { return static_cast<uint32_t>(colours_[next_++]); }

      private:
        int32_t colours_[kRecordsPerLock];
        size_t next_ = 0;
    };

    static Gravity NextGravity(PixelEffectBlock &effect) {
        const int32_t phase = effect.phase == 1 ? kGravityPeriod : effect.phase - 1;
        StoreWord(effect.phase, phase);
        return phase == 1 ? GravityOf(effect.gravityMode) : Gravity{0, 0};
    }

    int64_t CountShown(std::span<const PixelParticle> particles) const {
        return std::count_if(particles.begin(), particles.end(), [this](const PixelParticle &particle) {
            return particle.life != 0 && particle.life <= lifeFrames_;
        });
    }

    template <class Pixels>
    bool Show(PixelParticle &particle, const Pixels &pixels, RandomColours &random) const {
        const int32_t x = particle.x, y = particle.y, vx = particle.vx, vy = particle.vy;
        const uint32_t colour = particle.particleColour;
        const bool hasGivenBack = pixels.GiveBack(particle.prevX, particle.prevY);
        const bool hasLit = pixels.Light(x, y, colour);
        CopyPair(particle.prevX, particle.x);
        StoreWord(particle.x, WrappedSum(x, vx));
        StoreWord(particle.y, WrappedSum(y, vy));
        if (gravity_.x != 0) StoreWord(particle.vx, WrappedSum(vx, gravity_.x));
        if (gravity_.y != 0) StoreWord(particle.vy, WrappedSum(vy, gravity_.y));
        if (const uint32_t next = NextColour(colour, random); next != colour)
            StoreWord(particle.particleColour, next);
        return hasGivenBack | hasLit;
    }

    uint32_t NextColour(uint32_t colour, RandomColours &random) const {
        switch (colourMode_) {
            case kFading:
                return Fade(colour);
            case kSteady:
                return colour_;
            case kRandom:
                return random.Next();
            default:
                return colour;
        }
    }

    int32_t lifeFrames_, colourMode_;
    uint32_t colour_;
    Gravity gravity_;
    bool isAnyShown_ = false;
};

// False: no particle was shown.
bool RunEffect(PixelEffectBlock &effect) {
    EffectFrame frame(effect);
    WorkOnPixels({.dest = effect.destDC, .background = effect.backgroundDC}, ParticlesOf(effect),
                 [&frame](auto particles, const auto pixels) { return frame.Run(particles, pixels); });
    return frame.IsAnyShown();
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
