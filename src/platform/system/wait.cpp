// SPDX-License-Identifier: Zlib
// What works on more than one kind of handle. A wait holds the object itself and no pin of the handle: the
// handle may be closed meanwhile, and a stopped thread must not keep its slot.
#include "fenlight/platform/system.h"
#include "platform/system/semaphore.h"
#include "platform/system/suspend_gate.h"
#include "platform/system/thread_handle.h"

namespace fenlight::platform {
namespace {

Owner<Semaphore> FindSemaphore(HANDLE handle) {
    const Pinned<SemaphoreHandle, HandleKind::Semaphore> pinned(handle);
    return pinned ? pinned->semaphore : Owner<Semaphore>();
}

bool WaitForThread(ThreadRecord &thread, const Deadline &deadline) {
    const Resting resting;
    return thread.WaitForEnd(deadline);
}

DWORD WaitResult(bool isSignalled) { return isSignalled ? WAIT_OBJECT_0 : WAIT_TIMEOUT; }

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept {
    switch (KindOfHandle(object)) {
        case HandleKind::Semaphore:
            if (const auto semaphore = FindSemaphore(object)) {
                return WaitResult(semaphore->Take(Deadline(milliseconds)));
            }
            break;
        case HandleKind::Thread:
            if (const auto thread = FindThread(object)) {
                return WaitResult(WaitForThread(*thread, Deadline(milliseconds)));
            }
            break;
        default:
            break;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}

BOOL CloseHandle(HANDLE object) noexcept {
    for (const HandleKind kind : {HandleKind::File, HandleKind::Semaphore, HandleKind::Thread}) {
        if (RemoveHandle(kind, object)) return 1;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
}
