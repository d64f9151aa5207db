// SPDX-License-Identifier: Zlib
// The one star field: its settings, its stars and what happens to them in a frame. No thread here: frames can
// be run by hand.
//
// The thread that runs the frames owns the records; callers may read them. A field is made and freed under
// the star thread's lock, while no frame runs.
#pragma once

#include <atomic>
#include <cstdint>

#include "fenlight/particles.h"
#include "fenlight/platform/graphics.h"

namespace fenlight {

struct StarArguments {
    HDC destDC = 0, backgroundDC = 0;
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    int32_t count = 0, frameDelay = 0, flags = 0;
};

// What any caller may set while the thread runs; it reads each word when it next needs it.
struct StarOptions {
    std::atomic<int32_t> stopMode{0}, originX{0}, originY{0}, biasX{0}, biasY{0}, frameDelay{0};
};
extern StarOptions StarSettings;
void SetStarOptions(int32_t originX, int32_t originY, int32_t biasX, int32_t biasY,
                    int32_t frameDelay) noexcept;

// How a field ends: the values of stopMode. Any other acts as kStopErased.
inline constexpr int32_t kKeepRunning = 0, kStopAsDrawn = 1, kStopErased = 2, kRunOut = 3;

// The records of the field, nullptr while there is none.
StarRecord *CurrentStars() noexcept;

// Parks all stars of a new field, with the options at their first values. False, with nothing changed, if a
// field exists already, for a count below 1, an empty rectangle, or without memory.
[[nodiscard]] bool MakeStarField(const StarArguments &arguments) noexcept;
void FreeStarField() noexcept;

// Everything that happens while the thread holds the frame semaphore.
void RunStarFrame() noexcept;
// To be asked at the end of a frame: does a field with this stop mode go on?
bool StarFieldGoesOn(int32_t stopMode) noexcept;
// Takes the last drawn pixels away.
void EraseStars() noexcept;

}  // namespace fenlight
