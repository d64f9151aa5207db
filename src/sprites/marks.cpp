// SPDX-License-Identifier: Zlib
// The caller's marks on sprites, and the functions that delete many sprites at once.
#include "fenlight/sprite_layers.h"
#include "sprites/sprite_list.h"

namespace fenlight {

namespace {

// Deletes the living sprites that are chosen and counts them.
template <class Choice>
int32_t DeleteWhere(Choice isChosen) noexcept {
    const std::lock_guard guard(SpriteListLock);
    int32_t count = 0;
    SpriteRecord *record = SpriteList.load(std::memory_order_relaxed);
    for (; record != nullptr; record = NextOf(*record)) {
        if (record->State != kStateAlive || !isChosen(*record)) continue;
        EraseSprite(*record);
        ++count;
    }
    return count;
}

}  // namespace

}  // namespace fenlight

using namespace fenlight;

int32_t MarkSprite(uintptr_t sprite, int32_t mark) noexcept {
    if (sprite != 0) RecordOf(sprite)->Mark = mark;
    return 0;
}

int32_t GetSpriteMark(uintptr_t sprite) noexcept { return sprite == 0 ? 0 : RecordOf(sprite)->Mark; }

int32_t DeleteSpritesMark(int32_t mark) noexcept {
    return DeleteWhere([mark](const SpriteRecord &record) { return record.Mark == mark; });
}

int32_t DeleteSpritesIfAnimReady() noexcept {
    return DeleteWhere(
        [](const SpriteRecord &record) { return record.AnimOnce == 1 && record.Frame == record.FrameCount; });
}

int32_t DeleteAllXSprites(int32_t x) noexcept {
    return DeleteWhere([x](const SpriteRecord &record) { return record.X == x; });
}

int32_t DeleteAllYSprites(int32_t y) noexcept {
    return DeleteWhere([y](const SpriteRecord &record) { return record.Y == y; });
}
