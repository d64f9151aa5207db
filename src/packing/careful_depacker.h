// SPDX-License-Identifier: Zlib
// Bit by bit and byte by byte, with every step checked.
#pragma once

#include "packing/depack_cursor.h"

namespace fenlight {

enum class DepackState : uint8_t { Going, Ended, Broken };

// Does the item at the cursor. Ended: it was the end mark. Broken: the stream ends within it, or it refers to
// bytes before the first, or needs more than the room that is left.
DepackState DepackItemCarefully(DepackCursor &cursor) noexcept;

}  // namespace fenlight
