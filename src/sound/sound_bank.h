// SPDX-License-Identifier: Zlib
// The library's own sound device and the loading of sounds. There is no list of sounds: a block belongs to
// the caller.
#pragma once

#include <cstdint>

#include "sound/wave_source.h"

namespace fenlight {

// Reads a WAV file and makes its voices. The address of a SoundBlock, or 0 with nothing left behind. Any
// thread; only between DSoundInit and DSoundDeInit.
uintptr_t LoadSound(WaveSource &source) noexcept;

// Gives back the voices and the block.
void UnloadSound(uintptr_t sound) noexcept;

}  // namespace fenlight
