// SPDX-License-Identifier: Zlib
// Taking sprites out of the drawing: the request, and its service between collision and drawing.
#include "fenlight/platform/graphics.h"
#include "fenlight/sprite_layers.h"
#include "fenlight/sprite_worlds.h"
#include "sprites/sprite_record.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

// The mode first. Thread and caller both exchange the request, so that whoever finds it set finds the mode
// of that call or of a later one, and the last call is never lost.
void RequestFixMode(SpriteRecord &record, int32_t mode) noexcept {
    record.FixRequestMode = mode;
    record.FixRequest.Exchange(1);
}

}  // namespace

void FixStage(SpriteRecord &record) noexcept {
    if (record.FixRequest == 0 || record.FixRequest.Exchange(0) == 0) return;
    record.FixMode = record.FixRequestMode;
}

}  // namespace fenlight

using namespace fenlight;

int32_t SetSpriteFixMode(uintptr_t sprite, int32_t mode) noexcept {
    if (sprite != 0) RequestFixMode(*RecordOf(sprite), mode);
    return 0;
}

int32_t GetSpriteFixMode(uintptr_t sprite) noexcept { return sprite == 0 ? 0 : RecordOf(sprite)->FixMode; }

int32_t VisualTableFix(const uintptr_t *table, int32_t tableBytes, int32_t left, int32_t top, int32_t right,
                       int32_t bottom) noexcept {
    const RECT visible{left, top, right, bottom};
    const int32_t count = table == nullptr ? 0 : tableBytes / static_cast<int32_t>(sizeof *table);
    for (int32_t i = 0; i < count; ++i) {
        if (table[i] == 0) continue;
        SpriteRecord &record = *RecordOf(table[i]);
        RequestFixMode(record, PtInRect(&visible, {record.X, record.Y}) ? 0 : 1);
    }
    return 0;
}
