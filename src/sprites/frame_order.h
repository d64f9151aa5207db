// SPDX-License-Identifier: Zlib
// The list in the order in which the running frame walks it.
//
// Next changes at any moment, because SwapSpriteLayers relinks on the caller's thread. A frame that followed
// it could pass a sprite twice or not at all, and would then leave pictures behind for good where the sprite
// was drawn but not restored; between two writes of a swap it could go round in a circle. So the sprite
// thread follows a chain of its own, FrameNext. It holds the same records as the list, is put in the list's
// order at the start of a frame, and only grows at its end while the frame runs: each walk meets each record
// once. Written under SpriteListLock, and rearranged by the sprite thread alone, which walks without a lock.
#pragma once

#include "sprites/sprite_record.h"

namespace fenlight {

// A new chain of this record alone.
void StartFrameOrder(SpriteRecord &first) noexcept;
// The record that follows in no frame so far.
void AppendToFrameOrder(SpriteRecord &record) noexcept;
// A record of the list close to its end.
SpriteRecord &LastOfFrame() noexcept;
// The links have changed: the chain is to be put in order before the next frame.
void DisturbFrameOrder() noexcept;
// Puts the chain in the list's order if that has changed. The sprite thread, between frames.
void RenewFrameOrder(SpriteRecord &first) noexcept;
// Records in the chain, and so in the list. The caller holds SpriteListLock.
uint32_t CountFrameOrder() noexcept;
// Is the chain in the list's order? The caller holds SpriteListLock.
bool HasListOrder() noexcept;

inline SpriteRecord *FrameNextOf(const SpriteRecord &record) noexcept {
    return record.FrameNext.load(std::memory_order_acquire);
}

// All words of a record from one to another.
template <class First, class Last>
void PrefetchWords(const First &first, const Last &last) noexcept {
    constexpr ptrdiff_t kCacheLine = 64;
    const auto *end = reinterpret_cast<const char *>(&last);
    for (auto *line = reinterpret_cast<const char *>(&first); line < end; line += kCacheLine)
        __builtin_prefetch(line);
    __builtin_prefetch(end);
}

// Records lie anywhere in memory, so each walk asks for what it will read of a record some records before.
template <class Prefetch, class Visit>
void WalkFrameOrder(SpriteRecord &first, Prefetch prefetch, Visit visit) noexcept {
    SpriteRecord *record = &first;
    while (record != nullptr) {
        if (const SpriteRecord *ahead = record->FrameAhead.load(std::memory_order_relaxed)) prefetch(*ahead);
        visit(*record);
        record = FrameNextOf(*record);
    }
}

// Visits the records in the list's order until `visit` says no. The caller holds SpriteListLock, under which
// the chain is as good as the list once it has the same order, and can be read ahead.
template <class Prefetch, class Visit>
void WalkList(SpriteRecord &first, Prefetch prefetch, Visit visit) noexcept {
    const bool isChained = HasListOrder();
    SpriteRecord *record = &first;
    while (record != nullptr) {
        if (const SpriteRecord *ahead = record->FrameAhead.load(std::memory_order_relaxed)) prefetch(*ahead);
        if (!visit(*record)) return;
        record = isChained ? FrameNextOf(*record) : NextOf(*record);
    }
}

}  // namespace fenlight
