// SPDX-License-Identifier: Zlib
#include "sprites/layer_requests.h"

namespace fenlight {

namespace {

// Stands for the sprite while a caller writes the pair, so that no other caller takes it and the sprite
// thread passes it by. The address of something that is no record.
uintptr_t BeingFilled() noexcept { return reinterpret_cast<uintptr_t>(&LayerRequests); }

}  // namespace

bool FillLayerRequest(uintptr_t sprite, int32_t layer) noexcept {
    for (int32_t i = 0; i < kFilledRequests; ++i) {
        LayerRequest &pair = LayerRequests[i];
        if (pair.sprite != 0 || !pair.sprite.Replace(0, BeingFilled())) continue;
        pair.layer = layer;
        // Last: with the sprite in it the pair is full.
        pair.sprite = sprite;
        return true;
    }
    return false;
}

LayerChange TakeLayerRequest(LayerRequest &pair) noexcept {
    const uintptr_t sprite = pair.sprite;
    if (sprite == 0 || sprite == BeingFilled()) return {0, 0};
    const int32_t layer = pair.layer;
    pair.sprite = 0;
    return {sprite, layer};
}

}  // namespace fenlight
