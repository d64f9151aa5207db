// SPDX-License-Identifier: Zlib
// Tabs to blanks. Keeps nothing between calls, so any thread may use it.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// Copies the text with `tabWidth` blanks for each tab and gives the number of blanks. Sizes of 0 and below do
// nothing and give 0. Where the two texts overlap, the result is that of a copy byte by byte from the front.
int64_t ExpandTabs(const uint8_t *source, int64_t length, uint8_t *destination, int32_t tabWidth) noexcept;

struct TabKernels {
    // The same for sizes above 0 and texts that do not overlap.
    int64_t (*expandTabs)(const uint8_t *source, int64_t length, uint8_t *destination,
                          int32_t tabWidth) noexcept;
};

extern const TabKernels kPlainTabs;
extern const TabKernels kAvx2Tabs;

}  // namespace fenlight
