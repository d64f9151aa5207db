// SPDX-License-Identifier: Zlib
#include <pthread.h>

#include <new>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "platform/system/suspend_gate.h"
#include "platform/system/thread_handle.h"

namespace fenlight::platform {
namespace {

using Notification = void (*)(DWORD reason);

constexpr DWORD kCreateSuspended = 4;
constexpr DWORD kSignalRefused = 156;

std::atomic<Notification> notification{nullptr};
std::atomic<DWORD> lastThreadId{0};

struct ThreadStart {
    LPTHREAD_START_ROUTINE routine;
    void *parameter;
    ThreadRecord *record;  // carries one owner's count over to the thread
};

void Notify(DWORD reason) {
    if (const Notification notify = notification.load(std::memory_order_acquire)) notify(reason);
}

// Ends the record also where the start routine leaves by pthread_exit.
class RunningThread {
  public:
    explicit RunningThread(ThreadRecord *record) : record_(Owner<ThreadRecord>::Adopt(record)) {
        ThreadRecord::SetCurrent(record);
        record_->EndRest();
    }
    RunningThread(const RunningThread &) = delete;
    RunningThread &operator=(const RunningThread &) = delete;
    ~RunningThread() {
        Notify(DLL_THREAD_DETACH);
        ThreadRecord::SetCurrent(nullptr);
        record_->Finish(exitCode_);
    }
    void SetExitCode(DWORD code) { exitCode_ = code; }

  private:
    Owner<ThreadRecord> record_;
    DWORD exitCode_ = 0;
};

void *RunThread(void *argument) {
    const ThreadStart start = *static_cast<ThreadStart *>(argument);
    delete static_cast<ThreadStart *>(argument);
    RunningThread running(start.record);
    Notify(DLL_THREAD_ATTACH);
    running.SetExitCode(start.routine(start.parameter));
    return nullptr;
}

// A stack smaller than the system's default is not worth the overflow it may bring.
bool SetStackSize(pthread_attr_t &attributes, size_t stackSize) {
    size_t usual = 0;
    pthread_attr_getstacksize(&attributes, &usual);
    constexpr size_t kPage = 4096;
    if (stackSize <= usual) return true;
    if (stackSize > PTRDIFF_MAX) return false;
    return pthread_attr_setstacksize(&attributes, (stackSize + kPage - 1) / kPage * kPage) == 0;
}

bool StartDetached(ThreadStart *start, size_t stackSize) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    pthread_t thread{};
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    const bool isStarted =
        SetStackSize(attributes, stackSize) && pthread_create(&thread, &attributes, RunThread, start) == 0;
    pthread_attr_destroy(&attributes);
    return isStarted;
}

// The handle comes first: a thread that runs cannot be taken back when the table is full.
HANDLE StartThread(LPTHREAD_START_ROUTINE routine, void *parameter, size_t stackSize, bool isSuspended) {
    auto *record = new (std::nothrow) ThreadRecord(isSuspended ? 1 : 0);
    if (record == nullptr) return 0;
    auto owner = Owner<ThreadRecord>::Adopt(record);
    auto *handleObject = new (std::nothrow) ThreadHandle(owner);
    if (handleObject == nullptr) return 0;
    const HANDLE handle = InsertHandle(HandleKind::Thread, handleObject);
    if (handle == 0) return 0;
    auto *start = new (std::nothrow) ThreadStart{routine, parameter, record};
    record->AddOwner();
    if (start != nullptr && StartDetached(start, stackSize)) return handle;
    delete start;
    record->Finish(0);
    record->DropOwner();
    RemoveHandle(HandleKind::Thread, handle);
    return 0;
}

}  // namespace

Owner<ThreadRecord> FindThread(HANDLE thread) {
    const Pinned<ThreadHandle, HandleKind::Thread> pinned(thread);
    if (pinned) return pinned->record;
    SetLastError(ERROR_INVALID_HANDLE);
    return {};
}

}  // namespace fenlight::platform

using namespace fenlight::platform;

HANDLE CreateThread(void *, size_t stackSize, LPTHREAD_START_ROUTINE start, void *parameter, DWORD flags,
                    DWORD *threadId) noexcept {
    if (start == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const bool isSuspended = (flags & kCreateSuspended) != 0;
    const HANDLE thread =
        OperationFails(Operation::Thread) ? 0 : StartThread(start, parameter, stackSize, isSuspended);
    if (thread == 0) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    if (threadId != nullptr) *threadId = lastThreadId.fetch_add(4, std::memory_order_relaxed) + 4;
    return thread;
}

DWORD SuspendThread(HANDLE thread) noexcept {
    const auto record = FindThread(thread);
    if (!record) return ThreadRecord::kRefused;
    const DWORD previous = record->Suspend();
    if (previous == ThreadRecord::kRefused) {
        SetLastError(record->HasEnded() ? ERROR_ACCESS_DENIED : kSignalRefused);
    }
    return previous;
}

DWORD ResumeThread(HANDLE thread) noexcept {
    const auto record = FindThread(thread);
    return record ? record->Resume() : ThreadRecord::kRefused;
}

BOOL GetExitCodeThread(HANDLE thread, DWORD *exitCode) noexcept {
    const auto record = FindThread(thread);
    if (!record) return 0;
    if (exitCode == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    *exitCode = record->ExitCode();
    return 1;
}

void SetThreadNotification(void (*notify)(DWORD reason)) noexcept {
    notification.store(notify, std::memory_order_release);
}
