// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/geometry_loops.h"

namespace fenlight {
namespace {

// 21 pixels; the last byte of a vector belongs to the next 21.
constexpr int64_t kStep = 63;
constexpr __mmask64 kStepMask = ~__mmask64{0} >> 1;

// Where the bytes of `count` pixels in reversed order come from, up to 21.
__m512i ReversedPlaces(int64_t count) noexcept {
    alignas(64) uint8_t places[64];
    for (int64_t i = 0; i < 64; ++i) places[i] = static_cast<uint8_t>(3 * (count - 1 - i / 3) + i % 3);
    return _mm512_load_si512(places);
}

// Compilers take the plain form of the shuffle for one that reads what was never set.
__m512i Pick(__mmask64 mask, __m512i places, __m512i from) noexcept {
    return _mm512_maskz_permutexvar_epi8(mask, places, from);
}

// The pixels that are left, fewer than 43, in one step; what lies over the middle stays for TurnRest.
void TurnShort(uint8_t *begin, uint8_t *end) noexcept {
    const int64_t count = (end - begin) / 6;
    const __m512i places = ReversedPlaces(count);
    const auto mask = static_cast<__mmask64>(_bzhi_u64(~uint64_t{0}, static_cast<unsigned>(3 * count)));
    uint8_t *const back = end - 3 * count;
    const __m512i low = _mm512_maskz_loadu_epi8(mask, begin);
    const __m512i high = _mm512_maskz_loadu_epi8(mask, back);
    _mm512_mask_storeu_epi8(begin, mask, Pick(mask, places, high));
    _mm512_mask_storeu_epi8(back, mask, Pick(mask, places, low));
    TurnRest(begin + 3 * count, back);
}

void TurnPixels(uint8_t *begin, uint8_t *end) noexcept {
    // The vector at the back begins with a byte of the pixel before; so does what it becomes at the front.
    const __m512i toBack = ReversedPlaces(21);
    const __m512i toFront = _mm512_add_epi8(toBack, _mm512_set1_epi8(1));
    for (; end - begin >= 2 * 64; begin += kStep, end -= kStep) {
        const __m512i front = _mm512_loadu_si512(begin);
        const __m512i back = _mm512_loadu_si512(end - 64);
        _mm512_mask_storeu_epi8(begin, kStepMask, Pick(kStepMask, toFront, back));
        _mm512_mask_storeu_epi8(end - kStep, kStepMask, Pick(kStepMask, toBack, front));
    }
    TurnShort(begin, end);
}

}  // namespace

extern const GeometryKernels kAvx512GeometryKernels{TurnPixels, SwapBytes, FindLandings};

}  // namespace fenlight
#endif
