// SPDX-License-Identifier: Zlib
// Finds format and samples in a WAV file (Multimedia Programming Interface and Data Specifications 1.0,
// RIFF).
#pragma once

#include <cstdint>

#include "fenlight/platform/sound.h"
#include "sound/wave_source.h"

namespace fenlight {

struct WaveLayout {
    WAVEFORMATEX format;
    uint64_t dataOffset;
    uint32_t dataSize;  // 1 or more; the source has all of it
};

// The first chunk inside the RIFF chunk is taken as the format chunk, whatever its id; the data chunk may
// follow anywhere inside. False unless the format is PCM and there are samples. Whether the sample format
// makes sense is left to whoever plays it.
[[nodiscard]] bool FindWave(WaveSource &source, WaveLayout &layout) noexcept;

}  // namespace fenlight
