// SPDX-License-Identifier: Zlib
// Packs one block into a bare stream, without a header.
#pragma once

#include <cstdint>

#include "packing/parser.h"

namespace fenlight {

// What a stream of `length` bytes takes at most. A window always keeps the cheapest way, which takes no more
// than a literal's 9 bits for each byte, and a long match takes less. The first byte and the end mark come to
// 19 bits, and the last tag byte may be partly used.
constexpr uint64_t MaxStreamBytes(uint64_t length) noexcept { return length + length / 8 + 4; }

// Gives the stream's length, 0 for blocks below 2 bytes. The area must be all zeros; it is used up.
uint32_t Compress(const uint8_t *source, uint8_t *destination, uint32_t length, WorkArea &area) noexcept;

}  // namespace fenlight
