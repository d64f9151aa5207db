// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "data/memory_vectors.h"

namespace fenlight {
namespace {

struct Sse4Lanes {
    using Vector = __m128i;
    using Flags = __m128i;
    static constexpr int64_t kBytes = 16;
    template <int kWidth>
    static constexpr int kBitsOf = kWidth;

    static Vector Load(const uint8_t *from) noexcept {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    }
    static void Store(uint8_t *to, Vector value) noexcept {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), value);
    }
    template <int kWidth>
    static Vector Spread(uint32_t value) noexcept {
        if constexpr (kWidth == 1) return _mm_set1_epi8(static_cast<char>(value));
        if constexpr (kWidth == 2) return _mm_set1_epi16(static_cast<short>(value));
        if constexpr (kWidth == 4) return _mm_set1_epi32(static_cast<int>(value));
    }
    template <int kWidth>
    static Flags Equal(Vector a, Vector b) noexcept {
        if constexpr (kWidth == 1) return _mm_cmpeq_epi8(a, b);
        if constexpr (kWidth == 2) return _mm_cmpeq_epi16(a, b);
        if constexpr (kWidth == 4) return _mm_cmpeq_epi32(a, b);
    }
    static uint64_t Bits(Flags flags) noexcept { return static_cast<uint32_t>(_mm_movemask_epi8(flags)); }

    static Vector Beyond(Vector a, Vector b) noexcept { return _mm_subs_epu8(a, b); }
    static Vector Distance(Vector a, Vector b) noexcept { return Beyond(a, b) | Beyond(b, a); }

    template <int kWidth>
    static Vector Widen(const uint8_t *source) noexcept {
        const __m128i narrow = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(source));
        return kWidth == 1 ? _mm_cvtepu8_epi16(narrow) : _mm_cvtepu16_epi32(narrow);
    }
    static Vector ReverseLongs(Vector value) noexcept { return _mm_shuffle_epi32(value, 0x1B); }

    template <int kWidth>
    static Vector Add(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm_add_epi16(a, b) : _mm_add_epi32(a, b);
    }
    template <int kWidth>
    static Vector Subtract(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm_sub_epi16(a, b) : _mm_sub_epi32(a, b);
    }
    template <int kWidth>
    static Vector Multiply(Vector a, Vector b) noexcept {
        return kWidth == 2 ? _mm_mullo_epi16(a, b) : _mm_mullo_epi32(a, b);
    }
    template <int kWidth>
    static Vector MultiplyHigh(Vector a, Vector b) noexcept {
        if constexpr (kWidth == 2) return _mm_mulhi_epu16(a, b);
        const Vector even = _mm_srli_epi64(_mm_mul_epu32(a, b), 32);
        return _mm_blend_epi16(even, _mm_mul_epu32(_mm_srli_epi64(a, 32), b), 0xCC);
    }
    template <int kWidth>
    static Vector ShiftRight(Vector value, int bits) noexcept {
        const __m128i count = _mm_cvtsi32_si128(bits);
        return kWidth == 2 ? _mm_srl_epi16(value, count) : _mm_srl_epi32(value, count);
    }
    static Vector ShiftBytesUp(Vector words) noexcept { return _mm_slli_epi16(words, 8); }
};

}  // namespace

constexpr MemoryKernels kMemorySse4 = MakeMemoryKernels<Sse4Lanes>();

}  // namespace fenlight
#endif
