// SPDX-License-Identifier: Zlib
#include "sprites/frame_order.h"

#include <array>

namespace fenlight {

namespace {

// How many records before its turn a record is fetched: far enough for main memory, near enough for the
// first-level cache.
constexpr uint32_t kLead = 4;

struct Tail {
    SpriteRecord *last = nullptr;
    std::array<SpriteRecord *, kLead> recent{};
    uint32_t turn = 0;
};

constinit Tail tail;
constinit bool isDisturbed = false;

}  // namespace

void StartFrameOrder(SpriteRecord &first) noexcept {
    tail = {};
    tail.last = tail.recent[tail.turn++] = &first;
    first.FrameNext.store(nullptr, std::memory_order_relaxed);
    first.FrameAhead.store(nullptr, std::memory_order_relaxed);
    isDisturbed = false;
}

void AppendToFrameOrder(SpriteRecord &record) noexcept {
    record.FrameNext.store(nullptr, std::memory_order_relaxed);
    record.FrameAhead.store(nullptr, std::memory_order_relaxed);
    SpriteRecord *&behind = tail.recent[tail.turn++ % kLead];
    if (behind != nullptr) behind->FrameAhead.store(&record, std::memory_order_relaxed);
    behind = &record;
    tail.last->FrameNext.store(&record, std::memory_order_release);
    tail.last = &record;
}

SpriteRecord &LastOfFrame() noexcept { return *tail.last; }

void DisturbFrameOrder() noexcept { isDisturbed = true; }

uint32_t CountFrameOrder() noexcept { return tail.turn; }

bool HasListOrder() noexcept { return !isDisturbed; }

void RenewFrameOrder(SpriteRecord &first) noexcept {
    if (!isDisturbed) return;
    StartFrameOrder(first);
    for (SpriteRecord *record = NextOf(first); record != nullptr; record = NextOf(*record))
        AppendToFrameOrder(*record);
}

}  // namespace fenlight
