// SPDX-License-Identifier: Zlib
#include "platform/system/handle_table.h"

#include <array>
#include <atomic>

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
    std::atomic<uint32_t> nextFree{0};
    uint32_t generation = 0;  // of the last handle; touched only by the thread that owns the free slot
};

std::array<Slot, kSlotCount> slots;
std::atomic<uint32_t> neverUsed{1};  // slots from here on were never given out; slot 0 stays unused
// Head of the stack of free slots in the low half, a count against the ABA fault in the high half.
std::atomic<uint64_t> freeSlots{0};

constexpr uint64_t Tag(HandleKind kind, uint32_t generation) {
    return kAlive | (uint64_t{generation} << 40) | (uint64_t{static_cast<uint8_t>(kind)} << 32);
}

constexpr uint32_t SlotOf(uintptr_t handle) { return static_cast<uint32_t>(handle >> 1) & (kSlotCount - 1); }
constexpr uint32_t GenerationOf(uintptr_t handle) {
    return static_cast<uint32_t>(handle >> (kSlotBits + 1)) & kGenerationMask;
}
constexpr bool HasShapeOfHandle(uintptr_t handle) { return (handle & 1) != 0 && handle <= 0x7FFFFFFFu; }

uint32_t TakeFreeSlot() {
    uint64_t head = freeSlots.load(std::memory_order_acquire);
    while (static_cast<uint32_t>(head) != 0) {
        const uint32_t slot = static_cast<uint32_t>(head);
        const uint64_t next = ((head >> 32) + 1) << 32 | slots[slot].nextFree.load(std::memory_order_relaxed);
        if (freeSlots.compare_exchange_weak(head, next, std::memory_order_acq_rel)) return slot;
    }
    uint32_t fresh = neverUsed.load(std::memory_order_relaxed);
    while (fresh < kSlotCount) {
        if (neverUsed.compare_exchange_weak(fresh, fresh + 1, std::memory_order_relaxed)) return fresh;
    }
    return 0;
}

void GiveBackSlot(uint32_t slot) {
    uint64_t head = freeSlots.load(std::memory_order_relaxed);
    uint64_t next = 0;
    do {
        slots[slot].nextFree.store(static_cast<uint32_t>(head), std::memory_order_relaxed);
        next = ((head >> 32) + 1) << 32 | slot;
    } while (!freeSlots.compare_exchange_weak(head, next, std::memory_order_acq_rel));
}

void Recycle(uint32_t slot) {
    HandleObject *object = slots[slot].object.exchange(nullptr, std::memory_order_relaxed);
    GiveBackSlot(slot);
    delete object;
}

}  // namespace

uintptr_t InsertHandle(HandleKind kind, HandleObject *object) noexcept {
    const uint32_t slot = TakeFreeSlot();
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
    const uint32_t end = neverUsed.load(std::memory_order_relaxed);
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
