// SPDX-License-Identifier: Zlib
#include "sprites/frame_order.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

// Takes the finished records with that mark out of the list and chains them by Next. The first, the second
// and the last record always stay. An unlinked record has Self 0.
SpriteRecord *UnlinkFinished(SpriteRecord &first, int32_t mark) noexcept {
    SpriteRecord *unlinked = nullptr;
    SpriteRecord *previous = NextOf(first);
    if (previous == nullptr) return nullptr;
    while (SpriteRecord *record = NextOf(*previous)) {
        SpriteRecord *next = NextOf(*record);
        if (next == nullptr) break;
        if (record->State < kStateFinished || record->Mark != mark) {
            previous = record;
            continue;
        }
        previous->Next = HandleOf(next);
        record->Next = HandleOf(unlinked);
        record->Self = 0;
        unlinked = record;
    }
    return unlinked;
}

void ClearIfUnlinked(AddressWord &link) noexcept {
    const uintptr_t leader = link;
    if (leader != 0 && RecordOf(leader)->Self == 0) link.Replace(leader, 0);
}

}  // namespace

void CleanUpStage() noexcept {
    const std::lock_guard guard(SpriteListLock);
    SpriteRecord *first = SpriteList.load(std::memory_order_relaxed);
    if (first == nullptr || first->CleanUpRequest == 0) return;
    if (SpriteRecord *unlinked = UnlinkFinished(*first, first->CleanUpMark)) {
        // A follower must not look for its leader in freed memory.
        for (SpriteRecord *record = first; record != nullptr; record = NextOf(*record)) {
            ClearIfUnlinked(record->AttachedTo);
            ClearIfUnlinked(record->AnimFrom);
        }
        // In the same hold of the lock: an append must not reach a freed record.
        DisturbFrameOrder();
        RenewFrameOrder(*first);
        FreeRecords(unlinked);
    }
    first->CleanUpMark = 0;
    first->CleanUpRequest = 0;
}

}  // namespace fenlight
