// SPDX-License-Identifier: Zlib
// The exported functions that read and change the order of the list.
#include "fenlight/sprite_layers.h"
#include "sprites/frame_order.h"
#include "sprites/layer_requests.h"
#include "sprites/sprite_list.h"

namespace fenlight {

namespace {

// The record that leads to the sprite; nullptr for the first one and for what the list does not hold. The
// caller holds SpriteListLock.
SpriteRecord *FindPredecessor(uintptr_t sprite) noexcept {
    if (sprite == 0) return nullptr;
    SpriteRecord *record = SpriteList.load(std::memory_order_relaxed);
    while (record != nullptr && record->Next != sprite) record = NextOf(*record);
    return record;
}

int32_t FindLayer(uintptr_t sprite) noexcept {
    int32_t layer = 1;
    const SpriteRecord *record = SpriteList.load(std::memory_order_relaxed);
    for (; record != nullptr; record = NextOf(*record), ++layer)
        if (HandleOf(record) == sprite) return layer;
    return -1;
}

// In this order the writes are right for neighbours too, whichever of them comes first.
bool SwapRecords(uintptr_t spriteA, uintptr_t spriteB) noexcept {
    SpriteRecord *beforeA = FindPredecessor(spriteA), *beforeB = FindPredecessor(spriteB);
    if (beforeA == nullptr || beforeB == nullptr) return false;
    beforeA->Next = spriteB;
    beforeB->Next = spriteA;
    const uintptr_t behindB = RecordOf(spriteB)->Next;
    RecordOf(spriteB)->Next = RecordOf(spriteA)->Next;
    RecordOf(spriteA)->Next = behindB;
    DisturbFrameOrder();
    return true;
}

}  // namespace

}  // namespace fenlight

using namespace fenlight;

int32_t SetSpriteLayer(uintptr_t sprite, int32_t layer) noexcept {
    return FillLayerRequest(sprite, layer) ? 0 : -1;
}

int32_t BringSpriteToTop(uintptr_t sprite) noexcept { return SetSpriteLayer(sprite, CountAllSprites()); }

int32_t BringSpriteToBottom(uintptr_t sprite) noexcept { return SetSpriteLayer(sprite, 1); }

int32_t GetSpriteLayer(uintptr_t sprite) noexcept {
    const std::lock_guard guard(SpriteListLock);
    return FindLayer(sprite);
}

int32_t SwapSpriteLayers(uintptr_t spriteA, uintptr_t spriteB) noexcept {
    const std::lock_guard guard(SpriteListLock);
    return SwapRecords(spriteA, spriteB) ? 0 : -1;
}
