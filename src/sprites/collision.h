// SPDX-License-Identifier: Zlib
// What the collision tests of the caller's thread share: the boxes of sprites, the search for pairs, and the
// comparison of pixels. Nothing here changes a sprite.
#pragma once

#include <cstddef>
#include <cstdint>

#include "sprites/sprite_record.h"

namespace fenlight {

// The right and bottom edge lie one pixel past the frame and belong to the box all the same: sprites that
// only touch edge to edge meet.
struct SpriteBox {
    int32_t left, top, right, bottom;
};

inline SpriteBox BoxOf(const SpriteRecord &record) noexcept {
    const int32_t left = record.X, top = record.Y;
    return {left, top, WrapAdd(left, record.Width), WrapAdd(top, record.Height)};
}

// Without branches: of sprites that lie near each other neither side of any of these can be foretold.
inline bool DoMeet(const SpriteBox &a, const SpriteBox &b) noexcept {
    return ((b.left <= a.right) & (b.right >= a.left) & (b.top <= a.bottom) & (b.bottom >= a.top)) != 0;
}

// What of a record a search for pairs reads; fetched ahead in walks.
inline void PrefetchBox(const SpriteRecord &record) noexcept {
    __builtin_prefetch(&record);
    __builtin_prefetch(&record.Y);
}

// Does an opaque pixel of each lie on the same point? Of the larger sprite only each stepX-th column and
// stepY-th row counts, of `b` if both are of one size. For living sprites whose boxes meet; steps from 1.
bool DoPixelsMeet(const SpriteRecord &a, const SpriteRecord &b, int32_t stepX, int32_t stepY) noexcept;

// The sprites of which one has to be in each pair that is reported; all four 0: any will do.
struct PairFilter {
    uintptr_t sprites[4];

    bool Holds(uintptr_t sprite) const noexcept {
        return sprite != 0 &&
               (sprite == sprites[0] || sprite == sprites[1] || sprite == sprites[2] || sprite == sprites[3]);
    }
};

// Writes the pairs of meeting sprites, the earlier in the list first, by the place of the first and then of
// the second. Takes SpriteListLock. Gives the number of pairs.
size_t FindMeetingPairs(const PairFilter &filter, uintptr_t *pairs) noexcept;

}  // namespace fenlight
