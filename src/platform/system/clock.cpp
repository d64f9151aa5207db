// SPDX-License-Identifier: Zlib
#include "platform/system/clock.h"

#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "fenlight/platform/system.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

std::atomic<Clock *> replacement{nullptr};

timespec Now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

// Sleeps to a point of time instead of for a length, so that signals in between do not stretch the sleep.
void SleepUntil(const timespec &end) {
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

void SystemSleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    if (milliseconds == INFINITE) {
        for (;;) pause();
    }
    timespec end = Now();
    end.tv_sec += milliseconds / 1000;
    end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (end.tv_nsec >= 1'000'000'000) {
        end.tv_nsec -= 1'000'000'000;
        ++end.tv_sec;
    }
    SleepUntil(end);
}

}  // namespace

void ReplaceClock(Clock *clock) noexcept { replacement.store(clock, std::memory_order_release); }

}  // namespace fenlight::platform

DWORD GetTickCount() noexcept {
    using namespace fenlight::platform;
    if (Clock *clock = replacement.load(std::memory_order_acquire)) return clock->TickCount();
    const timespec now = Now();
    return static_cast<DWORD>(static_cast<uint64_t>(now.tv_sec) * 1000 +
                              static_cast<uint64_t>(now.tv_nsec) / 1'000'000);
}

void Sleep(DWORD milliseconds) noexcept {
    using namespace fenlight::platform;
    const Resting resting;
    if (Clock *clock = replacement.load(std::memory_order_acquire)) {
        clock->Sleep(milliseconds);
    } else {
        SystemSleep(milliseconds);
    }
}
