// SPDX-License-Identifier: Zlib
// A counting semaphore of this process, and where it has a lock file, the lock that keeps other processes
// out.
//
// A thread takes a unit of the count first and the lock of the file second, so the file sees one thread of
// this process at a time. Handles and waits own the semaphore together: a wait goes on when its handle is
// closed.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/system/deadline.h"
#include "platform/system/handle_table.h"
#include "platform/system/lock_file.h"
#include "platform/system/shared_count.h"

namespace fenlight::platform {

class Semaphore {
  public:
    // Starts with one owner. The file, if any, outlives the semaphore and is for one of a single unit.
    Semaphore(int32_t initialCount, int32_t maximumCount, LockFile *file, bool isNamed) noexcept
        : count_(initialCount),
          initialCount_(initialCount),
          maximumCount_(maximumCount),
          file_(file),
          isNamed_(isNamed) {}
    ~Semaphore();
    Semaphore(const Semaphore &) = delete;
    Semaphore &operator=(const Semaphore &) = delete;

    void AddOwner() noexcept { owners_.fetch_add(1, std::memory_order_relaxed); }
    void DropOwner() noexcept;
    // Under the table's mutex for a named semaphore: true for the owner who was the last.
    bool DropsLastOwner() noexcept { return owners_.fetch_sub(1, std::memory_order_acq_rel) == 1; }

    // Takes one unit; false at the deadline. A thread that is stopped while it waits takes nothing until it
    // is resumed.
    bool Take(const Deadline &deadline) noexcept;
    // False, with nothing changed, if the count would exceed the maximum, or if another process holds the
    // file.
    bool Release(int32_t units, int32_t *previous) noexcept;

    // Around a fork. The lock of the file stays with the parent, so the child starts as if nobody had taken
    // it.
    void LockForFork() { mutex_.lock(); }
    void UnlockAfterFork() { mutex_.unlock(); }
    void StartAnewInChild();

  private:
    bool TryTake();
    bool WaitAndTake(const Deadline &deadline);
    bool WaitForUnit(const Deadline &deadline);
    void TakeUnit();
    bool KeepUnit(bool hasFile);

    std::atomic<uint32_t> owners_{1};
    std::mutex mutex_;  // over count_ and isAsking_
    std::condition_variable released_;
    int32_t count_;
    bool isAsking_ = false;  // the unit is with a thread that does not have the lock of the file yet
    const int32_t initialCount_;
    const int32_t maximumCount_;
    LockFile *const file_;  // held while the one unit is taken
    const bool isNamed_;
};

struct SemaphoreHandle : HandleObject {
    explicit SemaphoreHandle(Owner<Semaphore> owner) : semaphore(std::move(owner)) {}
    const Owner<Semaphore> semaphore;
};

}  // namespace fenlight::platform
