// SPDX-License-Identifier: Zlib
// A voice: one place of playing in a block of samples, with its own speed and loudness.
//
// Callers' threads and the mixer's meet only in atomic words; nobody waits. Position and playing state share
// one word, so that the mixer can move on from exactly the state that it has mixed, and a caller who changed
// it meanwhile has the last word.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/audio/loudness.h"
#include "platform/audio/sample_block.h"
#include "platform/audio/sample_rows.h"

namespace fenlight::platform {

class Voice {
  public:
    // Takes a reference of its own to the samples. At rest, position 0, the rate of the samples, one
    // reference. nullptr without memory.
    [[nodiscard]] static Voice *Create(SampleBlock &samples) noexcept;
    Voice(const Voice &) = delete;
    Voice &operator=(const Voice &) = delete;

    // The last reference deletes the voice. A voice that plays has another one, the mixer's.
    void DropReference() noexcept;

    // Any thread. Mixer::Play starts a voice.
    void Stop() noexcept { cursor_.fetch_and(~kStateBits); }
    [[nodiscard]] bool IsPlaying() const noexcept { return (cursor_.load() & kPlaying) != 0; }
    [[nodiscard]] uint32_t Status() const noexcept;  // DSBSTATUS_ values
    [[nodiscard]] uint32_t Frame() const noexcept;
    void SetFrame(uint32_t frame) noexcept;  // below the samples' FrameCount
    [[nodiscard]] uint32_t Frequency() const noexcept { return frequency_.load(std::memory_order_relaxed); }
    void SetFrequency(uint32_t frequency) noexcept { frequency_.store(frequency, std::memory_order_relaxed); }
    // What was written to the samples before comes before what the mixer reads of them from now on.
    void PublishSamples() noexcept { cursor_.fetch_or(0); }
    [[nodiscard]] SampleBlock &Samples() const noexcept { return samples_; }
    Loudness loudness;

  private:
    friend class Mixer;
    friend class VoiceStack;
    static constexpr uint64_t kPlaying = 1;
    static constexpr uint64_t kLooping = 2;
    static constexpr uint64_t kStateBits = kPlaying | kLooping;
    static constexpr int kPositionShift = 2;  // 28 bits of frames and 32 behind the point fit above

    explicit Voice(SampleBlock &samples) noexcept;
    ~Voice() { samples_.DropReference(); }

    void Start(bool isLooping) noexcept;
    [[nodiscard]] uint64_t Step() const noexcept;
    // The mixer's: adds its next frames to the block, and moves on.
    void AddTo(float *stereo, int32_t frames) noexcept;
    int32_t AddStretch(SampleRow &row, bool isLooping, float *stereo, int32_t frames) const noexcept;
    void MoveOn(uint64_t mixedFrom, uint64_t position) noexcept;

    SampleBlock &samples_;
    const AddRow addRow_;
    std::atomic<uint64_t> cursor_{0};
    std::atomic<uint32_t> frequency_;
    std::atomic<uint32_t> references_{1};
    std::atomic<bool> isWithMixer_{false};
    Voice *next_ = nullptr;  // whoever holds the voice's list
    HeardGains heardGains_;  // the mixer's
};

}  // namespace fenlight::platform
