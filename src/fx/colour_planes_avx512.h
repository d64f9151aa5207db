// SPDX-License-Identifier: Zlib
// Pixels of three bytes as one vector for each colour, 64 at a time, for the _avx512 files.
//
// Byte j of the first of three vectors has colour j % 3, of the second (j + 1) % 3, of the third (j + 2) % 3.
// So the 64 bytes of one colour stand at 64 different j, two blends bring them into one vector, and one
// permutation into the order of the pixels. Back the same way.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace fenlight {
namespace {

inline constexpr int64_t kPlanePixels = 64;
inline constexpr int64_t kPlaneBytes = 192;

// Pixels in the order of memory.
struct ColourPlanes {
    __m512i blue, green, red;
};

using PlaneBytes = std::array<uint8_t, 64>;

// What stands at 3 * pixel + colour, modulo 64, comes to `pixel`.
constexpr PlaneBytes GatherOrder(size_t colour) {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = (3 * i + colour) % 64;
    return order;
}

// The other way round: 43 is 1 / 3 modulo 64.
constexpr PlaneBytes ScatterOrder(size_t colour) {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = (43 * (i + 64 - colour)) % 64;
    return order;
}

// The bytes whose place is `third` modulo 3.
constexpr uint64_t EveryThird(unsigned third) { return uint64_t{0x9249249249249249} << third; }

alignas(64) inline constexpr PlaneBytes kGatherOrders[3] = {GatherOrder(0), GatherOrder(1), GatherOrder(2)};
alignas(64) inline constexpr PlaneBytes kScatterOrders[3] = {ScatterOrder(0), ScatterOrder(1),
                                                             ScatterOrder(2)};

// Bytes of `first` where the place is 0 modulo 3, of `second` where it is 1, of `third` where it is 2.
inline __m512i MixThirds(__m512i first, __m512i second, __m512i third) {
    return _mm512_mask_blend_epi8(EveryThird(2), _mm512_mask_blend_epi8(EveryThird(1), first, second), third);
}

inline __m512i Reorder(__m512i bytes, const PlaneBytes &order) {
    return _mm512_permutexvar_epi8(_mm512_load_si512(order.data()), bytes);
}

// Reads kPlaneBytes.
inline ColourPlanes LoadPlanes(const uint8_t *pixels) {
    const __m512i a = _mm512_loadu_si512(pixels);
    const __m512i b = _mm512_loadu_si512(pixels + 64);
    const __m512i c = _mm512_loadu_si512(pixels + 128);
    return {Reorder(MixThirds(a, c, b), kGatherOrders[0]), Reorder(MixThirds(b, a, c), kGatherOrders[1]),
            Reorder(MixThirds(c, b, a), kGatherOrders[2])};
}

// Writes kPlaneBytes.
inline void StorePlanes(uint8_t *pixels, const ColourPlanes &planes) {
    const __m512i blue = Reorder(planes.blue, kScatterOrders[0]);
    const __m512i green = Reorder(planes.green, kScatterOrders[1]);
    const __m512i red = Reorder(planes.red, kScatterOrders[2]);
    _mm512_storeu_si512(pixels, MixThirds(blue, green, red));
    _mm512_storeu_si512(pixels + 64, MixThirds(green, red, blue));
    _mm512_storeu_si512(pixels + 128, MixThirds(red, blue, green));
}

}  // namespace
}  // namespace fenlight
