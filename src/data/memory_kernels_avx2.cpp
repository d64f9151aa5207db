// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "data/memory_vectors.h"

namespace fenlight {
namespace {

struct Avx2Lanes {
    using Vector = __m256i;
    using Flags = __m256i;
    static constexpr int64_t kBytes = 32;
    template <int kWidth>
    static constexpr int kBitsOf = kWidth;

    static Vector Load(const uint8_t *from) noexcept {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(from));
    }
    static void Store(uint8_t *to, Vector value) noexcept {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), value);
    }
    template <int kWidth>
    static Vector Spread(uint32_t value) noexcept {
        if constexpr (kWidth == 1) return _mm256_set1_epi8(static_cast<char>(value));
        if constexpr (kWidth == 2) return _mm256_set1_epi16(static_cast<short>(value));
        if constexpr (kWidth == 4) return _mm256_set1_epi32(static_cast<int>(value));
    }
    template <int kWidth>
    static Flags Equal(Vector a, Vector b) noexcept {
        if constexpr (kWidth == 1) return _mm256_cmpeq_epi8(a, b);
        if constexpr (kWidth == 2) return _mm256_cmpeq_epi16(a, b);
        if constexpr (kWidth == 4) return _mm256_cmpeq_epi32(a, b);
    }
    static uint64_t Bits(Flags flags) noexcept { return static_cast<uint32_t>(_mm256_movemask_epi8(flags)); }

    static Vector Beyond(Vector a, Vector b) noexcept { return _mm256_subs_epu8(a, b); }
    static Vector Distance(Vector a, Vector b) noexcept { return Beyond(a, b) | Beyond(b, a); }

    template <int kWidth>
    static Vector Widen(const uint8_t *source) noexcept {
        const __m128i narrow = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source));
        return kWidth == 1 ? _mm256_cvtepu8_epi16(narrow) : _mm256_cvtepu16_epi32(narrow);
    }
    static Vector ReverseLongs(Vector value) noexcept {
        return _mm256_permutevar8x32_epi32(value, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
    }

    template <int kWidth>
    static Vector Add(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm256_add_epi16(a, b) : _mm256_add_epi32(a, b);
    }
    template <int kWidth>
    static Vector Subtract(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm256_sub_epi16(a, b) : _mm256_sub_epi32(a, b);
    }
    template <int kWidth>
    static Vector Multiply(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm256_mullo_epi16(a, b) : _mm256_mullo_epi32(a, b);
    }
    template <int kWidth>
    static Vector MultiplyHigh(Vector a, Vector b) noexcept {
        if constexpr (kWidth == 2) return _mm256_mulhi_epu16(a, b);
        const Vector even = _mm256_srli_epi64(_mm256_mul_epu32(a, b), 32);
        return _mm256_blend_epi32(even, _mm256_mul_epu32(_mm256_srli_epi64(a, 32), b), 0xAA);
    }
    template <int kWidth>
    static Vector ShiftRight(Vector value, int bits) noexcept {
        const __m128i count = _mm_cvtsi32_si128(bits);
        return kWidth == 2 ? _mm256_srl_epi16(value, count) : _mm256_srl_epi32(value, count);
    }
    static Vector ShiftBytesUp(Vector words) noexcept { return _mm256_slli_epi16(words, 8); }
};

}  // namespace

constexpr MemoryKernels kMemoryAvx2 = MakeMemoryKernels<Avx2Lanes>();

}  // namespace fenlight
#endif
