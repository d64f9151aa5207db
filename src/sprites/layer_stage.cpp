// SPDX-License-Identifier: Zlib
#include "sprites/frame_order.h"
#include "sprites/layer_requests.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

struct Places {
    SpriteRecord *beforeSprite = nullptr;
    SpriteRecord *onLayer = nullptr;
};

Places FindPlaces(SpriteRecord *record, const LayerChange &change) noexcept {
    Places places;
    // Taken as unsigned, a negative layer lies beyond the end of every list.
    for (uint32_t layer = 1; record != nullptr; record = NextOf(*record), ++layer) {
        if (layer == static_cast<uint32_t>(change.layer)) places.onLayer = record;
        if (record->Next == change.sprite) places.beforeSprite = record;
        if (places.onLayer != nullptr && places.beforeSprite != nullptr) break;
    }
    return places;
}

// Behind the record that stands on the layer now. Whatever the list does not hold leaves it as it is, and so
// does the first record, which has none before it.
void MoveToLayer(const LayerChange &change) noexcept {
    const std::lock_guard guard(SpriteListLock);
    const auto [beforeSprite, onLayer] = FindPlaces(SpriteList.load(std::memory_order_relaxed), change);
    if (beforeSprite == nullptr || onLayer == nullptr) return;
    SpriteRecord *sprite = RecordOf(change.sprite);
    if (onLayer == sprite || onLayer == beforeSprite) return;
    beforeSprite->Next = sprite->Next;
    sprite->Next = onLayer->Next;
    onLayer->Next = change.sprite;
    DisturbFrameOrder();
}

}  // namespace

void LayerStage() noexcept {
    for (int32_t i = 0; i < kServedRequests; ++i) {
        // The lock is taken for each anew: walks through a long list keep callers waiting.
        const LayerChange change = TakeLayerRequest(LayerRequests[i]);
        if (change.sprite != 0) MoveToLayer(change);
    }
}

}  // namespace fenlight
