// SPDX-License-Identifier: Zlib
// The exported routines over blocks of memory: count checks, then one call.
#include <cstring>

#include "data/byte_search.h"
#include "data/memory_copies.h"
#include "data/memory_kernels.h"
#include "data/memory_plain.h"
#include "fenlight/fx_buffer.h"
#include "fenlight/memory.h"

namespace fenlight {
namespace {

// Sums addresses as numbers: an offset may be negative, and a caller may keep the base anywhere.
const uint8_t *At(const void *memory, int32_t offset) noexcept {
    return reinterpret_cast<const uint8_t *>(reinterpret_cast<uintptr_t>(memory) +
                                             static_cast<uintptr_t>(int64_t{offset}));
}

uint8_t *At(void *memory, int32_t offset) noexcept {
    return const_cast<uint8_t *>(At(static_cast<const void *>(memory), offset));
}

template <int kIndex>
int32_t CountElements(const void *memory, int32_t offset, int32_t count, int32_t value) noexcept {
    if (count <= 0) return 0;
    return static_cast<int32_t>(
        ChooseMemoryKernels().countEqual[kIndex](At(memory, offset), count, static_cast<uint32_t>(value)));
}

// Writing runs twice as fast as reading. Vectors read ahead of what they write, which is the walk from
// element to element as long as the target lies elsewhere, or ends where the source does or before.
template <int kIndex, typename Narrow, typename Wide>
void WidenUpwards(uint8_t *target, const uint8_t *source, int64_t count) noexcept {
    const auto to = reinterpret_cast<uintptr_t>(target), from = reinterpret_cast<uintptr_t>(source);
    const uint64_t narrow = static_cast<uint64_t>(count) * sizeof(Narrow);
    const bool isApart = to >= from + narrow || from >= to + narrow;
    if (isApart) return ChooseMemoryKernels().widen[kIndex](target, source, count);
    WidenPlain<Narrow, Wide>(target, source, count);
}

template <typename Element>
void ComputeStrided(uint8_t *memory, int64_t count, int64_t step, const Arithmetic &arithmetic) noexcept {
    for (int64_t i = 0; i < count; ++i) {
        uint8_t *const at = memory + i * step;
        StoreElement(at, 0, Apply(arithmetic, LoadElement<Element>(at, 0)));
    }
}

template <int kIndex, typename Element>
void ComputeElements(uint8_t *memory, int64_t count, int64_t step, const Arithmetic &arithmetic) noexcept {
    if (step == sizeof(Element)) return ChooseMemoryKernels().compute[kIndex](memory, count, arithmetic);
    ComputeStrided<Element>(memory, count, step, arithmetic);
}

template <size_t kCount>
void StoreLongs(uint8_t *memory, const int32_t (&values)[kCount]) noexcept {
    std::memcpy(memory, values, sizeof values);
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t CountBytes(const void *memory, int32_t offset, int32_t count, int32_t value) noexcept {
    return CountElements<0>(memory, offset, count, value);
}

int32_t CountWords(const void *memory, int32_t offset, int32_t count, int32_t value) noexcept {
    return CountElements<1>(memory, offset, count, value);
}

int32_t CountLongs(const void *memory, int32_t offset, int32_t count, int32_t value) noexcept {
    return CountElements<2>(memory, offset, count, value);
}

int32_t CountFirstBytes(const void *memory, int32_t offset, int32_t length, int32_t value) noexcept {
    if (length <= 0) return 0;
    return static_cast<int32_t>(
        ChooseMemoryKernels().countLeading(At(memory, offset), length, static_cast<uint8_t>(value)));
}

int32_t CopyMemory(const void *source, int32_t sourceOffset, void *destination, int32_t destinationOffset,
                   int32_t count) noexcept {
    if (count > 0) CopyUpwards(At(destination, destinationOffset), At(source, sourceOffset), count);
    return 0;
}

int32_t CopyMemoryFromBack(const void *source, int32_t sourceOffset, void *destination,
                           int32_t destinationOffset, int32_t count) noexcept {
    if (count > 0) CopyDownwards(At(destination, destinationOffset), At(source, sourceOffset), count);
    return 0;
}

int32_t ChangeBytesToWords(const void *source, int32_t sourceOffset, void *destination,
                           int32_t destinationOffset, int32_t count) noexcept {
    uint8_t *const target = At(destination, destinationOffset);
    if (count > 0) WidenUpwards<0, uint8_t, uint16_t>(target, At(source, sourceOffset), count);
    return 0;
}

int32_t ChangeWordsToLongs(const void *source, int32_t sourceOffset, void *destination,
                           int32_t destinationOffset, int32_t count) noexcept {
    uint8_t *const target = At(destination, destinationOffset);
    if (count > 0) WidenUpwards<1, uint16_t, uint32_t>(target, At(source, sourceOffset), count);
    return 0;
}

int32_t ClearWith(void *memory, int32_t offset, int32_t value, int32_t count) noexcept {
    if (count > 0) std::memset(At(memory, offset), value, static_cast<size_t>(count));
    return 0;
}

int32_t FindBytes(const void *memory, int32_t offset, int32_t length, const void *pattern,
                  int32_t patternLength) noexcept {
    return FindBytesCount(memory, offset, length, pattern, patternLength, 0);
}

int32_t FindBytesCount(const void *memory, int32_t offset, int32_t length, const void *pattern,
                       int32_t patternLength, int32_t index) noexcept {
    const int64_t found =
        FindPattern(At(memory, offset), length, static_cast<const uint8_t *>(pattern), patternLength, index);
    return found < 0 ? -1 : static_cast<int32_t>(offset + found);
}

int32_t CompareBytes(const void *first, const void *second, int32_t count, int32_t tolerance) noexcept {
    if (count <= 0) return 0;
    if (tolerance < 0) return count;
    if (tolerance >= 255) return 0;
    const MemoryKernels &kernels = ChooseMemoryKernels();
    const auto *a = static_cast<const uint8_t *>(first), *b = static_cast<const uint8_t *>(second);
    return static_cast<int32_t>(tolerance == 0
                                    ? kernels.countDifferent(a, b, count)
                                    : kernels.countBeyond(a, b, count, static_cast<uint8_t>(tolerance)));
}

void Compute(void *memory, int32_t length, int32_t elementSize, int32_t addend, int32_t subtrahend,
             int32_t factor, int32_t divisor, int32_t gap) noexcept {
    const int64_t step = int64_t{elementSize} + gap;
    if (length <= 0 || step <= 0) return;
    // An element that starts within the length and ends behind it belongs to the array too.
    const int64_t count = (length - 1) / step + 1;
    const Arithmetic arithmetic{factor == 0 ? 1U : static_cast<uint32_t>(factor),
                                divisor == 0 ? 1U : static_cast<uint32_t>(divisor),
                                static_cast<uint32_t>(addend) - static_cast<uint32_t>(subtrahend)};
    auto *const first = static_cast<uint8_t *>(memory);
    if (elementSize == 1) ComputeElements<0, uint8_t>(first, count, step, arithmetic);
    if (elementSize == 2) ComputeElements<1, uint16_t>(first, count, step, arithmetic);
    if (elementSize == 4) ComputeElements<2, uint32_t>(first, count, step, arithmetic);
}

int32_t ChangeLongSequence(void *memory, int32_t byteCount) noexcept {
    if (byteCount >= 8) ChooseMemoryKernels().reverseLongs(static_cast<uint8_t *>(memory), byteCount / 4);
    return 0;
}

int32_t VarToLong4(void *memory, int32_t offset, int32_t v0, int32_t v1, int32_t v2, int32_t v3) noexcept {
    StoreLongs(At(memory, offset), {v0, v1, v2, v3});
    return 0;
}

int32_t VarToLong10(void *memory, int32_t offset, int32_t v0, int32_t v1, int32_t v2, int32_t v3, int32_t v4,
                    int32_t v5, int32_t v6, int32_t v7, int32_t v8, int32_t v9) noexcept {
    StoreLongs(At(memory, offset), {v0, v1, v2, v3, v4, v5, v6, v7, v8, v9});
    return 0;
}

int32_t LongToAddrVar4(const void *memory, int32_t offset, int32_t *p0, int32_t *p1, int32_t *p2,
                       int32_t *p3) noexcept {
    // All are read first: a pointer may point into the block.
    int32_t values[4];
    std::memcpy(values, At(memory, offset), sizeof values);
    int32_t *const targets[4] = {p0, p1, p2, p3};
    for (size_t i = 0; i < 4; ++i) std::memcpy(targets[i], &values[i], sizeof values[i]);
    return 0;
}

void SetAByte(void *address, int32_t value) noexcept {
    *static_cast<uint8_t *>(address) = static_cast<uint8_t>(value);
}

int32_t GetAByte(const void *address) noexcept {
    return LoadElement<int32_t>(static_cast<const uint8_t *>(address), 0);
}

void *GetMemHandle(uintptr_t fx) noexcept {
    return fx == 0 ? nullptr : reinterpret_cast<const FXHeader *>(fx)->Pixels;
}
