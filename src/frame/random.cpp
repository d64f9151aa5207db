// SPDX-License-Identifier: Zlib
#include "frame/random.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <span>

#include "fenlight/frame.h"

namespace fenlight {
namespace {

constexpr uint32_t kWords = 624;
constexpr uint32_t kMiddle = 397;
constexpr uint32_t kNeverSeeded = kWords + 1;
constexpr uint32_t kMatrixWord = 0x9908B0DF;
constexpr uint32_t kUpperMask = 0x80000000;
constexpr uint32_t kLowerMask = 0x7FFFFFFF;
constexpr uint32_t kSeedOfLastResort = 4357;

// Guards all three below.
constinit std::mutex randomLock;
std::array<uint32_t, kWords> RandomState;
uint32_t RandomIndex = kNeverSeeded;  // next word to hand out; kWords: used up
constexpr uint32_t RandomMultiplier = 69069;

void Seed(uint32_t seed) {
    RandomState[0] = seed;
    for (uint32_t i = 1; i < kWords; ++i) RandomState[i] = RandomState[i - 1] * RandomMultiplier;
    RandomIndex = kWords;
}

void RenewWord(uint32_t k, uint32_t next, uint32_t far) {
    const uint32_t mixed = (RandomState[k] & kUpperMask) | (RandomState[next] & kLowerMask);
    RandomState[k] = RandomState[far] ^ (mixed >> 1) ^ ((mixed & 1) != 0 ? kMatrixWord : 0);
}

void Refill() {
    for (uint32_t k = 0; k < kWords - kMiddle; ++k) RenewWord(k, k + 1, k + kMiddle);
    for (uint32_t k = kWords - kMiddle; k < kWords - 1; ++k) RenewWord(k, k + 1, k + kMiddle - kWords);
    RenewWord(kWords - 1, 0, kMiddle - 1);
    RandomIndex = 0;
}

// As many words as are there before the next refill, at least one and at most `most`.
std::span<const uint32_t> TakeWords(size_t most) {
    if (RandomIndex >= kWords) {
        if (RandomIndex == kNeverSeeded) Seed(kSeedOfLastResort);
        Refill();
    }
    const auto words = std::span(RandomState).subspan(RandomIndex);
    const auto taken = words.first(std::min(words.size(), most));
    RandomIndex += static_cast<uint32_t>(taken.size());
    return taken;
}

uint32_t Temper(uint32_t word) {
    word ^= word >> 11;
    word ^= (word << 7) & 0x9D2C5680;
    word ^= (word << 15) & 0xEFC60000;
    return word ^ (word >> 18);
}

uint32_t Draw(uint32_t limit) {
    const uint32_t word = Temper(TakeWords(1)[0]);
    return limit == 0 ? 0 : word % limit;
}

// The remainders of many divisions by one number, by two products each (Lemire, Kaser and Kurz, Software:
// Practice and Experience 49, 2019). 0 for a divisor of 0.
class Remainders {
  public:
    explicit Remainders(uint32_t divisor)
        : divisor_(divisor), fraction_(divisor != 0 ? UINT64_MAX / divisor + 1 : 0) {}
    uint32_t Of(uint32_t word) const {
        __extension__ using Wide = unsigned __int128;
        return static_cast<uint32_t>(static_cast<Wide>(fraction_ * word) * divisor_ >> 64);
    }

  private:
    uint64_t divisor_, fraction_;
};

}  // namespace

void RandomSeed(uint32_t seed) noexcept {
    const std::lock_guard guard(randomLock);
    Seed(seed);
}

uint32_t RandomDraw(uint32_t limit) noexcept {
    const std::lock_guard guard(randomLock);
    return Draw(limit);
}

void RandomFill(int32_t *words, int64_t count, int32_t base, uint32_t range) noexcept {
    const std::lock_guard guard(randomLock);
    const Remainders remainders(range);
    for (std::span<int32_t> rest(words, static_cast<size_t>(std::max<int64_t>(count, 0))); !rest.empty();) {
        const auto drawn = TakeWords(rest.size());
        std::transform(drawn.begin(), drawn.end(), rest.begin(), [&](uint32_t word) {
            return static_cast<int32_t>(static_cast<uint32_t>(base) + remainders.Of(Temper(word)));
        });
        rest = rest.subspan(drawn.size());
    }
}

RandomTurn::RandomTurn() noexcept { randomLock.lock(); }
RandomTurn::~RandomTurn() { randomLock.unlock(); }
uint32_t RandomTurn::Draw(uint32_t limit) noexcept { return fenlight::Draw(limit); }

uint32_t RandomStateWord(int index) noexcept {
    const std::lock_guard guard(randomLock);
    return RandomState[static_cast<size_t>(index)];
}

void ForgetRandomSeed() noexcept {
    const std::lock_guard guard(randomLock);
    RandomState.fill(0);
    RandomIndex = kNeverSeeded;
}

}  // namespace fenlight

int32_t Random(int32_t *buffer, int32_t last, int32_t base, int32_t range) noexcept {
    if (buffer == nullptr) return 0;
    const int64_t count = std::max<int64_t>(int64_t{last} + 1, 1);
    fenlight::RandomFill(buffer, count, base, static_cast<uint32_t>(range));
    return 0;
}
