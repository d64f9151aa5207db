// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/smoothing/smoothing_kernels.h"
#include "fx/smoothing/smoothing_loops.h"

namespace fenlight {
namespace {

__m256i Load(const uint8_t *bytes) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
}

uint64_t EqualBytes(const uint8_t *bytes, __m256i low, __m256i high) noexcept {
    const auto first = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(Load(bytes), low)));
    const auto rest = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(Load(bytes + 32), high)));
    return first | uint64_t{rest} << 32;
}

void MarkColour(uint64_t *marks, const uint8_t *row, int64_t pixels, uint32_t colour) noexcept {
    uint8_t pattern[64];
    for (int i = 0; i < 64; ++i) pattern[i] = static_cast<uint8_t>(colour >> (16 - i % 3 * 8));
    const __m256i low = Load(pattern), high = Load(pattern + 32);
    // A word's two vectors reach one byte into the next pixel.
    for (; pixels > kMarksPerWord; pixels -= kMarksPerWord, row += kBytesPerWord) {
        const uint64_t equal = EqualBytes(row, low, high);
        *marks++ = equal & equal >> 1 & equal >> 2 & kAllMarks;
    }
    kPlainSmoothingKernels.markColour(marks, row, pixels, colour);
}

// 32 bits to 32 bytes, all ones or 0.
__m256i BytesOfBits(uint32_t bits) noexcept {
    const __m256i places = _mm256_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2,
                                            2, 2, 3, 3, 3, 3, 3, 3, 3, 3);
    const __m256i ofByte = _mm256_set1_epi64x(static_cast<int64_t>(0x8040201008040201));
    const __m256i own =
        _mm256_and_si256(_mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(bits)), places), ofByte);
    return _mm256_cmpeq_epi8(own, ofByte);
}

void TakeBytes(uint8_t *row, const uint8_t *kept, uint32_t bits) noexcept {
    const __m256i taken =
        _mm256_blendv_epi8(Load(row), _mm256_xor_si256(Load(kept), _mm256_set1_epi8(-1)), BytesOfBits(bits));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(row), taken);
}

void TakeMarked(uint8_t *row, const uint8_t *kept, const uint64_t *marks, int64_t pixels) noexcept {
    for (; pixels > kMarksPerWord; pixels -= kMarksPerWord, row += kBytesPerWord, kept += kBytesPerWord) {
        const uint64_t bits = *marks++ * 7;
        TakeBytes(row, kept, static_cast<uint32_t>(bits));
        TakeBytes(row + 32, kept + 32, static_cast<uint32_t>(bits >> 32));
    }
    kPlainSmoothingKernels.takeMarked(row, kept, marks, pixels);
}

}  // namespace

extern const SmoothingKernels kAvx2SmoothingKernels{AddBefore,  Narrow,  AddAcross, SmoothMasked,
                                                    FogMasked,  Keep,    Average,   AverageWithCentre,
                                                    MarkColour, MarkFar, TakeMarked};

}  // namespace fenlight
#endif
