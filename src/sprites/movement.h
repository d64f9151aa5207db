// SPDX-License-Identifier: Zlib
// What the steering functions and the stages of movement share. Any thread.
#pragma once

#include <cstdint>

#include "sprites/sprite_record.h"

namespace fenlight {

constexpr int32_t kDirections = 9;  // standing, and eight ways clockwise from up and right

// -1, 0 or 1: where the target lies seen from the position.
constexpr int32_t HeadingOnAxis(int32_t position, int32_t target) noexcept {
    return (target > position) - (target < position);
}

// The direction code, 0 to 8, of a sprite on its way to its target.
int32_t DirectionOf(const SpriteRecord &record) noexcept;

struct AxisMotion {
    int32_t position;
    int32_t target;
    int32_t speed;
    int32_t slowCount;  // anything but 0 skips the step
};

// The position after one frame's step on one axis: never beyond the target. A negative speed leads away from
// it, for ever, and wraps round.
int32_t StepOnAxis(const AxisMotion &motion) noexcept;

struct Cage {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
    int32_t homeX;
    int32_t homeY;
};

// The cage stage sees the old cage or the new one, never a mixture.
void SetCage(SpriteRecord &record, const Cage &cage) noexcept;

}  // namespace fenlight
