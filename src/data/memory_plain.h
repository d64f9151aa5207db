// SPDX-License-Identifier: Zlib
// The loops over memory, element by element: the version for every machine, and what a vector loop does with
// the rest that fills no vector. In an unnamed namespace, because files with different instruction sets
// include it.
#pragma once

#include <cstdint>
#include <cstring>

#include "data/memory_kernels.h"

namespace fenlight {
namespace {

template <typename Element>
[[maybe_unused]] Element LoadElement(const uint8_t *memory, int64_t index) noexcept {
    Element value;
    std::memcpy(&value, memory + index * static_cast<int64_t>(sizeof value), sizeof value);
    return value;
}

template <typename Element>
[[maybe_unused]] void StoreElement(uint8_t *memory, int64_t index, Element value) noexcept {
    std::memcpy(memory + index * static_cast<int64_t>(sizeof value), &value, sizeof value);
}

template <typename Element>
[[maybe_unused]] int64_t CountEqualPlain(const uint8_t *memory, int64_t count, uint32_t value) noexcept {
    int64_t hits = 0;
    for (int64_t i = 0; i < count; ++i) {
        hits += LoadElement<Element>(memory, i) == static_cast<Element>(value) ? 1 : 0;
    }
    return hits;
}

template <typename Element>
[[maybe_unused]] Element Apply(const Arithmetic &arithmetic, Element value) noexcept {
    value = static_cast<Element>(value * arithmetic.factor);
    return static_cast<Element>(value / arithmetic.divisor + arithmetic.summand);
}

template <typename Element>
[[maybe_unused]] void ComputePlain(uint8_t *memory, int64_t count, const Arithmetic &arithmetic) noexcept {
    for (int64_t i = 0; i < count; ++i) {
        StoreElement(memory, i, Apply(arithmetic, LoadElement<Element>(memory, i)));
    }
}

template <typename Narrow, typename Wide>
[[maybe_unused]] void WidenPlain(uint8_t *target, const uint8_t *source, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i) StoreElement<Wide>(target, i, LoadElement<Narrow>(source, i));
}

[[maybe_unused]] int64_t CountLeadingPlain(const uint8_t *memory, int64_t count, uint8_t value) noexcept {
    int64_t i = 0;
    while (i < count && memory[i] == value) ++i;
    return i;
}

[[maybe_unused]] int64_t CountDifferentPlain(const uint8_t *first, const uint8_t *second,
                                             int64_t count) noexcept {
    int64_t different = 0;
    for (int64_t i = 0; i < count; ++i) different += first[i] != second[i] ? 1 : 0;
    return different;
}

[[maybe_unused]] int64_t CountBeyondPlain(const uint8_t *first, const uint8_t *second, int64_t count,
                                          uint8_t tolerance) noexcept {
    int64_t beyond = 0;
    for (int64_t i = 0; i < count; ++i) {
        const int distance = first[i] < second[i] ? second[i] - first[i] : first[i] - second[i];
        beyond += distance > tolerance ? 1 : 0;
    }
    return beyond;
}

[[maybe_unused]] void ReverseLongsPlain(uint8_t *memory, int64_t count) noexcept {
    for (int64_t low = 0, high = count - 1; low < high; ++low, --high) {
        const auto value = LoadElement<uint32_t>(memory, low);
        StoreElement(memory, low, LoadElement<uint32_t>(memory, high));
        StoreElement(memory, high, value);
    }
}

}  // namespace
}  // namespace fenlight
