// SPDX-License-Identifier: Zlib
// Pixels of three bytes as one vector for each colour, 32 at a time, for the _avx2 files.
//
// 48 bytes in three halves of vectors: byte j of the first half has colour j % 3, of the second (j + 1) % 3,
// of the third (j + 2) % 3. So the 16 bytes of one colour stand at 16 different j, two blends bring them into
// one half, and one shuffle into the order of the pixels. Back the same way.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace fenlight {
namespace {

inline constexpr int64_t kPlanePixels = 32;
inline constexpr int64_t kPlaneBytes = 96;

// Pixels in the order of memory.
struct ColourPlanes {
    __m256i blue, green, red;
};

using PlaneBytes = std::array<uint8_t, 32>;

// What stands at 3 * pixel + colour, modulo 16, comes to `pixel`.
constexpr PlaneBytes GatherOrder(size_t colour) {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = (3 * (i % 16) + colour) % 16;
    return order;
}

// The other way round: 11 is 1 / 3 modulo 16.
constexpr PlaneBytes ScatterOrder(size_t colour) {
    PlaneBytes order{};
    for (size_t i = 0; i < order.size(); ++i) order[i] = (11 * (i % 16 + 16 - colour)) % 16;
    return order;
}

// The bytes whose place in their half is `third` modulo 3.
constexpr PlaneBytes EveryThird(size_t third) {
    PlaneBytes mask{};
    for (size_t i = 0; i < mask.size(); ++i) mask[i] = i % 16 % 3 == third ? 0xFF : 0;
    return mask;
}

alignas(32) inline constexpr PlaneBytes kGatherOrders[3] = {GatherOrder(0), GatherOrder(1), GatherOrder(2)};
alignas(32) inline constexpr PlaneBytes kScatterOrders[3] = {ScatterOrder(0), ScatterOrder(1),
                                                             ScatterOrder(2)};
alignas(32) inline constexpr PlaneBytes kThirds[3] = {EveryThird(0), EveryThird(1), EveryThird(2)};

inline __m256i VectorOf(const PlaneBytes &bytes) {
    return _mm256_load_si256(reinterpret_cast<const __m256i *>(bytes.data()));
}

inline __m256i LoadHalves(const uint8_t *low, const uint8_t *high) {
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i *>(high),
                               reinterpret_cast<const __m128i *>(low));
}

inline void StoreHalves(uint8_t *low, uint8_t *high, __m256i bytes) {
    _mm256_storeu2_m128i(reinterpret_cast<__m128i *>(high), reinterpret_cast<__m128i *>(low), bytes);
}

// Bytes of `first` where the place is 0 modulo 3, of `second` where it is 1, of `third` where it is 2.
inline __m256i MixThirds(__m256i first, __m256i second, __m256i third) {
    return _mm256_blendv_epi8(_mm256_blendv_epi8(first, second, VectorOf(kThirds[1])), third,
                              VectorOf(kThirds[2]));
}

// Reads kPlaneBytes.
inline ColourPlanes LoadPlanes(const uint8_t *pixels) {
    const __m256i a = LoadHalves(pixels, pixels + 48);
    const __m256i b = LoadHalves(pixels + 16, pixels + 64);
    const __m256i c = LoadHalves(pixels + 32, pixels + 80);
    return {_mm256_shuffle_epi8(MixThirds(a, c, b), VectorOf(kGatherOrders[0])),
            _mm256_shuffle_epi8(MixThirds(b, a, c), VectorOf(kGatherOrders[1])),
            _mm256_shuffle_epi8(MixThirds(c, b, a), VectorOf(kGatherOrders[2]))};
}

// Writes kPlaneBytes.
inline void StorePlanes(uint8_t *pixels, const ColourPlanes &planes) {
    const __m256i blue = _mm256_shuffle_epi8(planes.blue, VectorOf(kScatterOrders[0]));
    const __m256i green = _mm256_shuffle_epi8(planes.green, VectorOf(kScatterOrders[1]));
    const __m256i red = _mm256_shuffle_epi8(planes.red, VectorOf(kScatterOrders[2]));
    StoreHalves(pixels, pixels + 48, MixThirds(blue, green, red));
    StoreHalves(pixels + 16, pixels + 64, MixThirds(green, red, blue));
    StoreHalves(pixels + 32, pixels + 80, MixThirds(red, blue, green));
}

}  // namespace
}  // namespace fenlight
