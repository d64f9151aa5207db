// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
// GCC takes the intrinsics' undefined operands, which no result depends on, for forgotten initialisations.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

#include "data/memory_vectors.h"

namespace fenlight {
namespace {

struct Avx512Lanes {
    using Vector = __m512i;
    using Flags = __mmask64;
    static constexpr int64_t kBytes = 64;
    template <int kWidth>
    static constexpr int kBitsOf = 1;

    static Vector Load(const uint8_t *from) noexcept {
        return _mm512_loadu_si512(reinterpret_cast<const __m512i *>(from));
    }
    // Reads so many bytes, up to kBytes of them, and gives 0 for the others.
    static Vector LoadFirst(const uint8_t *from, int64_t count) noexcept {
        return _mm512_maskz_loadu_epi8(count < kBytes ? (1ULL << count) - 1 : ~0ULL, from);
    }
    static void Store(uint8_t *to, Vector value) noexcept {
        _mm512_storeu_si512(reinterpret_cast<__m512i *>(to), value);
    }
    template <int kWidth>
    static Vector Spread(uint32_t value) noexcept {
        if constexpr (kWidth == 1) return _mm512_set1_epi8(static_cast<char>(value));
        if constexpr (kWidth == 2) return _mm512_set1_epi16(static_cast<short>(value));
        if constexpr (kWidth == 4) return _mm512_set1_epi32(static_cast<int>(value));
    }
    template <int kWidth>
    static Flags Equal(Vector a, Vector b) noexcept {
        if constexpr (kWidth == 1) return _mm512_cmpeq_epi8_mask(a, b);
        if constexpr (kWidth == 2) return _mm512_cmpeq_epi16_mask(a, b);
        if constexpr (kWidth == 4) return _mm512_cmpeq_epi32_mask(a, b);
    }
    static uint64_t Bits(Flags flags) noexcept { return flags; }

    static Vector Beyond(Vector a, Vector b) noexcept { return _mm512_subs_epu8(a, b); }
    static Vector Distance(Vector a, Vector b) noexcept { return Beyond(a, b) | Beyond(b, a); }

    template <int kWidth>
    static Vector Widen(const uint8_t *source) noexcept {
        const __m256i narrow = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source));
        return kWidth == 1 ? _mm512_cvtepu8_epi16(narrow) : _mm512_cvtepu16_epi32(narrow);
    }
    static Vector ReverseLongs(Vector value) noexcept {
        return _mm512_permutexvar_epi32(
            _mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0), value);
    }

    template <int kWidth>
    static Vector Add(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm512_add_epi16(a, b) : _mm512_add_epi32(a, b);
    }
    template <int kWidth>
    static Vector Subtract(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm512_sub_epi16(a, b) : _mm512_sub_epi32(a, b);
    }
    template <int kWidth>
    static Vector Multiply(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm512_mullo_epi16(a, b) : _mm512_mullo_epi32(a, b);
    }
    template <int kWidth>
    static Vector MultiplyHigh(Vector a, Vector b) noexcept {
        if constexpr (kWidth == 2) return _mm512_mulhi_epu16(a, b);
        const Vector even = _mm512_srli_epi64(_mm512_mul_epu32(a, b), 32);
        return _mm512_mask_blend_epi32(0xAAAA, even, _mm512_mul_epu32(_mm512_srli_epi64(a, 32), b));
    }
    template <int kWidth>
    static Vector ShiftRight(Vector value, int bits) noexcept {
        const __m128i count = _mm_cvtsi32_si128(bits);
        return kWidth == 2 ? _mm512_srl_epi16(value, count) : _mm512_srl_epi32(value, count);
    }
    // WordLeaps::Hash for the words at eight places in a row; 16 bytes are read.
    static void HashWords(uint64_t *hashes, const uint8_t *from, uint64_t factor, int shift) noexcept {
        constexpr uint64_t kFirst = 0x0706050403020100U, kNext = 0x0101010101010101U;
        const __m512i places =
            _mm512_setr_epi64(kFirst, kFirst + kNext, kFirst + 2 * kNext, kFirst + 3 * kNext,
                              kFirst + 4 * kNext, kFirst + 5 * kNext, kFirst + 6 * kNext, kFirst + 7 * kNext);
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
        const __m512i words = _mm512_shuffle_epi8(_mm512_broadcast_i32x4(bytes), places);
        const __m512i products = _mm512_mullo_epi64(words, _mm512_set1_epi64(static_cast<int64_t>(factor)));
        _mm512_storeu_si512(hashes, _mm512_srl_epi64(products, _mm_cvtsi32_si128(shift)));
    }
    static Vector ShiftBytesUp(Vector words) noexcept { return _mm512_slli_epi16(words, 8); }
};

}  // namespace

constexpr MemoryKernels kMemoryAvx512 = MakeMemoryKernels<Avx512Lanes>();

}  // namespace fenlight
#endif
