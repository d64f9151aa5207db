// SPDX-License-Identifier: Zlib
// Splits a text into what lies inside tags and what lies outside. Keeps nothing between calls, so any thread
// may use it.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

struct TagRule {
    uint8_t open = 0;
    uint8_t close = 0;
    bool keepsInside = false;
    bool keepsDelimiters = false;

    // A delimiter that opens and closes at once never opens a tag.
    bool HasTags() const { return open != close; }
};

// Writes what stays, without a zero behind it, and gives its length. Where the two texts overlap, the result
// is that of going byte by byte from the front.
int64_t FilterTags(const uint8_t *source, int64_t length, uint8_t *destination, const TagRule &rule) noexcept;

struct TagKernels {
    // The same; of overlapping texts a version with blocks takes only those whose output never runs ahead of
    // the source.
    int64_t (*filterTags)(const uint8_t *source, int64_t length, uint8_t *destination,
                          const TagRule &rule) noexcept;
};

extern const TagKernels kPlainTags;
extern const TagKernels kAvx2Tags;

}  // namespace fenlight
