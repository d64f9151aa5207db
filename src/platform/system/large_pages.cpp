// SPDX-License-Identifier: Zlib
#include "platform/system/large_pages.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>

namespace fenlight::platform {

void AdviseLargePages(void *block, size_t bytes) noexcept {
    constexpr uintptr_t kPage = 4096;
    if (bytes < kLargePage) return;
    const auto start = (reinterpret_cast<uintptr_t>(block) + kPage - 1) / kPage * kPage;
    const auto end = (reinterpret_cast<uintptr_t>(block) + bytes) / kPage * kPage;
    const int savedError = errno;
    madvise(reinterpret_cast<void *>(start), end - start, MADV_HUGEPAGE);
    errno = savedError;
}

}  // namespace fenlight::platform
