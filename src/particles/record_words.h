// SPDX-License-Identifier: Zlib
// How the threads touch the words of their records: whole and relaxed, because the caller may read a record
// while its thread writes it. Words of one record that belong together may be seen half changed.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace fenlight {

template <class Number>
Number LoadWord(const Number &word) noexcept {
    return std::atomic_ref(const_cast<Number &>(word)).load(std::memory_order_relaxed);
}

template <class Number>
void StoreWord(Number &word, std::type_identity_t<Number> value) noexcept {
    std::atomic_ref(word).store(value, std::memory_order_relaxed);
}

// Callers may set any number, so positions and speeds wrap instead of overflowing.
constexpr int32_t WrappedSum(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t WrappedDifference(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace fenlight
