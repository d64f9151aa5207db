// SPDX-License-Identifier: Zlib
#include "images/png/png_pages.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>

namespace fenlight {

namespace {

constexpr uintptr_t kLargePage = uintptr_t{2} << 20;
constexpr uintptr_t kPage = 4096;

}  // namespace

void AdviseLargePages(void *block, size_t bytes) noexcept {
    if (bytes < kLargePage) return;
    const auto start = (reinterpret_cast<uintptr_t>(block) + kPage - 1) / kPage * kPage;
    const auto end = (reinterpret_cast<uintptr_t>(block) + bytes) / kPage * kPage;
    const int savedError = errno;
    madvise(reinterpret_cast<void *>(start), end - start, MADV_HUGEPAGE);
    errno = savedError;
}

}  // namespace fenlight
