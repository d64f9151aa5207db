// SPDX-License-Identifier: Zlib
// Large pages for large blocks. The rows of a rectangle lie in as many small pages as it has rows, and a
// photo that is written from end to end faults once for each; a large page holds five hundred small ones.
#pragma once

#include <cstddef>

#include "fenlight/types.h"

namespace fenlight::platform {

constexpr size_t kLargePage = size_t{2} << 20;

// Asks the system for large pages in a block of two megabytes or more. Only whole large pages at multiples of
// their size can become one. Only advice: nothing depends on it, and it cannot fail. Any thread.
FENLIGHT_API void AdviseLargePages(void *block, size_t bytes) noexcept;

}  // namespace fenlight::platform
