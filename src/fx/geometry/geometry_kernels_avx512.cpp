// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/geometry_loops.h"

namespace fenlight {
namespace {

// 21 pixels; the last byte of a vector belongs to the next 21.
constexpr int64_t kStep = 63;
constexpr int kGroupBytes = 192;
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

// What comes out of 64 pixels: the three vectors in reversed order, and in each the pixels. Two pixels lie
// across vectors, so the middle one has bytes of all three.
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

// Places of the three vectors of the outcome, counted from the vector that most of each comes from or, for
// the outer ones, from the one before.
struct GroupPlaces {
    GroupPlaces() noexcept {
        alignas(64) uint8_t places[kGroupBytes];
        for (int i = 0; i < kGroupBytes; ++i) places[i] = static_cast<uint8_t>(189 - i / 3 * 3 + i % 3);
        first = _mm512_sub_epi8(_mm512_load_si512(places), _mm512_set1_epi8(64));
        second = _mm512_load_si512(places + 64);
        third = _mm512_load_si512(places + 128);
    }
    __m512i first, second, third;
};

// Two-vector shuffles look at seven bits of a place, one-vector ones at six. Only the second byte of the
// middle vector, place 128, comes from the third.
Pixels Reversed(const Pixels &p, const GroupPlaces &places) noexcept {
    const __m512i middle = _mm512_permutex2var_epi8(p.first, places.second, p.second);
    return {_mm512_permutex2var_epi8(p.second, places.first, p.third),
            _mm512_mask_permutexvar_epi8(middle, 2, places.second, p.third),
            _mm512_permutex2var_epi8(p.first, places.third, p.second)};
}

void TurnPixels(uint8_t *begin, uint8_t *end) noexcept {
    const GroupPlaces groupPlaces;
    for (; end - begin >= 2 * kGroupBytes; begin += kGroupBytes, end -= kGroupBytes) {
        const Pixels front = Load(begin), back = Load(end - kGroupBytes);
        Store(begin, Reversed(back, groupPlaces));
        Store(end - kGroupBytes, Reversed(front, groupPlaces));
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

void WidenSixteens(const uint8_t *pixels, uint8_t *words, int64_t count) noexcept {
    alignas(64) uint8_t places[64];
    for (int i = 0; i < 64; ++i) places[i] = static_cast<uint8_t>(i / 4 * 3 + i % 4);
    const __m512i widened = _mm512_load_si512(places);
    for (int64_t i = 0; i < count; i += 16) {
        const auto bits = static_cast<unsigned>(count - i < 16 ? count - i : 16);
        const __mmask64 colours = _bzhi_u64(0x7777777777777777, 4 * bits);
        const __m512i packed = _mm512_maskz_loadu_epi8(_bzhi_u64(~uint64_t{0}, 3 * bits), pixels + 3 * i);
        _mm512_mask_storeu_epi32(words + 4 * i, static_cast<__mmask16>(_bzhi_u32(0xFFFF, bits)),
                                 Pick(colours, widened, packed));
    }
}

}  // namespace

extern const GeometryKernels kAvx512GeometryKernels{TurnPixels, SwapBytes, FindLandings, WidenSixteens};

}  // namespace fenlight
#endif
