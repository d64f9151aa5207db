// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/smoothing/smoothing_kernels.h"
#include "fx/smoothing/smoothing_loops.h"

namespace fenlight {
namespace {

uint64_t MarksOf(uint64_t equalBytes) noexcept {
    return equalBytes & equalBytes >> 1 & equalBytes >> 2 & kAllMarks;
}

void MarkColour(uint64_t *marks, const uint8_t *row, int64_t pixels, uint32_t colour) noexcept {
    alignas(64) uint8_t bytes[64];
    for (int i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(colour >> (16 - i % 3 * 8));
    const __m512i pattern = _mm512_load_si512(bytes);
    // A vector reaches one byte into the next word's pixels.
    for (; pixels > kMarksPerWord; pixels -= kMarksPerWord, row += kBytesPerWord)
        *marks++ = MarksOf(_mm512_cmpeq_epi8_mask(_mm512_loadu_si512(row), pattern));
    const __mmask64 inside = _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(3 * pixels));
    *marks = MarksOf(_mm512_mask_cmpeq_epi8_mask(inside, _mm512_maskz_loadu_epi8(inside, row), pattern));
}

void TakeMarked(uint8_t *row, const uint8_t *kept, const uint64_t *marks, int64_t pixels) noexcept {
    for (; pixels > 0; pixels -= kMarksPerWord, row += kBytesPerWord, kept += kBytesPerWord) {
        const __mmask64 taken = *marks++ * 7;
        const __m512i bytes = _mm512_maskz_loadu_epi8(taken, kept);
        _mm512_mask_storeu_epi8(row, taken, _mm512_xor_si512(bytes, _mm512_set1_epi8(-1)));
    }
}

}  // namespace

extern const SmoothingKernels kAvx512SmoothingKernels{AddBefore,  Narrow,  AddAcross, SmoothMasked,
                                                      FogMasked,  Keep,    Average,   AverageWithCentre,
                                                      MarkColour, MarkFar, TakeMarked};

}  // namespace fenlight
#endif
