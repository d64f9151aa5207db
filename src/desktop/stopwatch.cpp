// SPDX-License-Identifier: Zlib
#include <atomic>

#include "fenlight/desktop.h"
#include "fenlight/platform/system.h"

namespace {

std::atomic<uint32_t> watchStart{0};  // tick

uint32_t Elapsed() { return GetTickCount() - watchStart.load(std::memory_order_relaxed); }

}  // namespace

int32_t StartWatch() noexcept {
    watchStart.store(GetTickCount(), std::memory_order_relaxed);
    return 0;
}

int32_t ReadWatch() noexcept { return static_cast<int32_t>(Elapsed()); }

void WaitWatch(int32_t milliseconds) noexcept {
    do {
        Sleep(1);
    } while (static_cast<int32_t>(Elapsed()) < milliseconds);
}
