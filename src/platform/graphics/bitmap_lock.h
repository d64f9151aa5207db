// SPDX-License-Identifier: Zlib
// The lock of one bitmap. It costs one read-modify-write to take and a plain store to give back, because a
// GetPixel does less work than a mutex. Whoever finds it taken spins for about a microsecond and then sleeps,
// so that a long transfer does not burn a second core. Whoever sleeps and finds it taken again puts in a
// claim, and newcomers let claimants go first: without that a thread that draws one full screen after another
// keeps the others out for a tenth of a second and more.
#pragma once

#include <atomic>
#include <cstdint>

namespace fenlight::platform {

class BitmapLock {
  public:
    void Lock() noexcept {
        if (claims_.load(std::memory_order_relaxed) != 0 || !TryLock()) WaitAndLock();
    }
    // The store and the load may change places in the processor, and a thread that goes to sleep in between
    // is not woken. Sleepers look again by themselves after a short while; that is cheaper than a fence here.
    void Unlock() noexcept {
        isTaken_.store(0, std::memory_order_release);
        if (sleepers_.load(std::memory_order_relaxed) != 0) WakeOne();
    }

  private:
    bool TryLock() noexcept { return isTaken_.exchange(1, std::memory_order_acquire) == 0; }
    void LetClaimantsGoFirst() noexcept;
    void WaitAndLock() noexcept;
    void WakeOne() noexcept;

    std::atomic<uint32_t> isTaken_{0};
    std::atomic<uint32_t> sleepers_{0};
    std::atomic<uint32_t> claims_{0};
};

}  // namespace fenlight::platform
