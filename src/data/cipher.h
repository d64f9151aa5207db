// SPDX-License-Identifier: Zlib
// The repeating-key XOR. Keeps nothing between calls, so any thread may use it.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// byte i ^= key[i mod keyLength]. Counts or key lengths of 0 and below change nothing. The key must not
// overlap the bytes.
void XorWithKey(uint8_t *bytes, int64_t count, const uint8_t *key, int64_t keyLength) noexcept;

struct CipherKernels {
    // byte i ^= mask[i]; the two do not overlap.
    void (*xorBytes)(uint8_t *bytes, const uint8_t *mask, int64_t count) noexcept;
};

extern const CipherKernels kAvx2Cipher;

}  // namespace fenlight
