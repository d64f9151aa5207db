// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "data/cipher.h"

namespace fenlight {
namespace {

void XorVector(uint8_t *bytes, const uint8_t *mask) {
    const __m256i value = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
    const __m256i key = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(mask));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes), _mm256_xor_si256(value, key));
}

void XorBytes(uint8_t *__restrict bytes, const uint8_t *__restrict mask, int64_t count) noexcept {
    int64_t i = 0;
    for (; i + 64 <= count; i += 64) {
        XorVector(bytes + i, mask + i);
        XorVector(bytes + i + 32, mask + i + 32);
    }
    for (; i < count; ++i) bytes[i] ^= mask[i];
}

}  // namespace

const CipherKernels kAvx2Cipher{XorBytes};

}  // namespace fenlight
#endif
