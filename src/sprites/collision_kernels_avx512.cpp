// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "sprites/collision_loops.h"

namespace fenlight {
namespace {

// Which of some pixels are opaque.
__mmask16 FindOpaque(__mmask16 pixels, const uint32_t *row, __m512i key) noexcept {
    const __m512i words = _mm512_maskz_loadu_epi32(pixels, row);
    return _mm512_mask_cmpneq_epi32_mask(pixels, _mm512_and_si512(words, _mm512_set1_epi32(kColourBits)),
                                         key);
}

int64_t FindMeetingRowInVectors(const PixelBlocks &blocks) noexcept {
    const __m512i keyA = _mm512_set1_epi32(static_cast<int32_t>(blocks.a.key));
    const __m512i keyB = _mm512_set1_epi32(static_cast<int32_t>(blocks.b.key));
    const int32_t last = (blocks.width - 1) & ~15;
    const auto lastPixels = static_cast<__mmask16>((2u << (blocks.width - 1 - last)) - 1);
    for (int64_t row = 0; row < blocks.rows; ++row) {
        const uint32_t *a = PixelsOf(blocks.a, row), *b = PixelsOf(blocks.b, row);
        unsigned isMet = FindOpaque(FindOpaque(lastPixels, a + last, keyA), b + last, keyB);
        for (int32_t x = 0; x < last; x += 16)
            isMet |= FindOpaque(FindOpaque(0xFFFF, a + x, keyA), b + x, keyB);
        if (isMet != 0) return row;
    }
    return blocks.rows;
}

size_t FindNearInVectors(const SlabRows &rows, const EdgeSlabs &slabs, size_t sprite,
                         const NearSets &found) noexcept {
    const uint64_t *a = rows.lefts + slabs.right * rows.words, *b = rows.rights + slabs.left * rows.words;
    const uint64_t *c = rows.tops + slabs.bottom * rows.words, *d = rows.bottoms + slabs.top * rows.words;
    const size_t own = sprite / 64;
    // The words before the sprite's own stand for sprites before it, and so do some bits of its own.
    auto isBehind = static_cast<__mmask8>(0xFF << own % kWordsAtOnce);
    auto isOwn = static_cast<__mmask8>(1 << own % kWordsAtOnce);
    const __m512i bitsBehind = _mm512_set1_epi64(static_cast<int64_t>(~uint64_t{1} << sprite % 64));
    const __m512i counting = _mm512_set_epi64(7, 6, 5, 4, 3, 2, 1, 0);
    size_t count = 0;
    for (size_t word = own / kWordsAtOnce * kWordsAtOnce; word < rows.words; word += kWordsAtOnce) {
        const __m512i acrosses = _mm512_and_si512(_mm512_loadu_si512(a + word), _mm512_loadu_si512(b + word));
        const __m512i downs = _mm512_and_si512(_mm512_loadu_si512(c + word), _mm512_loadu_si512(d + word));
        __m512i common = _mm512_maskz_and_epi64(isBehind, acrosses, downs);
        common = _mm512_mask_and_epi64(common, isOwn, common, bitsBehind);
        isBehind = 0xFF;
        isOwn = 0;
        const __mmask8 isThere = _mm512_test_epi64_mask(common, common);
        const auto first = static_cast<int64_t>(NearSets::PlaceOf(sprite, word));
        const __m512i places = _mm512_add_epi64(_mm512_set1_epi64(first), counting);
        _mm512_storeu_si512(found.bits + count, _mm512_maskz_compress_epi64(isThere, common));
        _mm512_storeu_si512(found.places + count, _mm512_maskz_compress_epi64(isThere, places));
        count += static_cast<size_t>(_mm_popcnt_u32(isThere));
    }
    return count;
}

__m512i LoadEdges(const int32_t *edges) noexcept { return _mm512_loadu_si512(edges); }

uint64_t FindMeetingInVectors(const BoxArrays &boxes, size_t box, size_t first) noexcept {
    const __m512i left = _mm512_set1_epi32(boxes.lefts[box]), top = _mm512_set1_epi32(boxes.tops[box]);
    const __m512i right = _mm512_set1_epi32(boxes.rights[box]);
    const __m512i bottom = _mm512_set1_epi32(boxes.bottoms[box]);
    uint64_t meeting = 0;
    for (size_t i = 0; i < 64; i += 16) {
        __mmask16 isMet = _mm512_cmple_epi32_mask(LoadEdges(boxes.lefts + first + i), right);
        isMet = _mm512_mask_cmple_epi32_mask(isMet, LoadEdges(boxes.tops + first + i), bottom);
        isMet = _mm512_mask_cmpge_epi32_mask(isMet, LoadEdges(boxes.rights + first + i), left);
        isMet = _mm512_mask_cmpge_epi32_mask(isMet, LoadEdges(boxes.bottoms + first + i), top);
        meeting |= uint64_t{isMet} << i;
    }
    return meeting;
}

}  // namespace

constexpr CollisionKernels kAvx512CollisionKernels{FindMeetingRowInVectors, SpreadBits, FindNearInVectors,
                                                   FindMeetingInVectors};

}  // namespace fenlight
#endif
