// SPDX-License-Identifier: Zlib
// Memory that is about to be written from end to end for the first time.
#pragma once

#include <cstddef>

namespace fenlight {

// Asks the system for large pages in a block of two megabytes or more: a photo's two blocks cost a fifth of
// the whole load in page faults otherwise. Only advice: nothing depends on it, and it can't fail.
void AdviseLargePages(void *block, size_t bytes) noexcept;

}  // namespace fenlight
