// SPDX-License-Identifier: Zlib
#include "sprites/sprite_thread.h"

#include "fenlight/sprite_thread.h"
#include "frame/frame_semaphore.h"
#include "sprites/frame_order.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {

constinit std::atomic<HANDLE> SpriteThread{0};
constinit HANDLE FrameSemaphore = 0;
constinit SpriteRecord *CurrentSprite = nullptr;
constinit uint32_t FrameStart = 0;
constinit std::atomic<uint32_t> FrameMillis{16};

namespace {

// The low 32 bits of flags that hold no "start suspended".
constexpr DWORD kCreationFlags = 66;

// Negative pauses are none: taken as unsigned they would last for weeks.
void Brake(int32_t milliseconds) noexcept {
    if (milliseconds > 0) Sleep(static_cast<DWORD>(milliseconds));
}

// Runs under SpriteListLock, before the list is given up: whoever sees it empty may start the next thread.
void DetachThread() noexcept {
    CurrentSprite = nullptr;
    ReleaseFrameBuffers();
    CloseFrameSemaphore(FrameSemaphore);
    FrameSemaphore = 0;
    CloseHandle(SpriteThread.exchange(0, std::memory_order_relaxed));
}

DWORD RunSpriteThread(void *) {
    do {
        {
            const FrameTurn turn(FrameSemaphore);
            RunFrame();
        }
        PaceFrame();
    } while (!AreAllFinished() || !EndFinishedList(DetachThread));
    return 0;
}

void RunLivingStages(SpriteRecord &record) noexcept {
    ScrollInStage(record);
    FacingStage(record);
    LookAheadStage(record);
    if (record.BackCollideMode != 0) BackgroundCollisionStage(record);
    MovingRectangleStage(record);
    AnimCopyStage(record);
    FixStage(record);
    DrawStage(record);
}

// What a pass reads even where there is nothing to do.
void PrefetchPass(const SpriteRecord &record) noexcept {
    PrefetchWords(record.FrameNext, record.MoveSource[17]);
}

void TakeListOrder(SpriteRecord &first) noexcept {
    const std::lock_guard guard(SpriteListLock);
    RenewFrameOrder(first);
}

void SetFirstRecord(NumberWord SpriteRecord::*word, int32_t value) noexcept {
    const std::lock_guard guard(SpriteListLock);
    if (SpriteRecord *first = SpriteList.load(std::memory_order_relaxed)) first->*word = value;
}

}  // namespace

bool StartSpriteThread() noexcept {
    FrameSemaphore = OpenFrameSemaphore();
    if (FrameSemaphore == 0) return false;
    const HANDLE thread = CreateThread(nullptr, 0, RunSpriteThread, nullptr, kCreationFlags, nullptr);
    SpriteThread.store(thread, std::memory_order_relaxed);
    if (thread != 0) return true;
    CloseFrameSemaphore(FrameSemaphore);
    FrameSemaphore = 0;
    return false;
}

void RunFrame() noexcept {
    FrameStart = GetTickCount();
    LayerStage();
    CleanUpStage();
    SpriteRecord &first = *SpriteList.load(std::memory_order_acquire);
    TakeListOrder(first);
    BackgroundStage(first);
    WalkFrameOrder(first, PrefetchPass, [&first](SpriteRecord &record) {
        CurrentSprite = &record;
        RunPass(record, first);
    });
    CurrentSprite = nullptr;
    PresentStage(first);
    RestoreStage(first);
}

void RunPass(SpriteRecord &record, const SpriteRecord &first) noexcept {
    Brake(first.SpriteBrake);
    SlowStage(record);
    CageStage(record);
    if (record.State == kStateAlive) RunLivingStages(record);
    if (record.State == kStateFinished) return;
    MoveStage(record);
    AnimStage(record);
}

void PaceFrame() noexcept {
    uint32_t elapsed;
    while ((elapsed = GetTickCount() - FrameStart) < kFrameMillis) Sleep(1);
    FrameMillis.store(elapsed, std::memory_order_relaxed);
    Brake(SpriteList.load(std::memory_order_acquire)->SystemBrake);
}

}  // namespace fenlight

using namespace fenlight;

int32_t StopAllSprites(int32_t mode) noexcept {
    const HANDLE thread = SpriteThread.load(std::memory_order_relaxed);
    if (thread == 0) return 0;
    if (mode == 1) SuspendThread(thread);
    if (mode == 0) ResumeThread(thread);
    return 0;
}

void SpriteThreadBrake(int32_t milliseconds) noexcept {
    SetFirstRecord(&SpriteRecord::SpriteBrake, milliseconds);
}

void SystemThreadBrake(int32_t milliseconds) noexcept {
    SetFirstRecord(&SpriteRecord::SystemBrake, milliseconds);
}

int32_t GetSpritesFps() noexcept {
    return static_cast<int32_t>(1000 / FrameMillis.load(std::memory_order_relaxed));
}
