// SPDX-License-Identifier: Zlib
#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace fenpack {
namespace {

// Below that, packing takes less than a second or two.
constexpr uint64_t kLongWork = 8 << 20;

}  // namespace

Progress::Progress(std::string task, uint64_t totalBytes)
    : task_(std::move(task)),
      total_(totalBytes),
      shown_(totalBytes >= kLongWork && isatty(STDERR_FILENO) != 0) {
    Show(0);
}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::Show(uint64_t doneBytes) const {
    if (!shown_) return;
    std::fprintf(stderr, "\r%s: %d %% of %.1f MB", task_.c_str(), static_cast<int>(doneBytes * 100 / total_),
                 static_cast<double>(total_) / 1e6);
    std::fflush(stderr);
}

}  // namespace fenpack
