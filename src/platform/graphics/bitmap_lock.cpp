// SPDX-License-Identifier: Zlib
#include "platform/graphics/bitmap_lock.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>

namespace fenlight::platform {
namespace {

static_assert(sizeof(std::atomic<uint32_t>) == sizeof(uint32_t), "the kernel waits on the plain word");

// About a microsecond: longer than a pixel or a sprite takes, shorter than a sleep costs.
constexpr int kSpins = 30;
constexpr long kLongestSleepNs = 200'000;
constexpr int kMostFavours = 8;

void RelaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

// Until somebody wakes the sleepers of the word, or for the longest sleep.
void SleepWhile(std::atomic<uint32_t> &word, uint32_t value) noexcept {
    const timespec limit{0, kLongestSleepNs};
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, &limit, nullptr, 0);
}

}  // namespace

// Only for a while: the order is a favour, and a claim that never ends (of a thread that a fork left behind)
// must not stop anybody.
void BitmapLock::LetClaimantsGoFirst() noexcept {
    for (int sleep = 0; sleep < kMostFavours; ++sleep) {
        const uint32_t claims = claims_.load(std::memory_order_relaxed);
        if (claims == 0) return;
        SleepWhile(claims_, claims);
    }
}

void BitmapLock::WaitAndLock() noexcept {
    LetClaimantsGoFirst();
    for (int spin = 0; spin < kSpins; ++spin) {
        RelaxProcessor();
        if (isTaken_.load(std::memory_order_relaxed) == 0 && TryLock()) return;
    }
    sleepers_.fetch_add(1, std::memory_order_relaxed);
    bool hasClaim = false;
    while (!TryLock()) {
        SleepWhile(isTaken_, 1);
        if (hasClaim || isTaken_.load(std::memory_order_relaxed) == 0) continue;
        hasClaim = true;
        claims_.fetch_add(1, std::memory_order_relaxed);
    }
    sleepers_.fetch_sub(1, std::memory_order_relaxed);
    if (!hasClaim) return;
    claims_.fetch_sub(1, std::memory_order_relaxed);
    syscall(SYS_futex, &claims_, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

void BitmapLock::WakeOne() noexcept {
    syscall(SYS_futex, &isTaken_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace fenlight::platform
