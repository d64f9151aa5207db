// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "fx/blends/blend_loops.h"
#include "fx/colour_planes_avx2.h"

namespace fenlight {
namespace {

uint64_t MatchingPixels(const ColourPlanes &pixels, const ColourPlanes &key) noexcept {
    const __m256i matches = _mm256_and_si256(_mm256_and_si256(_mm256_cmpeq_epi8(pixels.blue, key.blue),
                                                              _mm256_cmpeq_epi8(pixels.green, key.green)),
                                             _mm256_cmpeq_epi8(pixels.red, key.red));
    return static_cast<uint32_t>(_mm256_movemask_epi8(matches));
}

// Of the low 32 bits. Each byte of them comes to eight bytes, which take one bit each.
__m256i MaskOf(uint64_t bits) noexcept {
    const __m256i order = _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
    const __m256i ownBit = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201));
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(bits)), order);
    return _mm256_cmpeq_epi8(_mm256_and_si256(bytes, ownBit), ownBit);
}

// The instruction rounds up.
__m256i AverageOf(__m256i first, __m256i second) noexcept {
    const __m256i odd = _mm256_and_si256(_mm256_xor_si256(first, second), _mm256_set1_epi8(1));
    return _mm256_sub_epi8(_mm256_avg_epu8(first, second), odd);
}

template <EdgeRule kRule>
__m256i MergePlane(__m256i target, __m256i source, __m256i copied, __m256i edges) noexcept {
    const __m256i merged = _mm256_blendv_epi8(target, source, copied);
    if constexpr (kRule == EdgeRule::Keep) return merged;
    return _mm256_blendv_epi8(merged, AverageOf(target, source), edges);
}

template <EdgeRule kRule>
void MergeWord(uint8_t *target, const uint8_t *source, uint64_t copied, uint64_t edges) noexcept {
    for (int i = 0; i < 2; ++i, target += kPlaneBytes, source += kPlaneBytes) {
        const __m256i here = MaskOf(copied >> 32 * i), edge = MaskOf(edges >> 32 * i);
        const ColourPlanes from = LoadPlanes(source), to = LoadPlanes(target);
        StorePlanes(target, {MergePlane<kRule>(to.blue, from.blue, here, edge),
                             MergePlane<kRule>(to.green, from.green, here, edge),
                             MergePlane<kRule>(to.red, from.red, here, edge)});
    }
}

__m256i PlaneOf(uint32_t byte) noexcept { return _mm256_set1_epi8(static_cast<char>(byte)); }

}  // namespace
}  // namespace fenlight

#include "fx/blends/edge_loops.h"

namespace fenlight {

extern const BlendKernels kAvx2BlendKernels{FadeBytes, MixBytes, MergeEdges};

}  // namespace fenlight
#endif
