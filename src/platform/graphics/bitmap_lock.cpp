// SPDX-License-Identifier: Zlib
#include "platform/graphics/bitmap_lock.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace fenlight::platform {
namespace {

static_assert(sizeof(std::atomic<uint32_t>) == sizeof(uint32_t), "the kernel waits on the plain word");

// About a microsecond: longer than a pixel or a sprite takes, shorter than a sleep costs.
constexpr int kSpins = 30;
constexpr long kLongestSleepNs = 200'000;

void RelaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

}  // namespace

void BitmapLock::WaitAndLock() noexcept {
    for (int spin = 0; spin < kSpins; ++spin) {
        RelaxProcessor();
        if (isTaken_.load(std::memory_order_relaxed) == 0 &&
            isTaken_.exchange(1, std::memory_order_acquire) == 0)
            return;
    }
    sleepers_.fetch_add(1, std::memory_order_relaxed);
    while (isTaken_.exchange(1, std::memory_order_acquire) != 0) {
        const timespec limit{0, kLongestSleepNs};
        syscall(SYS_futex, &isTaken_, FUTEX_WAIT_PRIVATE, 1, &limit, nullptr, 0);
    }
    sleepers_.fetch_sub(1, std::memory_order_relaxed);
}

void BitmapLock::WakeOne() noexcept {
    syscall(SYS_futex, &isTaken_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace fenlight::platform
