// SPDX-License-Identifier: Zlib
#include "particles/effects_thread.h"

#include <atomic>
#include <mutex>

#include "frame/frame_semaphore.h"
#include "particles/pixel_effects.h"

namespace fenlight {
namespace {

constexpr int32_t kRun = 111, kEnd = 0;

// Set to kRun under the lock only, so that the thread, which looks once more under it, cannot miss that.
constinit std::atomic<int32_t> runFlag{kEnd};

// Guards everything below; never held during a frame.
constinit std::mutex effectsLock;
constinit bool isAlive = false;
// Of the last thread that was started. Closed by the start of the next one, so that a caller can wait for the
// thread's end.
constinit HANDLE effectsThread = 0;
constinit HANDLE effectsSemaphore = 0;  // the thread's own handle of "mysem"

// Returns when the frame began.
uint32_t TakeFrameTurn() noexcept {
    const FrameTurn turn(effectsSemaphore);
    const uint32_t frameStart = GetTickCount();
    RunEffectsFrame();
    return frameStart;
}

bool IsToRun() noexcept { return runFlag.load(std::memory_order_relaxed) == kRun; }

// False if the thread was asked to go on after all.
bool LeaveTable() noexcept {
    if (IsToRun()) return false;
    const std::lock_guard guard(effectsLock);
    if (IsToRun()) return false;
    CloseFrameSemaphore(effectsSemaphore);
    effectsSemaphore = 0;
    isAlive = false;
    return true;
}

DWORD RunEffectsThread(void *) {
    do {
        PaceEffectsFrame(TakeFrameTurn());
    } while (!LeaveTable());
    return 0;
}

// With effectsLock held.
bool StartThread() noexcept {
    effectsSemaphore = OpenFrameSemaphore();
    if (effectsSemaphore == 0) return false;
    const HANDLE thread = CreateThread(nullptr, 0, RunEffectsThread, nullptr, 0, nullptr);
    if (thread == 0) {
        CloseFrameSemaphore(effectsSemaphore);
        effectsSemaphore = 0;
        return false;
    }
    if (effectsThread != 0) CloseHandle(effectsThread);
    effectsThread = thread;
    isAlive = true;
    return true;
}

}  // namespace

HANDLE StartEffects() noexcept {
    const std::lock_guard guard(effectsLock);
    if (IsToRun()) return 0;
    runFlag.store(kRun, std::memory_order_relaxed);
    if (isAlive || StartThread()) return effectsThread;
    runFlag.store(kEnd, std::memory_order_relaxed);
    return 0;
}

void StopEffects() noexcept { runFlag.store(kEnd, std::memory_order_relaxed); }

bool IsEffectsThreadAlive() noexcept {
    const std::lock_guard guard(effectsLock);
    return isAlive;
}

void PaceEffectsFrame(uint32_t frameStart) noexcept {
    while (GetTickCount() - frameStart < kEffectsFrameMillis) Sleep(1);
}

}  // namespace fenlight

using namespace fenlight;

uintptr_t InitPixelEffects() noexcept { return StartEffects(); }

int32_t DeInitPixelEffects() noexcept {
    StopEffects();
    return 0;
}
