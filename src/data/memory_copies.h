// SPDX-License-Identifier: Zlib
// Copies whose meaning on overlapping memory is that of a walk from byte to byte: where the target follows
// the source closely, what was written is read again, and the first (or last) bytes repeat. Sizes above 0.
#pragma once

#include <cstdint>

namespace fenlight {

// Lowest address first.
void CopyUpwards(uint8_t *target, const uint8_t *source, int64_t bytes) noexcept;

// Highest address first.
void CopyDownwards(uint8_t *target, const uint8_t *source, int64_t bytes) noexcept;

}  // namespace fenlight
