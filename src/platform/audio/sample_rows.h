// SPDX-License-Identifier: Zlib
// The inner loops of the mixer: samples of one format, stepped through at one speed, added to a stereo block.
#pragma once

#include <cstdint>

#include "platform/audio/loudness.h"

namespace fenlight::platform {

// Positions and steps count frames, with 32 bits behind the point.
inline constexpr int kFractionBits = 32;
inline constexpr uint64_t kOneFrame = uint64_t{1} << kFractionBits;

struct SampleRow {
    const uint8_t *bytes;  // the frame at position 0
    uint64_t position;
    uint64_t step;
    Gains gains;
};

// True: no position of the row falls between two frames, and no frame behind the last position is read. Else
// the frame after each position is read too.
[[nodiscard]] inline bool IsOnFrames(uint64_t position, uint64_t step) noexcept {
    return step == kOneFrame && static_cast<uint32_t>(position) == 0;
}

// Adds `frames` frames to `stereo` (left and right in turn, full scale is 1).
using AddRow = void (*)(const SampleRow &row, float *stereo, int32_t frames);

// For 8, 16, 24 or 32 bit and 1 or 2 channels.
[[nodiscard]] AddRow ChooseAddRow(int bitsPerSample, int channels) noexcept;

}  // namespace fenlight::platform
