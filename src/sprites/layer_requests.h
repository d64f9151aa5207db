// SPDX-License-Identifier: Zlib
// The mailbox between SetSpriteLayer and the layer stage: a caller's thread fills a pair, the sprite thread
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
// Callers fill the first 62 pairs, the sprite thread looks through one more.
inline constexpr int32_t kFilledRequests = 62;
inline constexpr int32_t kServedRequests = 63;
inline constinit LayerRequest LayerRequests[kLayerRequestCount]{};

// Fills the first empty pair. Any thread, several at once. False: all are taken, and nothing changed.
[[nodiscard]] bool FillLayerRequest(uintptr_t sprite, int32_t layer) noexcept;

struct LayerChange {
    uintptr_t sprite;  // 0: the pair held none
    int32_t layer;
};

// Copies a pair and empties it. The sprite thread.
[[nodiscard]] LayerChange TakeLayerRequest(LayerRequest &pair) noexcept;

}  // namespace fenlight
