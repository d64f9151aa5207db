// SPDX-License-Identifier: Zlib
// The table of pixel effects, how an effect comes into it and what happens to it in a frame. No thread here:
// frames can be run by hand.
//
// Any thread may add an effect. A block is complete when its address appears in the table (release), and from
// then on it belongs to whoever runs the frames, who alone clears slots and frees blocks. Only one thread may
// run frames.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "fenlight/particles.h"
#include "fenlight/platform/graphics.h"

namespace fenlight {

inline constexpr size_t kEffectSlots = 256;
extern std::array<std::atomic<PixelEffectBlock *>, kEffectSlots> EffectTable;

struct EffectArguments {
    HDC destDC = 0, backgroundDC = 0;
    int32_t x = 0, y = 0;
    uint32_t colour = 0;
    int32_t radius = 1, speedRange = 2, gravityMode = 0;
    int32_t particleCount = 1, colourMode = 0, lifeFrames = 0;
};

// The block, in the first slot that was free. nullptr, with the table unchanged, if no slot is free, without
// memory, and for arguments with which no particle could be made.
PixelEffectBlock *AddPixelEffect(const EffectArguments &arguments) noexcept;

// Everything that happens while the thread holds the frame semaphore.
void RunEffectsFrame() noexcept;

}  // namespace fenlight
