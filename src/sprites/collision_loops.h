// SPDX-License-Identifier: Zlib
// The loops of collision as the compiler is to vectorise them, once for each width of vectors.
#pragma once

#include "sprites/collision_kernels.h"

namespace fenlight {
namespace {

inline const uint32_t *PixelsOf(const PixelBlock &block, int64_t row) noexcept {
    return reinterpret_cast<const uint32_t *>(block.firstRow + row * block.pitch);
}

inline int64_t FindMeetingRow(const PixelBlocks &blocks) noexcept {
    const uint32_t keyA = blocks.a.key, keyB = blocks.b.key;
    for (int64_t row = 0; row < blocks.rows; ++row) {
        const uint32_t *a = PixelsOf(blocks.a, row), *b = PixelsOf(blocks.b, row);
        uint32_t isMet = 0;
        for (int32_t x = 0; x < blocks.width; ++x)
            isMet |= static_cast<uint32_t>((a[x] & kColourBits) != keyA) &
                     static_cast<uint32_t>((b[x] & kColourBits) != keyB);
        if (isMet != 0) return row;
    }
    return blocks.rows;
}

inline void SpreadBits(uint64_t *row, ptrdiff_t step, size_t rows, size_t words) noexcept {
    for (size_t piece = 0; piece < words; piece += kWordsAtOnce) {
        uint64_t sum[kWordsAtOnce] = {};
        uint64_t *place = row + piece;
        for (size_t i = 0; i < rows; ++i, place += step)
            for (size_t word = 0; word < kWordsAtOnce; ++word) place[word] = sum[word] |= place[word];
    }
}

inline size_t FindNear(const SlabRows &rows, const EdgeSlabs &slabs, size_t sprite,
                       const NearSets &found) noexcept {
    const uint64_t *a = rows.lefts + slabs.right * rows.words, *b = rows.rights + slabs.left * rows.words;
    const uint64_t *c = rows.tops + slabs.bottom * rows.words, *d = rows.bottoms + slabs.top * rows.words;
    uint64_t isBehind = ~uint64_t{1} << sprite % 64;
    size_t count = 0;
    for (size_t word = sprite / 64; word < rows.words; ++word) {
        const uint64_t common = a[word] & b[word] & c[word] & d[word] & isBehind;
        isBehind = ~uint64_t{0};
        // Without branches: where sprites lie near each other cannot be foretold.
        found.bits[count] = common;
        found.places[count] = NearSets::PlaceOf(sprite, word);
        count += common != 0;
    }
    return count;
}

inline uint64_t FindMeeting(const BoxArrays &boxes, size_t box, size_t first) noexcept {
    const int32_t left = boxes.lefts[box], top = boxes.tops[box];
    const int32_t right = boxes.rights[box], bottom = boxes.bottoms[box];
    uint64_t meeting = 0;
    for (size_t i = 0; i < 64; ++i)
        meeting |=
            static_cast<uint64_t>((boxes.lefts[first + i] <= right) & (boxes.tops[first + i] <= bottom) &
                                  (boxes.rights[first + i] >= left) & (boxes.bottoms[first + i] >= top))
            << i;
    return meeting;
}

constexpr CollisionKernels kCollisionLoops{FindMeetingRow, SpreadBits, FindNear, FindMeeting};

}  // namespace
}  // namespace fenlight
