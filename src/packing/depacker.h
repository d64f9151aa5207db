// SPDX-License-Identifier: Zlib
// Opens bare streams, whatever is in them. Keeps nothing between calls.
#pragma once

#include <cstdint>
#include <span>

#include "frame/vector_level.h"
#include "packing/depack_cursor.h"

namespace fenlight {

// Gives the number of bytes that the stream made, or 0 if it is none: it ends without an end mark, refers to
// bytes before the first, or makes more than `room`. Bytes behind the end mark are not looked at. Reads
// nothing outside the stream and writes nothing outside the room, of which a broken stream may fill a part.
uint32_t Depack(std::span<const uint8_t> stream, std::span<uint8_t> room) noexcept;

struct DepackKernels {
    // Goes on until an item that is better done carefully.
    DepackCursor (*runFast)(const DepackCursor &cursor) noexcept;
};

extern const DepackKernels kAvx2Depack;

}  // namespace fenlight
