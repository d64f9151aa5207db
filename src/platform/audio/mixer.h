// SPDX-License-Identifier: Zlib
// Adds up all voices that play. Driven by the output's thread, or by a test: any block size, no device.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/audio/voice.h"

namespace fenlight::platform {

inline constexpr uint32_t kMixRate = 44100;      // frames per second
inline constexpr int32_t kMixBlockFrames = 512;  // 11.6 ms: what one callback of the output asks for

// Any thread puts voices in, one takes them all out.
class VoiceStack {
  public:
    void Push(Voice &voice) noexcept;
    [[nodiscard]] Voice *TakeAll() noexcept { return top_.exchange(nullptr); }

  private:
    std::atomic<Voice *> top_{nullptr};
};

class Mixer {
  public:
    constexpr Mixer() = default;
    Mixer(const Mixer &) = delete;
    Mixer &operator=(const Mixer &) = delete;

    // Any thread. The voice goes on from its position; one that plays already only takes over the loop state.
    // The caller holds a reference during the call.
    void Play(Voice &voice, bool isLooping) noexcept;

    // One thread at a time. Writes `frames` frames, left and right in turn, from -1 to 1. Takes no lock and
    // gives no memory back.
    void Mix(float *stereo, int32_t frames) noexcept;

    // Any thread: deletes the voices that the mixer was the last to hold.
    void Sweep() noexcept;
    // While nobody mixes: stops all voices, lets them go, and is as new.
    void Clear() noexcept;

    Loudness loudness;  // of everything

  private:
    void AdoptStarted() noexcept;
    bool LeaveUnlessPlaying(Voice &voice) noexcept;
    void LetGo(Voice &voice) noexcept;
    void Finish(float *stereo, int32_t frames) noexcept;

    VoiceStack started_;
    VoiceStack doomed_;
    Voice *active_ = nullptr;  // the mixing thread's
    HeardGains heardGains_;    // the mixing thread's
};

}  // namespace fenlight::platform
