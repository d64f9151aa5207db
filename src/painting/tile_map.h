// SPDX-License-Identifier: Zlib
// Tile maps: a section of a map of tile numbers, painted tile by tile from a strip.
#pragma once

#include "fenlight/tiles.h"

namespace fenlight {

// Nothing is painted for sizes below 1 or without a map.
void PaintTiles(const TileArguments &map) noexcept;

}  // namespace fenlight
