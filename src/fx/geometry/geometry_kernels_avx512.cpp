// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include <array>

#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/geometry_loops.h"

namespace fenlight {
namespace {

// 21 pixels; the last byte of a vector belongs to the next 21.
constexpr int64_t kStep = 63;
constexpr __mmask64 kStepMask = ~__mmask64{0} >> 1;
constexpr int64_t kGroupBytes = 192;

using Places = std::array<uint8_t, kGroupBytes>;

// Where the bytes of 64 pixels in reversed order come from.
constexpr Places MakeReversed() {
    Places places{};
    for (size_t i = 0; i < places.size(); ++i) places[i] = static_cast<uint8_t>(189 - i / 3 * 3 + i % 3);
    return places;
}

alignas(64) constexpr Places kReversed = MakeReversed();

// The same for `count` pixels, up to 21.
__m512i ReversedPlaces(int64_t count) noexcept {
    return _mm512_sub_epi8(_mm512_load_si512(kReversed.data()),
                           _mm512_set1_epi8(static_cast<char>(kGroupBytes - 3 * count)));
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

// 64 pixels, or where their bytes come from.
struct Pixels {
    __m512i first, second, third;
};

Pixels Load(const uint8_t *bytes) noexcept {
    return {_mm512_loadu_si512(bytes), _mm512_loadu_si512(bytes + 64), _mm512_loadu_si512(bytes + 128)};
}

void Store(uint8_t *bytes, const Pixels &pixels) noexcept {
    _mm512_storeu_si512(bytes, pixels.first);
    _mm512_storeu_si512(bytes + 64, pixels.second);
    _mm512_storeu_si512(bytes + 128, pixels.third);
}

// A pixel lies across each two vectors, so the outer ones of the outcome come from two vectors and the middle
// one from all three: its second byte has place 128, the first of the third vector. Shuffles of two vectors
// look at the low seven bits of a place, those of one vector at six.
Pixels Reversed(const Pixels &p, const Pixels &places) noexcept {
    const __m512i middle = _mm512_permutex2var_epi8(p.first, places.second, p.second);
    return {_mm512_permutex2var_epi8(p.third, places.first, p.second),
            _mm512_mask_permutexvar_epi8(middle, 2, places.second, p.third),
            _mm512_permutex2var_epi8(p.first, places.third, p.second)};
}

void TurnPixels(uint8_t *begin, uint8_t *end) noexcept {
    const Pixels places = Load(kReversed.data());
    for (; end - begin >= 2 * kGroupBytes; begin += kGroupBytes, end -= kGroupBytes) {
        const Pixels front = Load(begin), back = Load(end - kGroupBytes);
        Store(begin, Reversed(back, places));
        Store(end - kGroupBytes, Reversed(front, places));
    }
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
