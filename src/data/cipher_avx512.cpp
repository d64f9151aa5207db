// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "data/cipher.h"

namespace fenlight {
namespace {

void XorBytes(uint8_t *bytes, const uint8_t *mask, int64_t count) noexcept {
    int64_t i = 0;
    for (; i + 64 <= count; i += 64)
        _mm512_storeu_si512(bytes + i,
                            _mm512_xor_si512(_mm512_loadu_si512(bytes + i), _mm512_loadu_si512(mask + i)));
    const __mmask64 rest = _bzhi_u64(~uint64_t{0}, static_cast<uint32_t>(count - i));
    const __m512i value = _mm512_maskz_loadu_epi8(rest, bytes + i);
    _mm512_mask_storeu_epi8(bytes + i, rest,
                            _mm512_xor_si512(value, _mm512_maskz_loadu_epi8(rest, mask + i)));
}

}  // namespace

const CipherKernels kAvx512Cipher{XorBytes};

}  // namespace fenlight
#endif
