// SPDX-License-Identifier: Zlib
#include <immintrin.h>

#include "fx/array_blit.h"

namespace fenlight {
namespace {

// Five pixels in each half; the sixteenth byte belongs to the next five and is never changed.
constexpr int64_t kPixelBytes = 30;

__m256i LoadTens(const uint8_t *bytes) noexcept {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + kPixelBytes / 2));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

// The low half first: its last byte is the first of the high half.
void StoreTens(uint8_t *bytes, __m256i pixels) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), _mm256_castsi256_si128(pixels));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + kPixelBytes / 2),
                     _mm256_extracti128_si256(pixels, 1));
}

__m256i BothHalves(__m128i half) noexcept { return _mm256_broadcastsi128_si256(half); }

struct KeyPattern {
    __m256i key, next, afterNext, spare;

    // Each byte meets the two others of its pixel by a turn within the pixel.
    explicit KeyPattern(uint32_t colour) noexcept
        : next(BothHalves(_mm_setr_epi8(1, 2, 0, 4, 5, 3, 7, 8, 6, 10, 11, 9, 13, 14, 12, 15))),
          afterNext(BothHalves(_mm_setr_epi8(2, 0, 1, 5, 3, 4, 8, 6, 7, 11, 9, 10, 14, 12, 13, 15))),
          spare(BothHalves(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1))) {
        const __m128i words = _mm_set1_epi32(static_cast<int>(colour));
        key = BothHalves(
            _mm_shuffle_epi8(words, _mm_setr_epi8(0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0)));
    }

    // All ones in the bytes that stay as they are.
    __m256i Kept(__m256i pixels) const noexcept {
        const __m256i same = _mm256_cmpeq_epi8(pixels, key);
        const __m256i others =
            _mm256_and_si256(_mm256_shuffle_epi8(same, next), _mm256_shuffle_epi8(same, afterNext));
        return _mm256_or_si256(_mm256_and_si256(same, others), spare);
    }
};

void KeyRow(uint8_t *target, const uint8_t *source, int64_t rowBytes, const KeyPattern &pattern,
            uint32_t key) noexcept {
    int64_t i = 0;
    for (; i + kPixelBytes < rowBytes; i += kPixelBytes) {
        const __m256i pixels = LoadTens(source + i);
        StoreTens(target + i, _mm256_blendv_epi8(pixels, LoadTens(target + i), pattern.Kept(pixels)));
    }
    const ArrayBlock rest{target + i, 0, source + i, 0, nullptr, 0, rowBytes - i, 1};
    kPlainArrayKernels.keyRows(rest, key);
}

void KeyRows(const ArrayBlock &block, uint32_t key) noexcept {
    const KeyPattern pattern(key);
    for (int64_t row = 0; row < block.rows; ++row)
        KeyRow(block.target + row * block.targetPitch, block.source + row * block.sourcePitch, block.rowBytes,
               pattern, key);
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
