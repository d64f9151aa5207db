// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/smoothing/smoothing_kernels.h"
#include "fx/smoothing/smoothing_loops.h"

namespace fenlight {
namespace {

__mmask64 BytesOfPixels(int64_t pixels) noexcept {
    return _bzhi_u64(~uint64_t{0},
                     static_cast<unsigned>(3 * (pixels < kMarksPerWord ? pixels : kMarksPerWord)));
}

void MarkColour(uint64_t *marks, const uint8_t *row, int64_t pixels, uint32_t colour) noexcept {
    alignas(64) uint8_t bytes[64];
    for (int i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(colour >> (16 - i % 3 * 8));
    const __m512i pattern = _mm512_load_si512(bytes);
    for (; pixels > 0; pixels -= kMarksPerWord, row += kBytesPerWord) {
        const __mmask64 inside = BytesOfPixels(pixels);
        const __m512i own = _mm512_maskz_loadu_epi8(inside, row);
        const uint64_t equal = _mm512_mask_cmpeq_epi8_mask(inside, own, pattern);
        *marks++ = equal & equal >> 1 & equal >> 2 & kAllMarks;
    }
}

void TakeMarked(uint8_t *row, const uint8_t *old, const uint64_t *marks, int64_t pixels) noexcept {
    for (; pixels > 0; pixels -= kMarksPerWord, row += kBytesPerWord, old += kBytesPerWord) {
        const __mmask64 taken = *marks++ * 7;
        _mm512_mask_storeu_epi8(row, taken, _mm512_maskz_loadu_epi8(taken, old));
    }
}

}  // namespace

extern const SmoothingKernels kAvx512SmoothingKernels{AddBefore, Narrow,    AddAcross,         SmoothMasked,
                                                      FogMasked, Average,   AverageWithCentre, MarkColour,
                                                      MarkFar,   TakeMarked};

}  // namespace fenlight
#endif
