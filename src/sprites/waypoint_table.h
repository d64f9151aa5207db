// SPDX-License-Identifier: Zlib
// Waypoint tables: the block that a record's Table leads to, and the step that takes the next waypoint.
//
// The caller's thread replaces a table while the sprite thread walks it. One lock private to this module
// makes the five table words and the block change together; it is held for a handful of word accesses only
// and never across a suspend gate, so a sprite thread that is stopped never holds it. Nobody else may write
// Table, and nobody may follow it but this module: the block knows its own length, the words beside it are
// what callers last wrote there.
#pragma once

#include <cstdint>

#include "sprites/sprite_record.h"

namespace fenlight {

struct WaypointSource {
    const int16_t *points = nullptr;  // pairs of X and Y; nullptr: no table
    int32_t entries = 0;              // pairs; below 1: no table
    int32_t baseX = 0;
    int32_t baseY = 0;
    int32_t startEntry = 0;  // outside 0 to entries - 1: entry 0
};

// Gives the record a copy of the source and frees the table that it had. Without memory, or with a source
// that holds nothing, the record is left without a table. Any thread.
void ReplaceWaypointTable(SpriteRecord &record, const WaypointSource &source) noexcept;

// Gives `to`, which holds copied words of `from` and is not published yet, a table block of its own. False:
// no memory, and `to` has no table. Any thread.
[[nodiscard]] bool CopyWaypointTable(const SpriteRecord &from, SpriteRecord &to) noexcept;

// Takes the record's table away and frees it; harmless without one. Any thread.
void FreeWaypointTable(SpriteRecord &record) noexcept;

// A sprite that stands on its target gets the next waypoint as its target. Sprite thread.
void TakeNextWaypoint(SpriteRecord &record) noexcept;

}  // namespace fenlight
