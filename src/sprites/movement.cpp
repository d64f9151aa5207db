// SPDX-License-Identifier: Zlib
// The exported functions that steer a sprite. They write single words; the sprite thread does the rest.
#include "sprites/movement.h"

#include "fenlight/sprite_movement.h"
#include "sprites/animation.h"
#include "sprites/line_path.h"
#include "sprites/sprite_list.h"
#include "sprites/sprite_record.h"
#include "sprites/waypoint_table.h"

namespace fenlight {

namespace {

constexpr int32_t kPositionSourceX = 4;
constexpr int32_t kPositionSourceY = 8;
// Words that lead the library's own threads through memory; a caller's number there would be followed.
constexpr int32_t kPositionNext = 88;
constexpr int32_t kPositionSelf = 120;
constexpr int32_t kPositionTable = 320;

void SetTarget(SpriteRecord &record, int32_t x, int32_t y) {
    record.TargetX = x;
    record.TargetY = y;
}

bool HasArrived(const SpriteRecord &record) {
    return record.X == record.TargetX && record.Y == record.TargetY;
}

void ChangeWord(SpriteRecord &record, int32_t position, intptr_t value) {
    switch (position) {
        case kPositionSourceX:
            return SetStripX(record, static_cast<int32_t>(value));
        case kPositionSourceY:
            return SetStripY(record, static_cast<int32_t>(value));
        case kPositionNext:
        case kPositionSelf:
        case kPositionTable:
            return;
        default:
            return WriteWord(record, position, value);
    }
}

}  // namespace

}  // namespace fenlight

using namespace fenlight;

int32_t MoveSprite(uintptr_t sprite, int32_t x, int32_t y) noexcept {
    // Without a list there is no sprite, so the handle is a dead one.
    if (sprite != 0 && SpriteList.load() != nullptr) SetTarget(*RecordOf(sprite), x, y);
    return 0;
}

int32_t SetSpritePos(uintptr_t sprite, int32_t x, int32_t y, int32_t targetX, int32_t targetY) noexcept {
    if (sprite == 0) return 0;
    SpriteRecord &record = *RecordOf(sprite);
    record.X = x;
    record.Y = y;
    SetTarget(record, targetX, targetY);
    return 0;
}

int32_t SetSpriteSpeed(uintptr_t sprite, int32_t speedX, int32_t speedY) noexcept {
    if (sprite == 0) return 0;
    RecordOf(sprite)->SpeedX = speedX;
    RecordOf(sprite)->SpeedY = speedY;
    return 0;
}

int32_t HasSpriteArrived(uintptr_t sprite) noexcept { return sprite != 0 && HasArrived(*RecordOf(sprite)); }

int32_t GetSpriteMoveX(uintptr_t sprite) noexcept {
    return sprite == 0 ? 0 : HeadingOnAxis(RecordOf(sprite)->X, RecordOf(sprite)->TargetX);
}

int32_t GetSpriteMoveY(uintptr_t sprite) noexcept {
    return sprite == 0 ? 0 : HeadingOnAxis(RecordOf(sprite)->Y, RecordOf(sprite)->TargetY);
}

int32_t GetSpriteMoveXY(uintptr_t sprite) noexcept {
    return sprite == 0 ? 0 : DirectionOf(*RecordOf(sprite));
}

int32_t SlowDownSprite(uintptr_t sprite, int32_t periodX, int32_t periodY) noexcept {
    if (sprite == 0) return 0;
    SpriteRecord &record = *RecordOf(sprite);
    record.SlowPeriodX = periodX;
    record.SlowPeriodY = periodY;
    record.SlowCountX = 0;
    record.SlowCountY = 0;
    return 0;
}

void SetSpriteMovingMode(uintptr_t sprite, int32_t mode) noexcept {
    if (sprite != 0) StartMovingMode(*RecordOf(sprite), mode);
}

int32_t SpriteMovingRect(uintptr_t sprite, int32_t left, int32_t top, int32_t right,
                         int32_t bottom) noexcept {
    if (sprite == 0) return 0;
    SpriteRecord &record = *RecordOf(sprite);
    record.RectLeft = left;
    record.RectTop = top;
    record.RectRight = right;
    record.RectBottom = bottom;
    return 0;
}

int32_t SetSpriteCage(uintptr_t sprite, int32_t left, int32_t top, int32_t right, int32_t bottom,
                      int32_t homeX, int32_t homeY) noexcept {
    if (sprite != 0) SetCage(*RecordOf(sprite), {left, top, right, bottom, homeX, homeY});
    return 0;
}

int32_t MoveSpriteWithTable(uintptr_t sprite, const int16_t *table, int32_t entries, int32_t baseX,
                            int32_t baseY, int32_t startEntry) noexcept {
    if (sprite != 0) ReplaceWaypointTable(*RecordOf(sprite), {table, entries, baseX, baseY, startEntry});
    return 0;
}

void SpriteTableMode(uintptr_t sprite, int32_t mode) noexcept {
    if (sprite != 0) RecordOf(sprite)->TableMode = mode;
}

int32_t AttachSprite(uintptr_t sprite, uintptr_t other, int32_t offsetX, int32_t offsetY) noexcept {
    if (sprite == 0) return 0;
    SpriteRecord &record = *RecordOf(sprite);
    // The offsets first: the thread must not follow a new leader at the old distance.
    record.AttachX = offsetX;
    record.AttachY = offsetY;
    record.AttachedTo = other;
    return 0;
}

int32_t AttachSpriteAnim(uintptr_t sprite, uintptr_t other) noexcept {
    if (sprite != 0) RecordOf(sprite)->AnimFrom = other;
    return 0;
}

int32_t ChangeSpritePara(uintptr_t sprite, int32_t position, intptr_t value) noexcept {
    if (sprite != 0) ChangeWord(*RecordOf(sprite), position, value);
    return 0;
}
