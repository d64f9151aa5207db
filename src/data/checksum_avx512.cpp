// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include <array>
#include <numeric>

#include "data/checksum.h"

namespace fenlight {
namespace {

constexpr int64_t kVector = 64;

__m512i SumEights(__m512i bytes) { return _mm512_sad_epu8(bytes, _mm512_setzero_si512()); }

uint64_t SumBytes(const uint8_t *bytes, int64_t count) noexcept {
    __m512i sums[4] = {};
    int64_t i = 0;
    for (; i + 4 * kVector <= count; i += 4 * kVector)
        for (int k = 0; k < 4; ++k)
            sums[k] = _mm512_add_epi64(sums[k], SumEights(_mm512_loadu_si512(bytes + i + k * kVector)));
    for (; i < count; i += kVector) {
        const auto left = static_cast<uint32_t>(count - i < kVector ? count - i : kVector);
        const __mmask64 rest = _bzhi_u64(~uint64_t{0}, left);
        sums[0] = _mm512_add_epi64(sums[0], SumEights(_mm512_maskz_loadu_epi8(rest, bytes + i)));
    }
    const __m512i all =
        _mm512_add_epi64(_mm512_add_epi64(sums[0], sums[1]), _mm512_add_epi64(sums[2], sums[3]));
    std::array<uint64_t, 8> lanes;
    _mm512_storeu_si512(lanes.data(), all);
    return std::accumulate(lanes.begin(), lanes.end(), uint64_t{0});
}

}  // namespace

const ChecksumKernels kAvx512Checksum{SumBytes};

}  // namespace fenlight
#endif
