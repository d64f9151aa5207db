// SPDX-License-Identifier: Zlib
#include "data/cipher.h"

#include <algorithm>
#include <cstring>

#include "fenlight/files.h"

namespace fenlight {
namespace {

// Room for the repeated key: long enough that the odd bytes at the end of each repeat do not count, short
// enough for the first-level cache.
constexpr int64_t kMaskBytes = 4096;

void XorBytesPlain(uint8_t *__restrict bytes, const uint8_t *__restrict mask, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i) bytes[i] ^= mask[i];
}

constexpr CipherKernels kPlainCipher{XorBytesPlain};

constexpr KernelVersions<CipherKernels> kCiphers{&kPlainCipher, nullptr, FENLIGHT_ON_X86(kAvx2Cipher)};

// Fills `count` bytes with the key over and over, by doubling what is there.
void RepeatKey(uint8_t *mask, int64_t count, const uint8_t *key, int64_t keyLength) {
    int64_t filled = std::min(count, keyLength);
    std::memcpy(mask, key, static_cast<size_t>(filled));
    while (filled < count) {
        const int64_t more = std::min(filled, count - filled);
        std::memcpy(mask + filled, mask, static_cast<size_t>(more));
        filled += more;
    }
}

}  // namespace

void XorWithKey(uint8_t *bytes, int64_t count, const uint8_t *key, int64_t keyLength) noexcept {
    if (count <= 0 || keyLength <= 0) return;
    uint8_t repeated[kMaskBytes];
    const uint8_t *mask = key;
    int64_t period = keyLength;
    if (keyLength <= kMaskBytes / 2 && keyLength < count) {
        period = kMaskBytes / keyLength * keyLength;
        RepeatKey(repeated, std::min(period, count), key, keyLength);
        mask = repeated;
    }
    const CipherKernels &kernels = ChooseKernels(kCiphers);
    for (int64_t done = 0; done < count; done += period)
        kernels.xorBytes(bytes + done, mask, std::min(period, count - done));
}

}  // namespace fenlight

using namespace fenlight;

void Crypt(void *memory, int32_t length, const void *key, int32_t keyLength) noexcept {
    XorWithKey(static_cast<uint8_t *>(memory), length, static_cast<const uint8_t *>(key), keyLength);
}
