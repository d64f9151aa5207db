// SPDX-License-Identifier: Zlib
#include "platform/audio/mixer.h"

#include <algorithm>

namespace fenlight::platform {

void VoiceStack::Push(Voice &voice) noexcept {
    voice.next_ = top_.load(std::memory_order_relaxed);
    while (!top_.compare_exchange_weak(voice.next_, &voice)) {
    }
}

// The order matters, here and in LeaveUnlessPlaying: each side writes its own word before it reads the
// other's, so at least one of them sees that a voice which the mixer leaves has been started again.
void Mixer::Play(Voice &voice, bool isLooping) noexcept {
    voice.Start(isLooping);
    if (voice.isWithMixer_.exchange(true)) return;
    voice.references_.fetch_add(1, std::memory_order_relaxed);
    started_.Push(voice);
}

bool Mixer::LeaveUnlessPlaying(Voice &voice) noexcept {
    if (voice.IsPlaying()) return false;
    voice.isWithMixer_.store(false);
    if (voice.IsPlaying() && !voice.isWithMixer_.exchange(true)) return false;
    LetGo(voice);
    return true;
}

// Memory is given back by callers, not on the mixing thread, which has no time to spare.
void Mixer::LetGo(Voice &voice) noexcept {
    if (voice.references_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    voice.references_.store(1, std::memory_order_relaxed);
    doomed_.Push(voice);
}

void Mixer::AdoptStarted() noexcept {
    Voice *voice = started_.TakeAll();
    while (voice != nullptr) {
        Voice *next = voice->next_;
        voice->next_ = active_;
        active_ = voice;
        voice = next;
    }
}

void Mixer::Mix(float *stereo, int32_t frames) noexcept {
    std::fill_n(stereo, 2 * static_cast<int64_t>(frames), 0.0F);
    AdoptStarted();
    Voice **link = &active_;
    while (Voice *voice = *link) {
        voice->AddTo(stereo, frames);
        Voice *next = voice->next_;
        if (LeaveUnlessPlaying(*voice)) {
            *link = next;
        } else {
            link = &voice->next_;
        }
    }
    Finish(stereo, frames);
}

void Mixer::Finish(float *stereo, int32_t frames) noexcept {
    const Gains gains = heardGains_.Of(loudness);
    for (int32_t i = 0; i < frames; ++i) {
        stereo[2 * i] = std::clamp(stereo[2 * i] * gains.left, -1.0F, 1.0F);
        stereo[2 * i + 1] = std::clamp(stereo[2 * i + 1] * gains.right, -1.0F, 1.0F);
    }
}

void Mixer::Sweep() noexcept {
    Voice *voice = doomed_.TakeAll();
    while (voice != nullptr) {
        Voice *next = voice->next_;
        voice->DropReference();
        voice = next;
    }
}

void Mixer::Clear() noexcept {
    AdoptStarted();
    while (Voice *voice = active_) {
        active_ = voice->next_;
        voice->Stop();
        voice->isWithMixer_.store(false);
        LetGo(*voice);
    }
    Sweep();
    loudness.TakeOver(Loudness{});
}

}  // namespace fenlight::platform
