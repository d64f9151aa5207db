// SPDX-License-Identifier: Zlib
// 64 bytes of text, for files with the suffix _avx512 only.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace fenlight {
namespace {

struct TextBlock {
    __m512i all;

    static TextBlock Load(const uint8_t *bytes) { return {_mm512_loadu_si512(bytes)}; }
    static TextBlock Fill(uint8_t byte) { return {_mm512_set1_epi8(static_cast<char>(byte))}; }
    void Store(uint8_t *bytes) const { _mm512_storeu_si512(bytes, all); }
    // Bit n: byte n is the same in both.
    uint64_t Matches(const TextBlock &other) const { return _mm512_cmpeq_epi8_mask(all, other.all); }
};

}  // namespace
}  // namespace fenlight
