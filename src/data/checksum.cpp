// SPDX-License-Identifier: Zlib
#include "data/checksum.h"

#include <numeric>

#include "fenlight/files.h"

namespace fenlight {
namespace {

uint64_t SumBytesPlain(const uint8_t *bytes, int64_t count) noexcept {
    return std::accumulate(bytes, bytes + count, uint32_t{0});
}

constexpr ChecksumKernels kPlainChecksum{SumBytesPlain};

constexpr KernelVersions<ChecksumKernels> kChecksums{&kPlainChecksum, nullptr,
                                                     FENLIGHT_ON_X86(kAvx2Checksum)};

}  // namespace

uint32_t SumBytes(const uint8_t *bytes, int64_t count, uint32_t startValue) noexcept {
    if (count <= 0) return startValue;
    return startValue + static_cast<uint32_t>(ChooseKernels(kChecksums).sumBytes(bytes, count));
}

}  // namespace fenlight

using namespace fenlight;

uint32_t GenerateChecksum(const void *memory, int32_t length, uint32_t startValue) noexcept {
    return SumBytes(static_cast<const uint8_t *>(memory), length, startValue);
}
