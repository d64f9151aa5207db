// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "fx/colour_planes_avx2.h"
#include "fx/filters/byte_loops.h"

namespace fenlight {
namespace {

using Vector = __m256i;
using Matches = __m256i;

// What a pixel has in all three colours comes to the three bytes of each pixel: the pixel of byte i of the
// first, second or third half that is stored.
constexpr PlaneBytes SpreadOrder(size_t third) {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = static_cast<uint8_t>((16 * third + i % 16) / 3);
    return order;
}

alignas(32) constexpr PlaneBytes kSpreadOrders[3] = {SpreadOrder(0), SpreadOrder(1), SpreadOrder(2)};

void StoreGrey(uint8_t *pixels, Vector grey) {
    for (int third = 0; third < 3; ++third)
        StoreHalves(pixels + 16 * third, pixels + 48 + 16 * third,
                    _mm256_shuffle_epi8(grey, VectorOf(kSpreadOrders[third])));
}

struct Sums {
    __m256i low, high;  // 16 bits each, in the order that unpacking leaves and packing undoes
};

Sums SumsOf(const ColourPlanes &planes) {
    const __m256i ones = _mm256_set1_epi8(1), zero = _mm256_setzero_si256();
    const __m256i low = _mm256_maddubs_epi16(_mm256_unpacklo_epi8(planes.blue, planes.green), ones);
    const __m256i high = _mm256_maddubs_epi16(_mm256_unpackhi_epi8(planes.blue, planes.green), ones);
    return {_mm256_add_epi16(low, _mm256_unpacklo_epi8(planes.red, zero)),
            _mm256_add_epi16(high, _mm256_unpackhi_epi8(planes.red, zero))};
}

Vector GreyOf(const ColourPlanes &planes) {
    const Sums sums = SumsOf(planes);
    const __m256i third = _mm256_set1_epi16(21846);  // of 65536; exact for sums below 32768
    return _mm256_packus_epi16(_mm256_mulhi_epu16(sums.low, third), _mm256_mulhi_epu16(sums.high, third));
}

Vector IsLight(const ColourPlanes &planes, int32_t limit) {
    const Sums sums = SumsOf(planes);
    const __m256i dark = _mm256_set1_epi16(static_cast<int16_t>(limit - 1));
    return _mm256_packs_epi16(_mm256_cmpgt_epi16(sums.low, dark), _mm256_cmpgt_epi16(sums.high, dark));
}

Vector PlaneOf(uint8_t byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }

Matches Match(const ColourPlanes &planes, const ColourPlanes &other) {
    return _mm256_and_si256(_mm256_cmpeq_epi8(planes.blue, other.blue),
                            _mm256_and_si256(_mm256_cmpeq_epi8(planes.green, other.green),
                                             _mm256_cmpeq_epi8(planes.red, other.red)));
}

bool Any(Matches matches) { return _mm256_testz_si256(matches, matches) == 0; }

Vector Choose(Matches matches, Vector chosen, Vector otherwise) {
    return _mm256_blendv_epi8(otherwise, chosen, matches);
}

void StoreBlackReversed(uint8_t *map, const ColourPlanes &planes) {
    const __m256i any = _mm256_or_si256(_mm256_or_si256(planes.blue, planes.green), planes.red);
    const __m256i black =
        _mm256_and_si256(_mm256_cmpeq_epi8(any, _mm256_setzero_si256()), _mm256_set1_epi8(1));
    const __m256i backwards =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    const __m256i halves = _mm256_shuffle_epi8(black, backwards);
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(map), _mm256_permute4x64_epi64(halves, 0x4E));
}

}  // namespace
}  // namespace fenlight

#include "fx/filters/plane_loops.h"

namespace fenlight {

extern const FilterKernels kAvx2FilterKernels{DarkenBytes, LightenBytes,  SharpenBytes, ApproachBytes,
                                              GreyPixels,  SplitPixels,   ShiftPixels,  ReplacePixels,
                                              FillPixels,  MapBlackPixels};

}  // namespace fenlight
#endif
