// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "fx/colour_planes_avx512.h"
#include "fx/filters/byte_loops.h"

namespace fenlight {
namespace {

using Vector = __m512i;
using Matches = __mmask64;

// What a pixel has in all three colours comes to the three bytes of each pixel: the pixel of byte i of the
// first, second or third vector that is stored.
constexpr PlaneBytes SpreadOrder(size_t third) {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = static_cast<uint8_t>((64 * third + i) / 3);
    return order;
}

alignas(64) constexpr PlaneBytes kSpreadOrders[3] = {SpreadOrder(0), SpreadOrder(1), SpreadOrder(2)};

void StoreGrey(uint8_t *pixels, Vector grey) {
    for (int third = 0; third < 3; ++third)
        _mm512_storeu_si512(pixels + 64 * third, Reorder(grey, kSpreadOrders[third]));
}

struct Sums {
    __m512i low, high;  // 16 bits each, in the order that unpacking leaves and packing undoes
};

Sums SumsOf(const ColourPlanes &planes) {
    const __m512i ones = _mm512_set1_epi8(1), zero = _mm512_setzero_si512();
    const __m512i low = _mm512_maddubs_epi16(_mm512_unpacklo_epi8(planes.blue, planes.green), ones);
    const __m512i high = _mm512_maddubs_epi16(_mm512_unpackhi_epi8(planes.blue, planes.green), ones);
    return {_mm512_add_epi16(low, _mm512_unpacklo_epi8(planes.red, zero)),
            _mm512_add_epi16(high, _mm512_unpackhi_epi8(planes.red, zero))};
}

Vector GreyOf(const ColourPlanes &planes) {
    const Sums sums = SumsOf(planes);
    const __m512i third = _mm512_set1_epi16(21846);  // of 65536; exact for sums below 32768
    return _mm512_packus_epi16(_mm512_mulhi_epu16(sums.low, third), _mm512_mulhi_epu16(sums.high, third));
}

// The sign of limit - 1 - sum, in all bits.
Vector IsLight(const ColourPlanes &planes, int32_t limit) {
    const Sums sums = SumsOf(planes);
    const __m512i dark = _mm512_set1_epi16(static_cast<int16_t>(limit - 1));
    return _mm512_packs_epi16(_mm512_srai_epi16(_mm512_sub_epi16(dark, sums.low), 15),
                              _mm512_srai_epi16(_mm512_sub_epi16(dark, sums.high), 15));
}

Vector PlaneOf(uint8_t byte) { return _mm512_set1_epi8(static_cast<char>(byte)); }

Matches Match(const ColourPlanes &planes, const ColourPlanes &other) {
    return _mm512_cmpeq_epi8_mask(planes.blue, other.blue) &
           _mm512_cmpeq_epi8_mask(planes.green, other.green) & _mm512_cmpeq_epi8_mask(planes.red, other.red);
}

bool Any(Matches matches) { return matches != 0; }

Vector Choose(Matches matches, Vector chosen, Vector otherwise) {
    return _mm512_mask_blend_epi8(matches, otherwise, chosen);
}

constexpr PlaneBytes BackwardsOrder() {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = static_cast<uint8_t>(63 - i);
    return order;
}

alignas(64) constexpr PlaneBytes kBackwards = BackwardsOrder();

void StoreBlackReversed(uint8_t *map, const ColourPlanes &planes) {
    const __m512i any = _mm512_or_si512(_mm512_or_si512(planes.blue, planes.green), planes.red);
    const __m512i black = _mm512_maskz_mov_epi8(_mm512_testn_epi8_mask(any, any), _mm512_set1_epi8(1));
    _mm512_storeu_si512(map, Reorder(black, kBackwards));
}

}  // namespace
}  // namespace fenlight

#include "fx/filters/plane_loops.h"

namespace fenlight {

extern const FilterKernels kAvx512FilterKernels{DarkenBytes, LightenBytes,  SharpenBytes, ApproachBytes,
                                                GreyPixels,  SplitPixels,   ShiftPixels,  ReplacePixels,
                                                FillPixels,  MapBlackPixels};

}  // namespace fenlight
#endif
