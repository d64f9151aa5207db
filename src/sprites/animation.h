// SPDX-License-Identifier: Zlib
// The strips that a sprite shows. Words of the record only; any thread.
#pragma once

#include <cstdint>

#include "sprites/sprite_record.h"

namespace fenlight {

// The origin of frame 1, for now and for all nine directions: the facing stage would put an old one back.
void SetStripX(SpriteRecord &record, int32_t sourceX) noexcept;
void SetStripY(SpriteRecord &record, int32_t sourceY) noexcept;

}  // namespace fenlight
