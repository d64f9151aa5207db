// SPDX-License-Identifier: Zlib
// Where a depacker stands. Its two ways of going on hand it to each other: the fast one works while there is
// slack on both sides and stops in front of items that it leaves to the careful one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "packing/stream_format.h"

namespace fenlight {

// The tag bits that were read and not used, highest first, and zeros behind them.
struct TagBits {
    uint64_t bits = 0;
    uint32_t count = 0;  // 0 to 8
};

struct DepackCursor {
    const uint8_t *read;
    const uint8_t *readEnd;
    uint8_t *write;
    uint8_t *writeBegin;
    uint8_t *writeEnd;
    TagBits tags;
    uint64_t lastOffset = 0;  // 0: none yet
    uint32_t highBase =
        kAfterLiteral;  // what a long match's first gamma value counts from, by the item before

    uint64_t Written() const noexcept { return static_cast<uint64_t>(write - writeBegin); }
};

}  // namespace fenlight
