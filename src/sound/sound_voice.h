// SPDX-License-Identifier: Zlib
// A loaded sound: fifteen voices in rotation. The block belongs to the caller who loaded it; the rotation may
// be moved on by any thread, also by the sprite thread at a hit.
#pragma once

#include <atomic>
#include <cstdint>

#include "fenlight/platform/sound.h"

namespace fenlight {

inline constexpr uint32_t kVoiceCount = 15;

struct SoundBlock {
    IDirectSoundBuffer *voices[kVoiceCount];  // the first holds the samples, the others share them
    std::atomic<uint32_t> voiceIndex;         // the voice used last
};

// Starts the next voice of a sound, once, as DSoundPlay does with flags 0. 0 does nothing. No lock, no
// memory.
void StartNextVoice(uintptr_t sound) noexcept;

// The same with the flags of IDirectSoundBuffer::Play; gives the voice.
IDirectSoundBuffer *PlayNextVoice(SoundBlock &block, uint32_t flags) noexcept;
// The voice that will be next, unless another thread comes first.
IDirectSoundBuffer *PeekNextVoice(const SoundBlock &block) noexcept;

}  // namespace fenlight
