// SPDX-License-Identifier: Zlib
#include "particles/star_thread.h"

#include <mutex>

#include "fenlight/platform/system.h"
#include "frame/frame_semaphore.h"

namespace fenlight {
namespace {

// Held while a field is made or given back, never during a frame. Guards the two handles.
constinit std::mutex starLock;
constinit HANDLE starThread = 0;
constinit HANDLE starSemaphore = 0;  // the thread's own handle of "mysem"

constinit std::atomic<int32_t> starsFinished{0};

// Acquire, and release in NoStars: what a caller read of the records before it ended the field comes before
// their end.
int32_t StopMode() noexcept { return StarSettings.stopMode.load(std::memory_order_acquire); }

// Returns when the frame began.
uint32_t TakeFrameTurn() noexcept {
    const FrameTurn turn(starSemaphore);
    const uint32_t frameStart = GetTickCount();
    RunStarFrame();
    return frameStart;
}

DWORD RunStarThread(void *) {
    int32_t stopMode;
    do {
        PaceStarFrame(TakeFrameTurn());
        stopMode = StopMode();
    } while (StarFieldGoesOn(stopMode));
    LeaveStarField(stopMode);
    return 0;
}

// With starLock held.
void CloseHandles() noexcept {
    CloseFrameSemaphore(starSemaphore);
    CloseHandle(starThread);
    starSemaphore = starThread = 0;
}

// With starLock held, so the thread cannot come to its end before all is noted.
bool StartStarThread() noexcept {
    starSemaphore = OpenFrameSemaphore();
    if (starSemaphore == 0) return false;
    starThread = CreateThread(nullptr, 0, RunStarThread, nullptr, 0, nullptr);
    if (starThread != 0) return true;
    CloseFrameSemaphore(starSemaphore);
    starSemaphore = 0;
    return false;
}

}  // namespace

StarRecord *StartStars(const StarArguments &arguments) noexcept {
    const std::lock_guard guard(starLock);
    if (!MakeStarField(arguments)) return nullptr;
    if (!StartStarThread()) {
        FreeStarField();
        return nullptr;
    }
    starsFinished.store(0, std::memory_order_relaxed);
    return CurrentStars();
}

void PaceStarFrame(uint32_t frameStart) noexcept {
    const auto isTooEarly = [frameStart] {
        const int32_t delay = StarSettings.frameDelay.load(std::memory_order_relaxed);
        // Below 0 there is no pause: taken as unsigned it would last for weeks.
        return delay > 0 && GetTickCount() - frameStart < static_cast<uint32_t>(delay);
    };
    while (isTooEarly()) Sleep(1);
}

void LeaveStarField(int32_t stopMode) noexcept {
    if (stopMode != kStopAsDrawn) EraseStars();
    const std::lock_guard guard(starLock);
    FreeStarField();
    CloseHandles();
    starsFinished.store(1, std::memory_order_release);
}

}  // namespace fenlight

using namespace fenlight;

void *Stars(uintptr_t destDC, uintptr_t backgroundDC, int32_t left, int32_t top, int32_t right,
            int32_t bottom, int32_t count, int32_t frameDelay, int32_t flags) noexcept {
    return StartStars({destDC, backgroundDC, left, top, right, bottom, count, frameDelay, flags});
}

void NoStars(int32_t mode) noexcept { StarSettings.stopMode.store(mode, std::memory_order_release); }

int32_t StatusStars() noexcept { return starsFinished.load(std::memory_order_acquire); }

void OptionStars(int32_t originX, int32_t originY, int32_t biasX, int32_t biasY,
                 int32_t frameDelay) noexcept {
    SetStarOptions(originX, originY, biasX, biasY, frameDelay);
}
