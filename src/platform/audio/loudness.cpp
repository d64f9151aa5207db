// SPDX-License-Identifier: Zlib
#include "platform/audio/loudness.h"

#include <algorithm>
#include <cmath>

namespace fenlight::platform {
namespace {

constexpr int32_t kSilence = -10000;

int32_t VolumeIn(uint32_t word) { return static_cast<int16_t>(word & 0xFFFF); }
int32_t PanIn(uint32_t word) { return static_cast<int16_t>(word >> 16); }

uint32_t Pack(int32_t volume, int32_t pan) {
    return static_cast<uint16_t>(volume) | static_cast<uint32_t>(static_cast<uint16_t>(pan)) << 16;
}

// Nothing is left at the lower end, where the formula alone would leave a factor of 0.00001.
float FactorOf(int32_t hundredths) {
    return hundredths <= kSilence ? 0.0F : static_cast<float>(std::pow(10.0, hundredths / 2000.0));
}

Gains GainsIn(uint32_t word) {
    const float whole = FactorOf(VolumeIn(word));
    const int32_t pan = PanIn(word);
    return {whole * FactorOf(-std::max(pan, 0)), whole * FactorOf(std::min(pan, 0))};
}

}  // namespace

void Loudness::SetVolume(int32_t volume) noexcept {
    const int32_t clamped = std::clamp(volume, kSilence, 0);
    uint32_t old = Word();
    while (!word_.compare_exchange_weak(old, Pack(clamped, PanIn(old)), std::memory_order_relaxed)) {
    }
}

void Loudness::SetPan(int32_t pan) noexcept {
    const int32_t clamped = std::clamp(pan, kSilence, -kSilence);
    uint32_t old = Word();
    while (!word_.compare_exchange_weak(old, Pack(VolumeIn(old), clamped), std::memory_order_relaxed)) {
    }
}

int32_t Loudness::Volume() const noexcept { return VolumeIn(Word()); }
int32_t Loudness::Pan() const noexcept { return PanIn(Word()); }

const Gains &HeardGains::Of(const Loudness &loudness) noexcept {
    const uint32_t word = loudness.Word();
    if (word != word_) gains_ = GainsIn(word);
    word_ = word;
    return gains_;
}

}  // namespace fenlight::platform
