// SPDX-License-Identifier: Zlib
// What a caller asks of one record, and the request for a stamp.
#include "fenlight/sprite_list.h"
#include "sprites/sprite_record.h"

using namespace fenlight;

int32_t ExistSprite(uintptr_t sprite) noexcept {
    return sprite != 0 && RecordOf(sprite)->State == kStateAlive ? 0 : -1;
}

intptr_t TestSprite(uintptr_t sprite, int32_t position) noexcept {
    return sprite == 0 ? 0 : ReadWord(*RecordOf(sprite), position);
}

int32_t *GetSpriteInfos(uintptr_t sprite, int32_t *buffer) noexcept {
    if (sprite == 0 || buffer == nullptr) return nullptr;
    const SpriteRecord &record = *RecordOf(sprite);
    buffer[0] = record.X;
    buffer[1] = record.Y;
    buffer[2] = record.TargetX;
    buffer[3] = record.TargetY;
    buffer[4] = buffer[0] == buffer[2] && buffer[1] == buffer[3];
    buffer[5] = record.SpeedX;
    buffer[6] = record.SpeedY;
    buffer[7] = record.Frame;
    return buffer;
}

int32_t GetSpriteX(uintptr_t sprite) noexcept { return sprite == 0 ? 0 : RecordOf(sprite)->X; }

int32_t GetSpriteY(uintptr_t sprite) noexcept { return sprite == 0 ? 0 : RecordOf(sprite)->Y; }

int32_t SpriteToHDC(uintptr_t sprite) noexcept {
    if (sprite != 0) RecordOf(sprite)->StampRequest = 1;
    return 0;
}
