// SPDX-License-Identifier: Zlib
// The mailbox between SetSpriteLayer and the layer stage: the caller's thread fills a pair, the sprite thread
// empties it at the start of a frame. A pair is empty while its sprite is 0, as all are when the library is
// loaded.
#pragma once

#include "sprites/sprite_record.h"

namespace fenlight {

struct LayerRequest {
    AddressWord sprite;
    NumberWord layer;
};

inline constexpr int32_t kLayerRequestCount = 65;
inline constinit LayerRequest LayerRequests[kLayerRequestCount]{};

}  // namespace fenlight
