// SPDX-License-Identifier: Zlib
#include "frame/vector_level.h"

#include <algorithm>
#include <atomic>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace fenlight {
namespace {

#if defined(__x86_64__)
// Not every compiler's __builtin_cpu_supports knows this one.
bool HasLzcnt() noexcept {
    constexpr unsigned kExtendedFeatures = 0x80000001;
    constexpr unsigned kLzcntBit = 1u << 5;
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(kExtendedFeatures, &a, &b, &c, &d) != 0 && (c & kLzcntBit) != 0;
}
#endif

VectorLevel FindVectorLevel() noexcept {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("sse4.2") || !__builtin_cpu_supports("popcnt")) return VectorLevel::Plain;
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") ||
        !__builtin_cpu_supports("bmi2") || !HasLzcnt())
        return VectorLevel::Sse4;
    const bool hasAvx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                           __builtin_cpu_supports("avx512vbmi");
    return hasAvx512 ? VectorLevel::Avx512 : VectorLevel::Avx2;
#else
    return VectorLevel::Plain;
#endif
}

constexpr int kUnknown = -1;

// Two threads may both look at first; they find the same.
std::atomic<int> currentLevel{kUnknown};

}  // namespace

VectorLevel WidestVectorLevel() noexcept {
    static const VectorLevel widest = FindVectorLevel();
    return widest;
}

VectorLevel CurrentVectorLevel() noexcept {
    int level = currentLevel.load(std::memory_order_relaxed);
    if (level == kUnknown) {
        level = static_cast<int>(WidestVectorLevel());
        currentLevel.store(level, std::memory_order_relaxed);
    }
    return static_cast<VectorLevel>(level);
}

void ForceVectorLevel(VectorLevel level) noexcept {
    currentLevel.store(static_cast<int>(std::min(level, WidestVectorLevel())), std::memory_order_relaxed);
}

void ReleaseVectorLevel() noexcept { currentLevel.store(kUnknown, std::memory_order_relaxed); }

}  // namespace fenlight
