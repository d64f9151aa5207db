// SPDX-License-Identifier: Zlib
#pragma once

#include "data/tag_filter.h"

namespace fenlight {
namespace {

// A closing delimiter without a tag keeps the four meanings that it has always had.
template <typename Output>
void FilterStrayClose(const TagRule &rule, Output &output) {
    if (rule.keepsInside) {
        if (!rule.keepsDelimiters) output.TakeBack();
        return;
    }
    output.Write(rule.close);
    if (rule.keepsDelimiters) output.Write(rule.close);
}

// One byte of the source: `isInTag` is the state, `output` has Write and TakeBack.
template <typename Output>
void FilterByte(uint8_t byte, const TagRule &rule, bool &isInTag, Output &output) {
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

}  // namespace
}  // namespace fenlight
