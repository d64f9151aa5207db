// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/array_blit.h"

namespace fenlight {
namespace {

// 21 pixels; the last byte of a vector belongs to the next 21.
constexpr int64_t kPixelBytes = 63;
// Masked stores alone do not make the processor fetch what lies ahead; beyond the caches that costs half
// again.
constexpr int64_t kAhead = 1024;
constexpr uint64_t kFirstOfThree = 0x1249249249249249;  // bits 0, 3, 6 to 60

__mmask64 FirstBytes(int64_t count) noexcept {
    return _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count < 64 ? count : 64));
}

// The bytes of the pixels that differ from the key, from the bytes that do.
__mmask64 WholePixels(__mmask64 differing) noexcept {
    const uint64_t pixels = (differing | differing >> 1 | differing >> 2) & kFirstOfThree;
    return pixels * 7;
}

__m512i KeyPattern(uint32_t key) noexcept {
    alignas(64) uint8_t bytes[64];
    for (int i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(key >> (i % 3 * 8));
    return _mm512_load_si512(bytes);
}

void KeyRows(const ArrayBlock &block, uint32_t key) noexcept {
    const __m512i pattern = KeyPattern(key);
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + 64 <= block.rowBytes; i += kPixelBytes) {
            const __m512i pixels = _mm512_loadu_si512(source + i);
            const __mmask64 changed = WholePixels(_mm512_cmpneq_epi8_mask(pixels, pattern));
            _mm_prefetch(reinterpret_cast<const char *>(target + i + kAhead), _MM_HINT_T0);
            _mm512_mask_storeu_epi8(target + i, changed, pixels);
        }
        const __mmask64 inside = FirstBytes(block.rowBytes - i);
        const __m512i pixels = _mm512_maskz_loadu_epi8(inside, source + i);
        const __mmask64 changed = WholePixels(_mm512_mask_cmpneq_epi8_mask(inside, pixels, pattern));
        _mm512_mask_storeu_epi8(target + i, changed, pixels);
    }
}

// With 128 taken off both colours the sum of the two products fits 16 bits with a sign, and 128 * 255 brings
// it back. The quotient by 255 is exact for every such sum: x * 0x8081 >> 23.
__m512i DivideSums(__m512i sums) noexcept {
    const __m512i positive = _mm512_add_epi16(sums, _mm512_set1_epi16(128 * 255));
    return _mm512_srli_epi16(_mm512_mulhi_epu16(positive, _mm512_set1_epi16(static_cast<short>(0x8081))), 7);
}

__m512i Mix(__m512i target, __m512i source, __m512i mask) noexcept {
    const __m512i t = _mm512_xor_si512(target, _mm512_set1_epi8(-128));
    const __m512i s = _mm512_xor_si512(source, _mm512_set1_epi8(-128));
    const __m512i rest = _mm512_xor_si512(mask, _mm512_set1_epi8(-1));
    const __m512i low = _mm512_maddubs_epi16(_mm512_unpacklo_epi8(mask, rest), _mm512_unpacklo_epi8(t, s));
    const __m512i high = _mm512_maddubs_epi16(_mm512_unpackhi_epi8(mask, rest), _mm512_unpackhi_epi8(t, s));
    return _mm512_packus_epi16(DivideSums(low), DivideSums(high));
}

void MixRows(const ArrayBlock &block) noexcept {
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        const uint8_t *mask = block.mask + row * block.maskPitch;
        int64_t i = 0;
        for (; i + 64 <= block.rowBytes; i += 64) {
            const __m512i mixed = Mix(_mm512_loadu_si512(target + i), _mm512_loadu_si512(source + i),
                                      _mm512_loadu_si512(mask + i));
            _mm512_storeu_si512(target + i, mixed);
        }
        if (i == block.rowBytes) continue;
        const __mmask64 inside = FirstBytes(block.rowBytes - i);
        const __m512i mixed =
            Mix(_mm512_maskz_loadu_epi8(inside, target + i), _mm512_maskz_loadu_epi8(inside, source + i),
                _mm512_maskz_loadu_epi8(inside, mask + i));
        _mm512_mask_storeu_epi8(target + i, inside, mixed);
    }
}

}  // namespace

extern const ArrayKernels kAvx512ArrayKernels{KeyRows, MixRows};

}  // namespace fenlight
#endif
