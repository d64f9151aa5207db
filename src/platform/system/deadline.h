// SPDX-License-Identifier: Zlib
// The end of a wait with a time limit.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

namespace fenlight::platform {

class Deadline {
  public:
    using Clock = std::chrono::steady_clock;

    // 0xFFFFFFFF milliseconds stand for no limit.
    explicit Deadline(uint32_t milliseconds) {
        if (milliseconds != 0xFFFFFFFFu) end_ = Clock::now() + std::chrono::milliseconds(milliseconds);
    }

    bool IsEndless() const { return !end_; }
    bool HasPassed() const { return end_ && Clock::now() >= *end_; }

    // Waits until `isTrue` or the end; tells whether it is true.
    template <class Condition>
    bool Wait(std::condition_variable &changed, std::unique_lock<std::mutex> &lock, Condition isTrue) const {
        if (end_) return changed.wait_until(lock, *end_, isTrue);
        changed.wait(lock, isTrue);
        return true;
    }

  private:
    std::optional<Clock::time_point> end_;
};

}  // namespace fenlight::platform
