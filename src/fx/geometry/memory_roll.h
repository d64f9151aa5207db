// SPDX-License-Identifier: Zlib
#pragma once

#include <cstdint>

namespace fenlight {

// Byte i of `length` goes to (i + amount) mod length, for 0 <= amount < length. Takes no memory.
void RollBytes(uint8_t *bytes, int64_t length, int64_t amount) noexcept;

}  // namespace fenlight
