// SPDX-License-Identifier: Zlib
// The byte sum. Keeps nothing between calls, so any thread may use it.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// startValue plus all bytes as unsigned values, modulo 2^32. Counts of 0 and below give startValue.
uint32_t SumBytes(const uint8_t *bytes, int64_t count, uint32_t startValue) noexcept;

struct ChecksumKernels {
    // The sum of all bytes, at least one.
    uint64_t (*sumBytes)(const uint8_t *bytes, int64_t count) noexcept;
};

extern const ChecksumKernels kAvx2Checksum;

}  // namespace fenlight
