// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "sprites/collision_loops.h"

namespace fenlight {
namespace {

// All bits of those of eight pixels that are opaque.
__m256i FindOpaque(__m256i pixels, const uint32_t *row, __m256i key) noexcept {
    const __m256i words = _mm256_maskload_epi32(reinterpret_cast<const int *>(row), pixels);
    const __m256i colours = _mm256_and_si256(words, _mm256_set1_epi32(kColourBits));
    return _mm256_andnot_si256(_mm256_cmpeq_epi32(colours, key), pixels);
}

int64_t FindMeetingRowInVectors(const PixelBlocks &blocks) noexcept {
    const __m256i keyA = _mm256_set1_epi32(static_cast<int32_t>(blocks.a.key));
    const __m256i keyB = _mm256_set1_epi32(static_cast<int32_t>(blocks.b.key));
    const int32_t last = (blocks.width - 1) & ~7;
    const __m256i counting = _mm256_set_epi32(7, 6, 5, 4, 3, 2, 1, 0), all = _mm256_set1_epi32(-1);
    const __m256i lastPixels = _mm256_cmpgt_epi32(_mm256_set1_epi32(blocks.width - last), counting);
    for (int64_t row = 0; row < blocks.rows; ++row) {
        const uint32_t *a = PixelsOf(blocks.a, row), *b = PixelsOf(blocks.b, row);
        __m256i isMet = FindOpaque(FindOpaque(lastPixels, a + last, keyA), b + last, keyB);
        for (int32_t x = 0; x < last; x += 8)
            isMet = _mm256_or_si256(isMet, FindOpaque(FindOpaque(all, a + x, keyA), b + x, keyB));
        if (_mm256_testz_si256(isMet, isMet) == 0) return row;
    }
    return blocks.rows;
}

}  // namespace

constexpr CollisionKernels kAvx2CollisionKernels{FindMeetingRowInVectors, SpreadBits, FindNear, FindMeeting};

}  // namespace fenlight
#endif
