// SPDX-License-Identifier: Zlib
// Sums of absolute differences against zero add eight bytes at once. Four running sums, so that the loop
// waits for loads and not for an addition.
#if defined(__x86_64__)
#include <immintrin.h>

#include "data/checksum.h"

namespace fenlight {
namespace {

constexpr int64_t kVector = 32;

__m256i SumEights(const uint8_t *bytes) {
    return _mm256_sad_epu8(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes)),
                           _mm256_setzero_si256());
}

uint64_t AddLanes(__m256i sums) {
    const __m128i halves = _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    return static_cast<uint64_t>(_mm_cvtsi128_si64(halves)) +
           static_cast<uint64_t>(_mm_extract_epi64(halves, 1));
}

uint64_t SumBytes(const uint8_t *bytes, int64_t count) noexcept {
    __m256i sums[4] = {};
    int64_t i = 0;
    for (; i + 4 * kVector <= count; i += 4 * kVector)
        for (int k = 0; k < 4; ++k) sums[k] = _mm256_add_epi64(sums[k], SumEights(bytes + i + k * kVector));
    for (; i + kVector <= count; i += kVector) sums[0] = _mm256_add_epi64(sums[0], SumEights(bytes + i));
    uint64_t rest = 0;
    for (; i < count; ++i) rest += bytes[i];
    return rest +
           AddLanes(_mm256_add_epi64(_mm256_add_epi64(sums[0], sums[1]), _mm256_add_epi64(sums[2], sums[3])));
}

}  // namespace

const ChecksumKernels kAvx2Checksum{SumBytes};

}  // namespace fenlight
#endif
