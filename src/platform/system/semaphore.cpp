// SPDX-License-Identifier: Zlib
#include "platform/system/semaphore.h"

#include <new>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/named_semaphores.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kAlreadyExists = 183;
constexpr DWORD kNameTooLong = 206;
constexpr DWORD kTooManyPosts = 298;

}  // namespace

Semaphore::~Semaphore() {
    if (file_ != nullptr) file_->Unlock();
}

void Semaphore::DropOwner() noexcept {
    uint32_t owners = owners_.load(std::memory_order_relaxed);
    while (owners > 1) {
        if (owners_.compare_exchange_weak(owners, owners - 1, std::memory_order_acq_rel)) return;
    }
    if (isNamed_) {
        DropNamedSemaphore(this);
    } else if (DropsLastOwner()) {
        delete this;
    }
}

// With the mutex held.
void Semaphore::TakeUnit() {
    --count_;
    isAsking_ = file_ != nullptr;
}

// What becomes of a unit once the file has answered.
bool Semaphore::KeepUnit(bool hasFile) {
    const std::lock_guard lock(mutex_);
    isAsking_ = false;
    if (hasFile) return true;
    ++count_;
    released_.notify_one();
    return false;
}

bool Semaphore::TryTake() {
    {
        const std::lock_guard lock(mutex_);
        if (count_ == 0) return false;
        TakeUnit();
    }
    return file_ == nullptr || KeepUnit(file_->TryLock());
}

bool Semaphore::WaitForUnit(const Deadline &deadline) {
    std::unique_lock lock(mutex_);
    if (!deadline.Wait(released_, lock, [this] { return count_ > 0; })) return false;
    TakeUnit();
    return true;
}

bool Semaphore::WaitAndTake(const Deadline &deadline) {
    if (!WaitForUnit(deadline)) return false;
    return file_ == nullptr || KeepUnit(file_->Lock(deadline));
}

bool Semaphore::Take(const Deadline &deadline) noexcept {
    for (;;) {
        PassSuspendGate();
        if (TryTake()) return true;
        if (deadline.HasPassed()) return false;
        Resting resting;
        if (!WaitAndTake(deadline)) return false;
        if (resting.TryEnd()) return true;
        (void)Release(1, nullptr);  // stopped meanwhile; the end of the rest passes the gate
    }
}

bool Semaphore::Release(int32_t units, int32_t *previous) noexcept {
    const std::lock_guard lock(mutex_);
    if (isAsking_ || units > maximumCount_ - count_) return false;
    if (previous != nullptr) *previous = count_;
    // First the file: once the count says so, the next thread of this process may take it.
    if (file_ != nullptr) file_->Unlock();
    count_ += units;
    if (units == 1) {
        released_.notify_one();
    } else {
        released_.notify_all();
    }
    return true;
}

void Semaphore::StartAnewInChild() {
    // The waiting threads did not come along, but their marks in the condition variable did.
    new (&released_) std::condition_variable;
    if (file_ != nullptr) count_ = initialCount_;
    isAsking_ = false;
}

namespace {

HANDLE InsertSemaphore(Owner<Semaphore> semaphore) {
    if (!semaphore) return 0;
    auto *object = new (std::nothrow) SemaphoreHandle(std::move(semaphore));
    return object == nullptr ? 0 : InsertHandle(HandleKind::Semaphore, object);
}

HANDLE MakeSemaphore(LONG initialCount, LONG maximumCount, std::string_view name, bool &existed) {
    if (name.empty()) {
        return InsertSemaphore(Owner<Semaphore>::Adopt(
            new (std::nothrow) Semaphore(initialCount, maximumCount, nullptr, false)));
    }
    NamedSemaphore named = OpenNamedSemaphore(name, initialCount, maximumCount);
    existed = named.existed;
    return InsertSemaphore(std::move(named.semaphore));
}

HANDLE Refuse(DWORD error) {
    SetLastError(error);
    return 0;
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HANDLE CreateSemaphoreA(void *, LONG initialCount, LONG maximumCount, const char *name) noexcept {
    if (initialCount < 0 || maximumCount < 1 || initialCount > maximumCount) {
        return Refuse(ERROR_INVALID_PARAMETER);
    }
    const std::string_view text = name == nullptr ? std::string_view() : std::string_view(name);
    if (text.size() > MAX_PATH) return Refuse(kNameTooLong);
    if (OperationFails(Operation::Semaphore)) return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    bool existed = false;
    HANDLE semaphore = 0;
    try {
        semaphore = MakeSemaphore(initialCount, maximumCount, text, existed);
    } catch (const std::bad_alloc &) {
        semaphore = 0;
    }
    if (semaphore == 0) return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    SetLastError(existed ? kAlreadyExists : ERROR_SUCCESS);
    return semaphore;
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG *previous) noexcept {
    const Pinned<SemaphoreHandle, HandleKind::Semaphore> pinned(semaphore);
    if (!pinned) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    if (count > 0 && pinned->semaphore->Release(count, previous)) return 1;
    SetLastError(count > 0 ? kTooManyPosts : ERROR_INVALID_PARAMETER);
    return 0;
}
