// SPDX-License-Identifier: Zlib
// What the layer knows of a thread that CreateThread started. The thread itself and the handle own the record
// together; waits and stops hold it while they last, so that neither needs a pin of the handle.
//
// Stopping is cooperative: SuspendThread raises the count, and the thread parks at its next gate. A thread
// that rests (sleeps, waits, or has not begun yet) counts as stopped already and cannot leave its rest while
// the count stands above 0.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/system/deadline.h"
#include "platform/system/shared_count.h"

namespace fenlight::platform {

class ThreadRecord {
  public:
    // Starts with one owner, resting.
    explicit ThreadRecord(uint32_t suspendCount) noexcept;
    ThreadRecord(const ThreadRecord &) = delete;
    ThreadRecord &operator=(const ThreadRecord &) = delete;

    void AddOwner() noexcept { owners_.fetch_add(1, std::memory_order_relaxed); }
    void DropOwner() noexcept;

    // The record of the calling thread; nullptr on a thread of somebody else's.
    static ThreadRecord *Current() noexcept;
    static void SetCurrent(ThreadRecord *record) noexcept;

    // For the thread itself.
    void PassGate() noexcept;
    void BeginRest() noexcept;
    void EndRest() noexcept;
    bool TryEndRest() noexcept;
    void Finish(uint32_t exitCode) noexcept;

    // For any thread. The previous count, or kRefused.
    static constexpr uint32_t kRefused = 0xFFFFFFFFu;
    static constexpr uint32_t kMostSuspends = 127;  // as published
    uint32_t Suspend() noexcept;
    uint32_t Resume() noexcept;

    bool HasEnded() noexcept;
    uint32_t ExitCode() noexcept;
    bool WaitForEnd(const Deadline &deadline) noexcept;

  private:
    ~ThreadRecord();
    bool IsStopped() const { return restDepth_ > 0 || isParked_ || hasEnded_; }
    void WaitAtGate(std::unique_lock<std::mutex> &lock);
    void WaitUntilStopped(std::unique_lock<std::mutex> &lock);

    std::atomic<uint32_t> owners_{1};
    std::mutex mutex_;  // over everything below; nothing else is locked while it is held
    std::condition_variable resumed_;
    std::condition_variable stopped_;  // parked, resting, ended or resumed
    uint32_t suspendCount_;
    uint32_t restDepth_ = 1;
    uint32_t exitCode_ = 259;
    bool isParked_ = false;
    bool hasEnded_ = false;
};

}  // namespace fenlight::platform
