// SPDX-License-Identifier: Zlib
// The exported collision tests of the caller's thread.
#include "sprites/collision.h"

#include "fenlight/sprite_collision.h"
#include "sprites/frame_order.h"
#include "sprites/sprite_list.h"

namespace fenlight {

namespace {

// Of the thread that sets them and searches; words, so that a second one only sees a mixed filter.
constinit std::atomic<uintptr_t> collideFilter[4];

PairFilter LoadFilter() noexcept {
    PairFilter filter{};
    for (size_t i = 0; i < 4; ++i) filter.sprites[i] = collideFilter[i].load(std::memory_order_relaxed);
    // Without the fourth the others are not asked.
    return filter.sprites[3] != 0 ? filter : PairFilter{};
}

bool IsAlive(const SpriteRecord &record) noexcept { return record.State == kStateAlive; }

bool AreMeeting(uintptr_t spriteA, uintptr_t spriteB) noexcept {
    if (spriteA == 0 || spriteB == 0) return false;
    const SpriteRecord &a = *RecordOf(spriteA), &b = *RecordOf(spriteB);
    return IsAlive(a) && IsAlive(b) && DoMeet(BoxOf(a), BoxOf(b));
}

struct Shift {
    int32_t x, y;
};

// In view coordinates, right and bottom excluded. Only a ScrollMode of 1 counts as fixed to the view here.
bool IsUnder(const SpriteRecord &record, int32_t x, int32_t y, Shift scroll) noexcept {
    const bool isFixed = record.ScrollMode == 1;
    const int32_t left = WrapSubtract(record.X, isFixed ? 0 : scroll.x);
    const int32_t top = WrapSubtract(record.Y, isFixed ? 0 : scroll.y);
    return x >= left && x < WrapAdd(left, record.Width) && y >= top && y < WrapAdd(top, record.Height);
}

}  // namespace

}  // namespace fenlight

using namespace fenlight;

int32_t Collide(uintptr_t spriteA, uintptr_t spriteB) noexcept { return AreMeeting(spriteA, spriteB); }

uintptr_t CollideMore(uintptr_t sprite, const uintptr_t *table, int32_t count) noexcept {
    if (sprite == 0 || table == nullptr) return 0;
    const SpriteBox box = BoxOf(*RecordOf(sprite));
    for (int32_t i = 0; i < count; ++i) {
        if (table[i] == 0) continue;
        const SpriteRecord &other = *RecordOf(table[i]);
        if (IsAlive(other) && DoMeet(box, BoxOf(other))) return table[i];
    }
    return 0;
}

uintptr_t CollideAll(uintptr_t sprite) noexcept {
    const std::lock_guard guard(SpriteListLock);
    SpriteRecord *first = SpriteList.load(std::memory_order_relaxed);
    if (sprite == 0 || first == nullptr) return 0;
    const SpriteBox box = BoxOf(*RecordOf(sprite));
    uintptr_t found = 0;
    WalkList(*first, PrefetchBox, [&](const SpriteRecord &other) {
        const bool isHit = HandleOf(&other) != sprite && IsAlive(other) && DoMeet(box, BoxOf(other));
        if (isHit) found = HandleOf(&other);
        return !isHit;
    });
    return found;
}

int32_t Collision(uintptr_t spriteA, uintptr_t spriteB, int32_t stepX, int32_t stepY) noexcept {
    if (stepX < 1 || stepY < 1 || !AreMeeting(spriteA, spriteB)) return 0;
    return DoPixelsMeet(*RecordOf(spriteA), *RecordOf(spriteB), stepX, stepY);
}

void SetCollideUnknownSprite(uintptr_t filter1, uintptr_t filter2, uintptr_t filter3,
                             uintptr_t filter4) noexcept {
    const uintptr_t filters[] = {filter1, filter2, filter3, filter4};
    for (size_t i = 0; i < 4; ++i) collideFilter[i].store(filters[i], std::memory_order_relaxed);
}

int32_t CollideUnknown(uintptr_t *pairs) noexcept {
    return pairs == nullptr ? 0 : static_cast<int32_t>(FindMeetingPairs(LoadFilter(), pairs));
}

uintptr_t MouseOverSprite(const uintptr_t *table, int32_t count, int32_t mouseX, int32_t mouseY) noexcept {
    const std::lock_guard guard(SpriteListLock);
    const SpriteRecord *first = SpriteList.load(std::memory_order_relaxed);
    // The first record speaks for all of them: while it goes, nothing is under the mouse.
    if (table == nullptr || first == nullptr || !IsAlive(*first)) return 0;
    const Shift scroll{first->ScrollX, first->ScrollY};
    for (int32_t i = 0; i < count; ++i)
        if (table[i] != 0 && IsUnder(*RecordOf(table[i]), mouseX, mouseY, scroll)) return table[i];
    return 0;
}
