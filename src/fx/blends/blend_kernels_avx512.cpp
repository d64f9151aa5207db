// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "fx/blends/blend_loops.h"
#include "fx/colour_planes_avx512.h"

namespace fenlight {
namespace {

uint64_t MatchingPixels(const ColourPlanes &pixels, const ColourPlanes &key) noexcept {
    const __mmask64 blue = _mm512_cmpeq_epi8_mask(pixels.blue, key.blue);
    const __mmask64 green = _mm512_mask_cmpeq_epi8_mask(blue, pixels.green, key.green);
    return _mm512_mask_cmpeq_epi8_mask(green, pixels.red, key.red);
}

// Which pixel each byte of the `part`-th of three vectors belongs to.
constexpr PlaneBytes PixelsOfBytes(size_t part) {
    PlaneBytes pixels{};
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>((64 * part + i) / 3);
    return pixels;
}

alignas(64) constexpr PlaneBytes kPixelsOfBytes[3] = {PixelsOfBytes(0), PixelsOfBytes(1), PixelsOfBytes(2)};

// All bits of the bytes of the pixels whose bit is set.
__m512i BytesOf(uint64_t pixels, int part) noexcept {
    return Reorder(_mm512_movm_epi8(pixels), kPixelsOfBytes[part]);
}

// The first where the mask has its bits, else the second.
__m512i Choose(__m512i mask, __m512i chosen, __m512i otherwise) noexcept {
    return _mm512_ternarylogic_epi64(mask, chosen, otherwise, 0xCA);
}

// The instruction rounds up.
__m512i AverageOf(__m512i first, __m512i second) noexcept {
    const __m512i odd = _mm512_and_si512(_mm512_xor_si512(first, second), _mm512_set1_epi8(1));
    return _mm512_sub_epi8(_mm512_avg_epu8(first, second), odd);
}

template <EdgeRule kRule>
void MergeWord(uint8_t *target, const uint8_t *source, uint64_t copied, uint64_t edges) noexcept {
    for (int part = 0; part < 3; ++part, target += 64, source += 64) {
        const __m512i from = _mm512_loadu_si512(source), to = _mm512_loadu_si512(target);
        __m512i merged = Choose(BytesOf(copied, part), from, to);
        if (kRule == EdgeRule::Average) merged = Choose(BytesOf(edges, part), AverageOf(to, from), merged);
        _mm512_storeu_si512(target, merged);
    }
}

__m512i PlaneOf(uint32_t byte) noexcept { return _mm512_set1_epi8(static_cast<char>(byte)); }

}  // namespace
}  // namespace fenlight

#include "fx/blends/edge_loops.h"

namespace fenlight {
namespace {

// Pairs of bytes of both pictures times pairs of shares; the constants are those of MixByte.
__m512i MixPairs(__m512i pairs, __m512i masks) noexcept {
    const __m512i shares = _mm512_mulhi_epu16(masks, _mm512_set1_epi16(25701));
    const __m512i rests = _mm512_sub_epi16(_mm512_set1_epi16(100), shares);
    const __m512i sums = _mm512_maddubs_epi16(pairs, _mm512_add_epi16(_mm512_slli_epi16(shares, 8), rests));
    return _mm512_srli_epi16(_mm512_mulhi_epu16(sums, _mm512_set1_epi16(5243)), 3);
}

__m512i MixVectors(__m512i first, __m512i second, __m512i mask) noexcept {
    const __m512i zero = _mm512_setzero_si512();
    return _mm512_packus_epi16(
        MixPairs(_mm512_unpacklo_epi8(first, second), _mm512_unpacklo_epi8(mask, zero)),
        MixPairs(_mm512_unpackhi_epi8(first, second), _mm512_unpackhi_epi8(mask, zero)));
}

void MixInVectors(uint8_t *result, const uint8_t *first, const uint8_t *second, const uint8_t *mask,
                  int64_t count) noexcept {
    int64_t i = 0;
    for (; i + 64 <= count; i += 64)
        _mm512_storeu_si512(result + i,
                            MixVectors(_mm512_loadu_si512(first + i), _mm512_loadu_si512(second + i),
                                       _mm512_loadu_si512(mask + i)));
    MixBytes(result + i, first + i, second + i, mask + i, count - i);
}

}  // namespace

extern const BlendKernels kAvx512BlendKernels{FadeBytes, MixInVectors, MergeEdges};

}  // namespace fenlight
#endif
