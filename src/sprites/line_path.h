// SPDX-License-Identifier: Zlib
// Line paths: the sixteen places of Path that a sprite in line mode consumes point by point.
//
// The caller's thread may empty a path while the sprite thread moves along it. One lock private to this
// module keeps the sixteen places together; without it a half-emptied path could be left with a free first
// place and filled ones behind, and the sprite would never move again. It is held for one path's work and
// never across a suspend gate.
#pragma once

#include <array>
#include <cstdint>

#include "sprites/sprite_record.h"

namespace fenlight {

struct PathPoint {
    int32_t x = kPathEmpty;
    int32_t y = kPathEmpty;

    // X decides, so that no path passes through this X coordinate.
    bool IsFree() const { return x == kPathEmpty; }
    bool operator==(const PathPoint &) const = default;
};

using PathPoints = std::array<PathPoint, kPathPlaces>;

// The first points of the straight line between two points, `from` itself included; all places free if the
// two are equal.
PathPoints MakeLinePath(PathPoint from, PathPoint to) noexcept;

// Makes all places of the record's path free and sets its moving mode. Any thread.
void StartMovingMode(SpriteRecord &record, int32_t mode) noexcept;

// Copies the path as it is between two frames' work on it. Any thread, while nobody else knows `to`.
void CopyLinePath(const SpriteRecord &from, SpriteRecord &to) noexcept;

// Moves the sprite SpeedX points along its path, which is made anew when it runs short. Sprite thread.
void MoveAlongLine(SpriteRecord &record) noexcept;

}  // namespace fenlight
