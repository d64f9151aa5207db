// SPDX-License-Identifier: Zlib
// 64 bytes of text, for files with the suffix _avx2 only.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace fenlight {
namespace {

struct TextBlock {
    __m256i low;
    __m256i high;

    static TextBlock Load(const uint8_t *bytes) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes)),
                _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes + 32))};
    }
    static TextBlock Fill(uint8_t byte) {
        const __m256i all = _mm256_set1_epi8(static_cast<char>(byte));
        return {all, all};
    }
    void Store(uint8_t *bytes) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes), low);
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes + 32), high);
    }
    // Bit n: byte n is the same in both.
    uint64_t Matches(const TextBlock &other) const {
        const auto lowBits = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, other.low)));
        const auto highBits =
            static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, other.high)));
        return lowBits | uint64_t{highBits} << 32;
    }
};

}  // namespace
}  // namespace fenlight
