// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/geometry_loops.h"

namespace fenlight {
namespace {

// 16 pixels in the low halves of three vectors and 16 in the high ones.
constexpr int64_t kHalfBytes = 48;
struct Pixels {
    __m256i first, second, third;
};

__m256i LoadHalves(const uint8_t *low, const uint8_t *high) noexcept {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(low))),
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(high)), 1);
}

void StoreHalves(uint8_t *low, uint8_t *high, __m256i halves) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(low), _mm256_castsi256_si128(halves));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(high), _mm256_extracti128_si256(halves, 1));
}

Pixels Load(const uint8_t *low, const uint8_t *high) noexcept {
    return {LoadHalves(low, high), LoadHalves(low + 16, high + 16), LoadHalves(low + 32, high + 32)};
}

void Store(uint8_t *low, uint8_t *high, const Pixels &pixels) noexcept {
    StoreHalves(low, high, pixels.first);
    StoreHalves(low + 16, high + 16, pixels.second);
    StoreHalves(low + 32, high + 32, pixels.third);
}

// -1 gives 0.
__m256i Pick(__m256i from, __m128i places) noexcept {
    return _mm256_shuffle_epi8(from, _mm256_broadcastsi128_si256(places));
}

// Each half for itself. The 6th and the 11th of 16 pixels lie across two vectors, before and after.
Pixels Reversed(const Pixels &p) noexcept {
    const __m256i first =
        Pick(p.third, _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, -1)) |
        Pick(p.second, _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 14));
    const __m256i second =
        Pick(p.second, _mm_setr_epi8(15, -1, 11, 12, 13, 8, 9, 10, 5, 6, 7, 2, 3, 4, -1, 0)) |
        Pick(p.third, _mm_setr_epi8(-1, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1)) |
        Pick(p.first, _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 15, -1));
    const __m256i third =
        Pick(p.first, _mm_setr_epi8(-1, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2)) |
        Pick(p.second, _mm_setr_epi8(1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    return {first, second, third};
}

void TurnPixels(uint8_t *begin, uint8_t *end) noexcept {
    for (; end - begin >= 4 * kHalfBytes; begin += 2 * kHalfBytes, end -= 2 * kHalfBytes) {
        const Pixels front = Load(begin, begin + kHalfBytes);
        const Pixels back = Load(end - kHalfBytes, end - 2 * kHalfBytes);
        Store(begin, begin + kHalfBytes, Reversed(back));
        Store(end - kHalfBytes, end - 2 * kHalfBytes, Reversed(front));
    }
    TurnRest(begin, end);
}

}  // namespace

extern const GeometryKernels kAvx2GeometryKernels{TurnPixels, SwapBytes, FindLandings};

}  // namespace fenlight
#endif
