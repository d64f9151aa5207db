// SPDX-License-Identifier: Zlib
#include "sound/sound_voice.h"

#include "fenlight/sound.h"

namespace fenlight {
namespace {

constexpr uint32_t After(uint32_t index) { return index + 1 < kVoiceCount ? index + 1 : 0; }

SoundBlock *BlockOf(uintptr_t sound) { return reinterpret_cast<SoundBlock *>(sound); }
IDirectSoundBuffer *VoiceOf(uintptr_t voice) { return reinterpret_cast<IDirectSoundBuffer *>(voice); }
uintptr_t HandleOf(IDirectSoundBuffer *voice) { return reinterpret_cast<uintptr_t>(voice); }

}  // namespace

IDirectSoundBuffer *PlayNextVoice(SoundBlock &block, uint32_t flags) noexcept {
    uint32_t index = block.voiceIndex.load(std::memory_order_relaxed);
    while (!block.voiceIndex.compare_exchange_weak(index, After(index), std::memory_order_relaxed)) {
    }
    IDirectSoundBuffer *voice = block.voices[After(index)];
    voice->Play(0, 0, flags);
    return voice;
}

IDirectSoundBuffer *PeekNextVoice(const SoundBlock &block) noexcept {
    return block.voices[After(block.voiceIndex.load(std::memory_order_relaxed))];
}

void StartNextVoice(uintptr_t sound) noexcept {
    if (sound != 0) PlayNextVoice(*BlockOf(sound), 0);
}

}  // namespace fenlight

using namespace fenlight;

uintptr_t DSoundPlay(uintptr_t sound, int32_t flags) noexcept {
    return sound == 0 ? 0 : HandleOf(PlayNextVoice(*BlockOf(sound), static_cast<uint32_t>(flags)));
}

uintptr_t DSoundGetNextBuffer(uintptr_t sound) noexcept {
    return sound == 0 ? 0 : HandleOf(PeekNextVoice(*BlockOf(sound)));
}

int32_t DSoundStop(uintptr_t voice) noexcept {
    if (voice != 0) VoiceOf(voice)->Stop();
    return 0;
}

int32_t DSoundSetVolume(uintptr_t voice, int32_t volume) noexcept {
    if (voice != 0) VoiceOf(voice)->SetVolume(volume);
    return 0;
}

int32_t DSoundSetPan(uintptr_t voice, int32_t pan) noexcept {
    if (voice != 0) VoiceOf(voice)->SetPan(pan);
    return 0;
}

int32_t DSoundGetStatus(uintptr_t voice) noexcept {
    constexpr DWORD kShown = DSBSTATUS_PLAYING | DSBSTATUS_LOOPING;
    DWORD status = 0;
    if (voice != 0) VoiceOf(voice)->GetStatus(&status);
    return static_cast<int32_t>(status & kShown);
}
