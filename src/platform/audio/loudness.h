// SPDX-License-Identifier: Zlib
// Volume and pan in hundredths of a decibel, and the factors for both sides that they amount to.
#pragma once

#include <atomic>
#include <cstdint>

namespace fenlight::platform {

struct Gains {
    float left = 1.0F;
    float right = 1.0F;
};

// Both values in one word, so that any thread may set either while the mixer reads a pair that belongs
// together.
class Loudness {
  public:
    constexpr Loudness() = default;
    // Clamped to -10000..0 and to -10000..10000.
    void SetVolume(int32_t volume) noexcept;
    void SetPan(int32_t pan) noexcept;
    [[nodiscard]] int32_t Volume() const noexcept;
    [[nodiscard]] int32_t Pan() const noexcept;
    [[nodiscard]] uint32_t Word() const noexcept { return word_.load(std::memory_order_relaxed); }
    void TakeOver(const Loudness &other) noexcept { word_.store(other.Word(), std::memory_order_relaxed); }

  private:
    std::atomic<uint32_t> word_{0};  // volume in the low half, pan in the high half, both signed
};

// The mixer's own view of a Loudness, which computes the factors when the word has changed and not for each
// block. One thread only.
class HeardGains {
  public:
    const Gains &Of(const Loudness &loudness) noexcept;

  private:
    uint32_t word_ = 0;
    Gains gains_;
};

}  // namespace fenlight::platform
