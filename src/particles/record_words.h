// SPDX-License-Identifier: Zlib
// How the threads write the words of their records: whole and relaxed, because the caller may read a record
// meanwhile. Words of one record that belong together may be seen half changed. The thread's own reads are
// plain, for nobody else writes.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace fenlight {

template <class Number>
void StoreWord(Number &word, std::type_identity_t<Number> value) noexcept {
    std::atomic_ref(word).store(value, std::memory_order_relaxed);
}

// Two words side by side at once.
inline void CopyPair(int32_t &target, const int32_t &source) noexcept {
    using Pair [[gnu::may_alias]] = uint64_t;
    __atomic_store_n(reinterpret_cast<Pair *>(&target), *reinterpret_cast<const Pair *>(&source),
                     __ATOMIC_RELAXED);
}

// Callers may set any number, so positions and speeds wrap instead of overflowing.
constexpr int32_t WrappedSum(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t WrappedDifference(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace fenlight
