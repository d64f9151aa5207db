// SPDX-License-Identifier: Zlib
#include "frame/frame_semaphore.h"

namespace fenlight {

HANDLE OpenFrameSemaphore() noexcept { return CreateSemaphoreA(nullptr, 1, 1, "mysem"); }

void CloseFrameSemaphore(HANDLE semaphore) noexcept { CloseHandle(semaphore); }

FrameTurn::FrameTurn(HANDLE semaphore) noexcept
    : semaphore_(semaphore), isHeld_(WaitForSingleObject(semaphore, INFINITE) == WAIT_OBJECT_0) {}

FrameTurn::~FrameTurn() {
    if (isHeld_) ReleaseSemaphore(semaphore_, 1, nullptr);
}

}  // namespace fenlight
