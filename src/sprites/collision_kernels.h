// SPDX-License-Identifier: Zlib
// The hot loops of collision: pixels against pixels, and rows of bits. Pure functions on the callers' memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fenlight {

// Two blocks of pixels of one size, words 0x??RRGGBB. A pixel is opaque if its lower 24 bits differ from the
// block's key; a key with more bits is nobody's colour.
struct PixelBlock {
    const uint8_t *firstRow;
    ptrdiff_t pitch;
    uint32_t key;
};
struct PixelBlocks {
    PixelBlock a, b;
    int32_t width;  // from 1
    int64_t rows;
};

constexpr uint32_t kColourBits = 0xFFFFFF;

// Rows of a bit for each sprite come in pieces of this many words, so that no vector is left half full.
constexpr size_t kWordsAtOnce = 8;

// In which slab each edge of a sprite's box lies.
struct EdgeSlabs {
    uint8_t left, top, right, bottom;
};

// For each slab of an axis a row that tells which sprites begin in it or before it, and one that tells which
// end in it or behind it. `words` words make a row.
struct SlabRows {
    uint64_t *lefts, *tops, *rights, *bottoms;
    size_t words;
};

// Sets of sprites, each of some that stand next to one another in the list, with the sprite that they are
// near to.
struct NearSets {
    uint64_t *bits;
    uint64_t *places;  // that sprite's number, and in the lower half the word of the row

    static constexpr uint64_t PlaceOf(size_t sprite, size_t word) noexcept { return sprite << 32 | word; }
};

struct BoxArrays {
    int32_t *lefts, *tops, *rights, *bottoms;
};

struct CollisionKernels {
    // The first row with a column that is opaque in both blocks; `rows` if there is none.
    int64_t (*findMeetingRow)(const PixelBlocks &blocks) noexcept;
    // Each row, from the one behind `row` on, takes over what the one before it has. `step` words lead from
    // a row to the next.
    void (*spreadBits)(uint64_t *row, ptrdiff_t step, size_t rows, size_t words) noexcept;
    // What four rows have in common and stands behind the sprite in the list: writes the sets that are not
    // empty and gives their number. All kWordsAtOnce places behind them may be written to.
    size_t (*findNear)(const SlabRows &rows, const EdgeSlabs &slabs, size_t sprite,
                       const NearSets &found) noexcept;
    // Which of 64 boxes from `first` on meet one of them all.
    uint64_t (*findMeeting)(const BoxArrays &boxes, size_t box, size_t first) noexcept;
};

extern const CollisionKernels kPlainCollisionKernels;
extern const CollisionKernels kAvx2CollisionKernels;
extern const CollisionKernels kAvx512CollisionKernels;

// The widest version that is to be used.
const CollisionKernels &ChooseCollisionKernels() noexcept;

}  // namespace fenlight
