// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/alpha/alpha_kernels.h"
#include "fx/alpha/alpha_loops.h"

namespace fenlight {
namespace {

// Eight pixels at a time. Loads and stores of colours reach beyond their 24 bytes, so the last few pixels are
// left to the plain loops.
constexpr int64_t kPixels = 8;
constexpr int64_t kReadPixels = 10;   // 28 bytes are read
constexpr int64_t kWritePixels = 11;  // 32 bytes are written

__m256i InBothHalves(__m128i half) { return _mm256_broadcastsi128_si256(half); }

// Four bytes a pixel, red first, the last one 0.
__m256i LoadColours(const uint8_t *colours) {
    const __m256i order = InBothHalves(_mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1));
    const __m256i halves = _mm256_loadu2_m128i(reinterpret_cast<const __m128i *>(colours + 12),
                                               reinterpret_cast<const __m128i *>(colours));
    return _mm256_shuffle_epi8(halves, order);
}

// The mean of the first three bytes as the fourth, the others 0. Up to 765 a sum times 21846 is a third of it
// in the high half.
__m256i AlphaOfGreys(__m256i greys) {
    const __m256i pairs = _mm256_maddubs_epi16(greys, _mm256_set1_epi8(1));
    const __m256i thirds = _mm256_madd_epi16(pairs, _mm256_set1_epi16(21846));
    return _mm256_and_si256(_mm256_slli_epi32(thirds, 8), _mm256_set1_epi32(static_cast<int>(0xFF000000)));
}

// `order` picks twelve bytes of each half, which are written without the gap.
void StoreColours(uint8_t *colours, __m256i image, __m256i order) {
    const __m256i picked = _mm256_shuffle_epi8(image, order);
    Store(colours, _mm256_permutevar8x32_epi32(picked, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7)));
}

__m256i ColourOrder() {
    return InBothHalves(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

__m256i AlphaOrder() {
    return InBothHalves(_mm_setr_epi8(3, 3, 3, 7, 7, 7, 11, 11, 11, 15, 15, 15, -1, -1, -1, -1));
}

void Widen(uint8_t *image, const uint8_t *colours, int64_t pixels) noexcept {
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000));
    int64_t i = 0;
    for (; i + kReadPixels <= pixels; i += kPixels)
        Store(image + 4 * i, _mm256_or_si256(LoadColours(colours + 3 * i), opaque));
    kPlainAlphaKernels.widen(image + 4 * i, colours + 3 * i, pixels - i);
}

void WidenWithAlpha(uint8_t *image, const uint8_t *colours, const uint8_t *greys, int64_t pixels) noexcept {
    int64_t i = 0;
    for (; i + kReadPixels <= pixels; i += kPixels) {
        const __m256i alpha = AlphaOfGreys(LoadColours(greys + 3 * i));
        Store(image + 4 * i, _mm256_or_si256(LoadColours(colours + 3 * i), alpha));
    }
    kPlainAlphaKernels.widenWithAlpha(image + 4 * i, colours + 3 * i, greys + 3 * i, pixels - i);
}

void Narrow(uint8_t *colours, const uint8_t *image, int64_t pixels) noexcept {
    int64_t i = 0;
    for (; i + kWritePixels <= pixels; i += kPixels)
        StoreColours(colours + 3 * i, Load<__m256i>(image + 4 * i), ColourOrder());
    kPlainAlphaKernels.narrow(colours + 3 * i, image + 4 * i, pixels - i);
}

void NarrowWithAlpha(uint8_t *colours, uint8_t *greys, const uint8_t *image, int64_t pixels) noexcept {
    int64_t i = 0;
    for (; i + kWritePixels <= pixels; i += kPixels) {
        const auto eight = Load<__m256i>(image + 4 * i);
        StoreColours(colours + 3 * i, eight, ColourOrder());
        StoreColours(greys + 3 * i, eight, AlphaOrder());
    }
    kPlainAlphaKernels.narrowWithAlpha(colours + 3 * i, greys + 3 * i, image + 4 * i, pixels - i);
}

}  // namespace

extern const AlphaKernels kAvx2AlphaKernels{Paint,           Widen,       WidenWithAlpha, Narrow,
                                            NarrowWithAlpha, InvertAlpha, Merge};

}  // namespace fenlight
#endif
