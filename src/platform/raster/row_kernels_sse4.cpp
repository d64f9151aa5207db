// SPDX-License-Identifier: Zlib
// 4 pixels at a time; what is left of a row goes pixel by pixel.
#if defined(__x86_64__)
#include "platform/raster/row_kernels_sse4.h"

#include <immintrin.h>

#include <cstring>

namespace fenlight::platform {
namespace {

constexpr uint32_t kColours = 0x00FFFFFF;

__m128i Load(const uint8_t *bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)); }
void Store(uint8_t *bytes, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), value); }

struct Source32 {
    static constexpr int kBytes = 4;
    static constexpr int kSpare = 0;
    static __m128i Load4(const uint8_t *source) { return Load(source); }
    static uint32_t Load1(const uint8_t *source) {
        uint32_t word;
        std::memcpy(&word, source, sizeof word);
        return word;
    }
};

// A load of 16 bytes ends 4 bytes behind its 4 pixels.
struct Source24 {
    static constexpr int kBytes = 3;
    static constexpr int kSpare = 2;
    static __m128i Load4(const uint8_t *source) {
        const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
        return _mm_shuffle_epi8(Load(source), spread);
    }
    static uint32_t Load1(const uint8_t *source) {
        return source[0] | static_cast<uint32_t>(source[1]) << 8 | static_cast<uint32_t>(source[2]) << 16;
    }
};

// A key that no colour has makes no pixel equal, so a plain copy needs no loop of its own.
template <typename Source>
void KeyRows(const RowBlock &block, uint32_t key) {
    const __m128i keys = _mm_set1_epi32(static_cast<int>(key));
    const __m128i colourBits = _mm_set1_epi32(static_cast<int>(kColours));
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + 4 + Source::kSpare <= block.width; i += 4) {
            const __m128i words = Source::Load4(source + Source::kBytes * i);
            const __m128i isKey = _mm_cmpeq_epi32(_mm_and_si128(words, colourBits), keys);
            Store(target + 4 * i, _mm_blendv_epi8(words, Load(target + 4 * i), isKey));
        }
        for (; i < block.width; ++i) {
            const uint32_t word = Source::Load1(source + Source::kBytes * i);
            if ((word & kColours) != key) std::memcpy(target + 4 * i, &word, sizeof word);
        }
    }
}

}  // namespace

void KeyFrom32Sse4(const RowBlock &block, uint32_t key) { KeyRows<Source32>(block, key); }
void KeyFrom24Sse4(const RowBlock &block, uint32_t key) { KeyRows<Source24>(block, key); }

}  // namespace fenlight::platform
#endif
