// SPDX-License-Identifier: Zlib
#include "sprites/sprite_list.h"

#include <new>

#include "fenlight/platform/system.h"
#include "sprites/frame_order.h"
#include "sprites/line_path.h"
#include "sprites/sprite_thread.h"
#include "sprites/waypoint_table.h"

namespace fenlight {

constinit std::atomic<SpriteRecord *> SpriteList{nullptr};
constinit std::mutex SpriteListLock;

namespace {

// Counts the lists that have come to their end. DeleteAllSprites sleeps on it.
constinit std::atomic<uint32_t> ListEnds{0};

SpriteRecord *AllocateRecord() noexcept {
    void *block = GlobalAlloc(GPTR, sizeof(SpriteRecord));
    return block == nullptr ? nullptr : new (block) SpriteRecord;
}

void StoreMoveSources(SpriteRecord &record, int32_t sourceX, int32_t sourceY) noexcept {
    for (int32_t direction = 0; direction <= 8; ++direction) {
        record.MoveSourceX(direction) = sourceX;
        record.MoveSourceY(direction) = sourceY;
    }
}

// The caller holds SpriteListLock.
void AppendRecord(SpriteRecord &record) noexcept {
    SpriteRecord *last = &LastOfFrame();
    while (SpriteRecord *next = NextOf(*last)) last = next;
    last->Next = HandleOf(&record);
    AppendToFrameOrder(record);
}

void CopyWords(const SpriteRecord &source, SpriteRecord &copy) noexcept {
    for (int32_t position = 0; position < kPositionEnd; position += 4)
        WriteWord(copy, position, ReadWord(source, position));
}

// An unlinked copy of a linked record; nullptr without memory. The caller holds SpriteListLock.
SpriteRecord *DuplicateRecord(const SpriteRecord &source) noexcept {
    SpriteRecord *copy = AllocateRecord();
    if (copy == nullptr) return nullptr;
    CopyWords(source, *copy);
    CopyLinePath(source, *copy);  // once more, whole: the thread may have been at work on it
    copy->Next = 0;
    copy->Self = HandleOf(copy);
    if (CopyWaypointTable(source, *copy)) return copy;
    FreeRecord(*copy);
    return nullptr;
}

}  // namespace

SpriteRecord *MakeRecord(const SpriteArguments &arguments) noexcept {
    SpriteRecord *record = AllocateRecord();
    if (record == nullptr) return nullptr;
    record->ImageDC = arguments.imageDC;
    record->ScreenDC = arguments.screenDC;
    record->BackDC = arguments.backDC;
    record->CleanDC = arguments.cleanDC;
    record->SourceX = arguments.sourceX;
    record->SourceY = arguments.sourceY;
    record->Width = arguments.width;
    record->Height = arguments.height;
    record->FrameCount = arguments.frameCount;
    record->Frame = arguments.frame;
    record->FrameDelay = arguments.frameDelay;
    record->X = record->TargetX = arguments.x;
    record->Y = record->TargetY = arguments.y;
    record->SpeedX = arguments.speedX;
    record->SpeedY = arguments.speedY;
    StoreMoveSources(*record, arguments.sourceX, arguments.sourceY);
    record->RectLeft = record->RectTop = record->RectRight = record->RectBottom = -1;
    record->Self = HandleOf(record);
    return record;
}

void StartList(SpriteRecord &first) noexcept {
    StartFrameOrder(first);
    SpriteList.store(&first, std::memory_order_release);
}

bool LinkRecord(SpriteRecord &record) noexcept {
    const std::lock_guard guard(SpriteListLock);
    if (SpriteList.load(std::memory_order_relaxed) != nullptr) {
        AppendRecord(record);
        return true;
    }
    StartList(record);
    if (StartSpriteThread()) return true;
    SpriteList.store(nullptr, std::memory_order_release);
    return false;
}

void EraseSprite(SpriteRecord &record) noexcept {
    // In this order: with another FixMode the thread would leave the picture on the screen.
    record.FixMode = 0;
    record.State = kStateErased;
}

bool AreAllFinished() noexcept {
    SpriteRecord *record = SpriteList.load(std::memory_order_acquire);
    while (record != nullptr && record->State == kStateFinished) record = FrameNextOf(*record);
    return record == nullptr;
}

bool EndFinishedList(void (*detach)() noexcept) noexcept {
    SpriteRecord *record;
    {
        const std::lock_guard guard(SpriteListLock);
        if (!AreAllFinished()) return false;
        detach();
        record = SpriteList.exchange(nullptr, std::memory_order_acq_rel);
        ListEnds.fetch_add(1, std::memory_order_release);
    }
    ListEnds.notify_all();
    FreeRecords(record);
    return true;
}

void FreeRecord(SpriteRecord &record) noexcept {
    FreeWaypointTable(record);
    record.~SpriteRecord();
    GlobalFree(&record);
}

void FreeRecords(SpriteRecord *record) noexcept {
    while (record != nullptr) {
        SpriteRecord *next = NextOf(*record);
        FreeRecord(*record);
        record = next;
    }
}

}  // namespace fenlight

using namespace fenlight;

uintptr_t InitSprite(uintptr_t imageDC, uintptr_t screenDC, uintptr_t backDC, uintptr_t cleanDC,
                     int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, int32_t frameCount,
                     int32_t frame, int32_t frameDelay, int32_t x, int32_t y, int32_t speedX,
                     int32_t speedY) noexcept {
    const SpriteArguments block{imageDC,    screenDC, backDC,     cleanDC, sourceX, sourceY, width, height,
                                frameCount, frame,    frameDelay, x,       y,       speedX,  speedY};
    return InitSprite5(&block);
}

uintptr_t InitSprite5(const SpriteArguments *block) noexcept {
    if (block == nullptr) return 0;
    SpriteRecord *record = MakeRecord(*block);
    if (record == nullptr) return 0;
    if (LinkRecord(*record)) return HandleOf(record);
    FreeRecord(*record);
    return 0;
}

uintptr_t CopySprite(uintptr_t sprite) noexcept {
    const std::lock_guard guard(SpriteListLock);
    const bool isEmpty = SpriteList.load(std::memory_order_relaxed) == nullptr;
    if (sprite == 0 || isEmpty) return 0;
    SpriteRecord *copy = DuplicateRecord(*RecordOf(sprite));
    if (copy != nullptr) AppendRecord(*copy);
    return HandleOf(copy);
}

int32_t DeleteSprite(uintptr_t sprite) noexcept {
    const std::lock_guard guard(SpriteListLock);
    const bool isEmpty = SpriteList.load(std::memory_order_relaxed) == nullptr;
    if (sprite != 0 && !isEmpty) EraseSprite(*RecordOf(sprite));
    return 0;
}

int32_t DeleteAllSprites() noexcept {
    uint32_t endsBefore;
    {
        const std::lock_guard guard(SpriteListLock);
        SpriteRecord *first = SpriteList.load(std::memory_order_relaxed);
        if (first == nullptr) return 0;
        for (SpriteRecord *record = first; record != nullptr; record = NextOf(*record)) EraseSprite(*record);
        endsBefore = ListEnds.load(std::memory_order_relaxed);
    }
    ListEnds.wait(endsBefore, std::memory_order_acquire);
    return 0;
}

int32_t CountSprites() noexcept {
    const std::lock_guard guard(SpriteListLock);
    int32_t count = 1;
    SpriteRecord *record = SpriteList.load(std::memory_order_relaxed);
    for (; record != nullptr && record->Next != 0; record = NextOf(*record))
        if (record->State == kStateAlive) ++count;
    return count;
}

int32_t CountAllSprites() noexcept {
    const std::lock_guard guard(SpriteListLock);
    int32_t count = 1;
    SpriteRecord *record = SpriteList.load(std::memory_order_relaxed);
    for (; record != nullptr && record->Next != 0; record = NextOf(*record)) ++count;
    return count;
}

int32_t CleanUp(int32_t mark) noexcept {
    const std::lock_guard guard(SpriteListLock);
    SpriteRecord *first = SpriteList.load(std::memory_order_relaxed);
    if (first == nullptr || first->CleanUpRequest != 0) return 0;
    first->CleanUpMark = mark;
    first->CleanUpRequest = 1;
    return 0;
}
