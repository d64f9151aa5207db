// SPDX-License-Identifier: Zlib
#pragma once

#include "data/tag_filter.h"

namespace fenlight {
namespace {

// Bytes written one by one. `before` counts those that were written and carried off earlier; they can be
// taken back too.
struct TagBytes {
    uint8_t *start;
    uint8_t *end;
    int64_t before;

    void Write(uint8_t byte) { *end++ = byte; }
    void TakeBack() {
        if (end != start) {
            --end;
        } else if (before > 0) {
            --before;
        }
    }
};

// A closing delimiter without a tag keeps the four meanings that it has always had.
inline void FilterStrayClose(const TagRule &rule, TagBytes &output) {
    if (rule.keepsInside) {
        if (!rule.keepsDelimiters) output.TakeBack();
        return;
    }
    output.Write(rule.close);
    if (rule.keepsDelimiters) output.Write(rule.close);
}

inline void FilterByte(uint8_t byte, const TagRule &rule, bool &isInTag, TagBytes &output) {
    const bool isOpen = byte == rule.open;
    if (!isOpen && byte != rule.close) {
        if (isInTag == rule.keepsInside) output.Write(byte);
    } else if (isOpen || isInTag) {
        isInTag = isOpen && rule.HasTags();
        if (rule.keepsDelimiters) output.Write(byte);
    } else {
        FilterStrayClose(rule, output);
    }
}

// Works on copies of state and output, which can stay in registers.
inline bool FilterByteByByte(const uint8_t *source, int64_t length, TagRule rule, bool isInTag,
                             TagBytes &output) {
    TagBytes current = output;
    for (int64_t i = 0; i < length; ++i) FilterByte(source[i], rule, isInTag, current);
    output = current;
    return isInTag;
}

}  // namespace
}  // namespace fenlight
