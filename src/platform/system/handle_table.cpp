// SPDX-License-Identifier: Zlib
#include "platform/system/handle_table.h"

#include <array>
#include <atomic>
#include <mutex>

namespace fenlight::platform {
namespace {

// A handle's number: generation in bits 17 to 30, slot in bits 1 to 16, bit 0 set. So it is odd, below 2^31,
// and, as generations start at 1, never 0 to 3.
constexpr unsigned kSlotBits = 16;
constexpr uint32_t kSlotCount = 1u << kSlotBits;
constexpr uint32_t kGenerationMask = (1u << 14) - 1;

// A slot's state word: pins in bits 0 to 31, kind in bits 32 to 39, generation in bits 40 to 53, and the bit
// that says whether the handle is alive. A slot goes back to the free list when it is dead and without pins;
// the thread that brings that about, and only that one, recycles it.
constexpr uint64_t kPin = 1;
constexpr uint64_t kPinMask = 0xFFFFFFFFu;
constexpr uint64_t kAlive = uint64_t{1} << 60;

struct Slot {
    std::atomic<uint64_t> state{0};
    std::atomic<HandleObject *> object{nullptr};
    uint32_t generation = 0;  // of the last handle; touched only by the thread that owns the free slot
    uint32_t nextFree = 0;    // under the queue's lock
};

std::array<Slot, kSlotCount> slots;

// Free slots wait in a queue, the longest first. A slot that was reused at once would run through its
// generations in a busy program, and a stale handle would name a live object again; through the queue that
// takes a thousand times as long. Only creating and deleting come here, never a look-up.
class FreeSlots {
  public:
    uint32_t Take() noexcept {
        const std::lock_guard guard(lock_);
        if (waiting_ > kShortestQueue || neverUsed_ == kSlotCount) return TakeOldest();
        const uint32_t slot = neverUsed_.load(std::memory_order_relaxed);
        neverUsed_.store(slot + 1, std::memory_order_relaxed);
        return slot;
    }
    void GiveBack(uint32_t slot) noexcept {
        const std::lock_guard guard(lock_);
        slots[slot].nextFree = 0;
        (newest_ == 0 ? oldest_ : slots[newest_].nextFree) = slot;
        newest_ = slot;
        ++waiting_;
    }
    // Slots from here on were never given out.
    uint32_t End() const noexcept { return neverUsed_.load(std::memory_order_relaxed); }

  private:
    static constexpr uint32_t kShortestQueue = 1024;

    uint32_t TakeOldest() noexcept {
        const uint32_t slot = oldest_;
        if (slot == 0) return 0;
        oldest_ = slots[slot].nextFree;
        if (oldest_ == 0) newest_ = 0;
        --waiting_;
        return slot;
    }

    std::mutex lock_;
    uint32_t oldest_ = 0;  // slot 0 stays unused and ends the queue
    uint32_t newest_ = 0;
    uint32_t waiting_ = 0;
    std::atomic<uint32_t> neverUsed_{1};
};

constinit FreeSlots freeSlots;

constexpr uint64_t Tag(HandleKind kind, uint32_t generation) {
    return kAlive | (uint64_t{generation} << 40) | (uint64_t{static_cast<uint8_t>(kind)} << 32);
}

constexpr uint32_t SlotOf(uintptr_t handle) { return static_cast<uint32_t>(handle >> 1) & (kSlotCount - 1); }
constexpr uint32_t GenerationOf(uintptr_t handle) {
    return static_cast<uint32_t>(handle >> (kSlotBits + 1)) & kGenerationMask;
}
constexpr bool HasShapeOfHandle(uintptr_t handle) { return (handle & 1) != 0 && handle <= 0x7FFFFFFFu; }

void Recycle(uint32_t slot) {
    HandleObject *object = slots[slot].object.exchange(nullptr, std::memory_order_relaxed);
    freeSlots.GiveBack(slot);
    delete object;
}

}  // namespace

uintptr_t InsertHandle(HandleKind kind, HandleObject *object) noexcept {
    const uint32_t slot = freeSlots.Take();
    if (slot == 0) {
        delete object;
        return 0;
    }
    Slot &entry = slots[slot];
    entry.generation = entry.generation % kGenerationMask + 1;
    entry.object.store(object, std::memory_order_relaxed);
    entry.state.store(Tag(kind, entry.generation), std::memory_order_release);
    return uintptr_t{entry.generation} << (kSlotBits + 1) | uintptr_t{slot} << 1 | 1;
}

bool RemoveHandle(HandleKind kind, uintptr_t handle) noexcept {
    if (!HasShapeOfHandle(handle)) return false;
    Slot &entry = slots[SlotOf(handle)];
    const uint64_t tag = Tag(kind, GenerationOf(handle));
    uint64_t state = entry.state.load(std::memory_order_relaxed);
    do {
        if ((state & ~kPinMask) != tag) return false;
    } while (!entry.state.compare_exchange_weak(state, state & ~kAlive, std::memory_order_acq_rel));
    if ((state & kPinMask) == 0) Recycle(SlotOf(handle));
    return true;
}

HandleKind KindOfHandle(uintptr_t handle) noexcept {
    if (!HasShapeOfHandle(handle)) return HandleKind::None;
    const uint64_t state = slots[SlotOf(handle)].state.load(std::memory_order_relaxed);
    const auto kind = static_cast<HandleKind>((state >> 32) & 0xFF);
    return (state & ~kPinMask) == Tag(kind, GenerationOf(handle)) ? kind : HandleKind::None;
}

int CountHandles(HandleKind kind) noexcept {
    int count = 0;
    const uint32_t end = freeSlots.End();
    for (uint32_t slot = 1; slot < end; ++slot) {
        const uint64_t state = slots[slot].state.load(std::memory_order_relaxed);
        if ((state & kAlive) != 0 && static_cast<HandleKind>((state >> 32) & 0xFF) == kind) ++count;
    }
    return count;
}

namespace detail {

HandleObject *PinHandle(HandleKind kind, uintptr_t handle) noexcept {
    if (!HasShapeOfHandle(handle)) return nullptr;
    Slot &entry = slots[SlotOf(handle)];
    const uint64_t tag = Tag(kind, GenerationOf(handle));
    uint64_t state = entry.state.load(std::memory_order_relaxed);
    do {
        if ((state & ~kPinMask) != tag) return nullptr;
    } while (!entry.state.compare_exchange_weak(state, state + kPin, std::memory_order_acquire,
                                                std::memory_order_relaxed));
    return entry.object.load(std::memory_order_relaxed);
}

void UnpinHandle(uintptr_t handle) noexcept {
    Slot &entry = slots[SlotOf(handle)];
    const uint64_t before = entry.state.fetch_sub(kPin, std::memory_order_acq_rel);
    if ((before & kAlive) == 0 && (before & kPinMask) == kPin) Recycle(SlotOf(handle));
}

}  // namespace detail
}  // namespace fenlight::platform
