// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/array_blit.h"

namespace fenlight {
namespace {

// 32 pixels, 16 in the low halves of three vectors and 16 in the high ones, so that neighbouring bytes are
// neighbours within a half. Stores do not overlap: a load from bytes of two stores would have to wait.
constexpr int64_t kGroupBytes = 96;
static_assert(kGroupBytes <= kArrayStep);

struct Group {
    __m256i first, second, third;
};

__m256i LoadPart(const uint8_t *bytes) noexcept {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + kGroupBytes / 2));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

void StorePart(uint8_t *bytes, __m256i part) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), _mm256_castsi256_si128(part));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + kGroupBytes / 2), _mm256_extracti128_si256(part, 1));
}

Group LoadGroup(const uint8_t *bytes) noexcept {
    return {LoadPart(bytes), LoadPart(bytes + 16), LoadPart(bytes + 32)};
}

__m256i BothHalves(__m128i half) noexcept { return _mm256_broadcastsi128_si256(half); }

// Where the pixels of a half begin: five whole ones lie before the second vector's first byte, ten before the
// third's.
__m256i FirstStarts() noexcept {
    return BothHalves(_mm_setr_epi8(0, 0, 0, 3, 3, 3, 6, 6, 6, 9, 9, 9, 12, 12, 12, 15));
}
__m256i SecondStarts() noexcept {
    return BothHalves(_mm_setr_epi8(0, 0, 3, 3, 3, 6, 6, 6, 9, 9, 9, 12, 12, 12, 15, 15));
}
__m256i ThirdStarts() noexcept {
    return BothHalves(_mm_setr_epi8(0, 3, 3, 3, 6, 6, 6, 9, 9, 9, 12, 12, 12, 15, 15, 15));
}

// All ones in the bytes of pixels that have the key colour: a pixel's first byte gathers the two behind it,
// and gives the outcome to all three.
Group KeyPixels(const Group &pixels, const Group &key) noexcept {
    const __m256i first = _mm256_cmpeq_epi8(pixels.first, key.first);
    const __m256i second = _mm256_cmpeq_epi8(pixels.second, key.second);
    const __m256i third = _mm256_cmpeq_epi8(pixels.third, key.third);
    const __m256i firstPairs =
        _mm256_and_si256(_mm256_alignr_epi8(second, first, 1), _mm256_alignr_epi8(second, first, 2));
    const __m256i secondPairs =
        _mm256_and_si256(_mm256_alignr_epi8(third, second, 1), _mm256_alignr_epi8(third, second, 2));
    const __m256i thirdPairs = _mm256_and_si256(_mm256_srli_si256(third, 1), _mm256_srli_si256(third, 2));
    const __m256i a = _mm256_and_si256(first, firstPairs);
    const __m256i b = _mm256_and_si256(second, secondPairs);
    const __m256i c = _mm256_and_si256(third, thirdPairs);
    return {_mm256_shuffle_epi8(a, FirstStarts()),
            _mm256_shuffle_epi8(_mm256_alignr_epi8(b, a, 15), SecondStarts()),
            _mm256_shuffle_epi8(_mm256_alignr_epi8(c, b, 14), ThirdStarts())};
}

void KeyGroup(uint8_t *target, const uint8_t *source, const Group &key) noexcept {
    const Group pixels = LoadGroup(source);
    const Group old = LoadGroup(target);
    const Group isKey = KeyPixels(pixels, key);
    StorePart(target, _mm256_blendv_epi8(pixels.first, old.first, isKey.first));
    StorePart(target + 16, _mm256_blendv_epi8(pixels.second, old.second, isKey.second));
    StorePart(target + 32, _mm256_blendv_epi8(pixels.third, old.third, isKey.third));
}

Group KeyGroupOf(uint32_t key) noexcept {
    uint8_t bytes[kGroupBytes];
    for (int64_t i = 0; i < kGroupBytes; ++i) bytes[i] = static_cast<uint8_t>(key >> (i % 3 * 8));
    return LoadGroup(bytes);
}

void KeyRows(const ArrayBlock &block, uint32_t key) noexcept {
    const Group pattern = KeyGroupOf(key);
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + kGroupBytes <= block.rowBytes; i += kGroupBytes) KeyGroup(target + i, source + i, pattern);
        const ArrayBlock rest{target + i, 0, source + i, 0, nullptr, 0, block.rowBytes - i, 1};
        kPlainArrayKernels.keyRows(rest, key);
    }
}

__m256i Load(const uint8_t *bytes) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
}

// With 128 taken off both colours the sum of the two products fits 16 bits with a sign, and 128 * 255 brings
// it back. The quotient by 255 is exact for every such sum: x * 0x8081 >> 23.
__m256i DivideSums(__m256i sums) noexcept {
    const __m256i positive = _mm256_add_epi16(sums, _mm256_set1_epi16(128 * 255));
    return _mm256_srli_epi16(_mm256_mulhi_epu16(positive, _mm256_set1_epi16(static_cast<short>(0x8081))), 7);
}

__m256i Mix(__m256i target, __m256i source, __m256i mask) noexcept {
    const __m256i t = _mm256_xor_si256(target, _mm256_set1_epi8(-128));
    const __m256i s = _mm256_xor_si256(source, _mm256_set1_epi8(-128));
    const __m256i rest = _mm256_xor_si256(mask, _mm256_set1_epi8(-1));
    const __m256i low = _mm256_maddubs_epi16(_mm256_unpacklo_epi8(mask, rest), _mm256_unpacklo_epi8(t, s));
    const __m256i high = _mm256_maddubs_epi16(_mm256_unpackhi_epi8(mask, rest), _mm256_unpackhi_epi8(t, s));
    return _mm256_packus_epi16(DivideSums(low), DivideSums(high));
}

void MixRow(uint8_t *target, const uint8_t *source, const uint8_t *mask, int64_t rowBytes) noexcept {
    int64_t i = 0;
    for (; i + 32 <= rowBytes; i += 32) {
        const __m256i mixed = Mix(Load(target + i), Load(source + i), Load(mask + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(target + i), mixed);
    }
    const ArrayBlock rest{target + i, 0, source + i, 0, mask + i, 0, rowBytes - i, 1};
    kPlainArrayKernels.mixRows(rest);
}

void MixRows(const ArrayBlock &block) noexcept {
    for (int64_t row = 0; row < block.rows; ++row)
        MixRow(block.target + row * block.targetPitch, block.source + row * block.sourcePitch,
               block.mask + row * block.maskPitch, block.rowBytes);
}

}  // namespace

extern const ArrayKernels kAvx2ArrayKernels{KeyRows, MixRows};

}  // namespace fenlight
#endif
