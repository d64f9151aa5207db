// SPDX-License-Identifier: Zlib
#include "platform/system/thread_record.h"

#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

thread_local ThreadRecord *currentThread = nullptr;

// Stops that stand, over all threads. While there are none, a gate costs one load.
std::atomic<uint32_t> standingStops{0};

// A thread that computes, or waits for something that the layer does not know, reaches no gate. The caller of
// SuspendThread must not hang on it.
constexpr auto kLongestWaitForStop = std::chrono::seconds(2);

}  // namespace

ThreadRecord::ThreadRecord(uint32_t suspendCount) noexcept : suspendCount_(suspendCount) {
    standingStops.fetch_add(suspendCount, std::memory_order_relaxed);
}

// A thread that was to be made stopped, but never came into being, leaves its stop here.
ThreadRecord::~ThreadRecord() { standingStops.fetch_sub(suspendCount_, std::memory_order_relaxed); }

void ThreadRecord::DropOwner() noexcept {
    if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

ThreadRecord *ThreadRecord::Current() noexcept { return currentThread; }
void ThreadRecord::SetCurrent(ThreadRecord *record) noexcept { currentThread = record; }

void ThreadRecord::WaitAtGate(std::unique_lock<std::mutex> &lock) {
    if (suspendCount_ == 0) return;
    isParked_ = true;
    stopped_.notify_all();
    // Not until the count is 0: Resume itself opens the gate. So each resume takes the thread a step further,
    // even where somebody stops it again before it wakes.
    resumed_.wait(lock, [this] { return !isParked_; });
}

void ThreadRecord::PassGate() noexcept {
    std::unique_lock lock(mutex_);
    WaitAtGate(lock);
}

void ThreadRecord::BeginRest() noexcept {
    const std::lock_guard lock(mutex_);
    ++restDepth_;
    if (suspendCount_ > 0) stopped_.notify_all();
}

void ThreadRecord::EndRest() noexcept {
    std::unique_lock lock(mutex_);
    if (--restDepth_ == 0) WaitAtGate(lock);
}

bool ThreadRecord::TryEndRest() noexcept {
    const std::lock_guard lock(mutex_);
    if (suspendCount_ > 0 && restDepth_ == 1) return false;
    --restDepth_;
    return true;
}

void ThreadRecord::Finish(uint32_t exitCode) noexcept {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    exitCode_ = exitCode;
    standingStops.fetch_sub(suspendCount_, std::memory_order_relaxed);
    suspendCount_ = 0;
    stopped_.notify_all();
}

void ThreadRecord::WaitUntilStopped(std::unique_lock<std::mutex> &lock) {
    const auto end = Deadline::Clock::now() + kLongestWaitForStop;
    stopped_.wait_until(lock, end, [this] { return IsStopped() || suspendCount_ == 0; });
}

uint32_t ThreadRecord::Suspend() noexcept {
    std::unique_lock lock(mutex_);
    if (hasEnded_ || suspendCount_ >= kMostSuspends) return kRefused;
    const uint32_t previous = suspendCount_++;
    standingStops.fetch_add(1, std::memory_order_relaxed);
    if (this == currentThread) {
        WaitAtGate(lock);
        return previous;
    }
    if (IsStopped()) return previous;
    lock.unlock();
    // Two threads that stop each other come to rest here both, instead of waiting for each other.
    const Resting resting;
    lock.lock();
    WaitUntilStopped(lock);
    lock.unlock();
    return previous;
}

uint32_t ThreadRecord::Resume() noexcept {
    const std::lock_guard lock(mutex_);
    if (suspendCount_ == 0) return 0;
    const uint32_t previous = suspendCount_--;
    standingStops.fetch_sub(1, std::memory_order_relaxed);
    if (suspendCount_ == 0) {
        isParked_ = false;
        resumed_.notify_all();
        stopped_.notify_all();
    }
    return previous;
}

bool ThreadRecord::HasEnded() noexcept {
    const std::lock_guard lock(mutex_);
    return hasEnded_;
}

uint32_t ThreadRecord::ExitCode() noexcept {
    const std::lock_guard lock(mutex_);
    return exitCode_;
}

bool ThreadRecord::WaitForEnd(const Deadline &deadline) noexcept {
    std::unique_lock lock(mutex_);
    return deadline.Wait(stopped_, lock, [this] { return hasEnded_; });
}

void PassSuspendGate() noexcept {
    if (standingStops.load(std::memory_order_relaxed) == 0) [[likely]]
        return;
    if (currentThread != nullptr) currentThread->PassGate();
}

Resting::Resting() noexcept : record_(currentThread) {
    if (record_ != nullptr) record_->BeginRest();
}

Resting::~Resting() {
    if (record_ != nullptr) record_->EndRest();
}

bool Resting::TryEnd() noexcept {
    if (record_ != nullptr && !record_->TryEndRest()) return false;
    record_ = nullptr;
    return true;
}

}  // namespace fenlight::platform
