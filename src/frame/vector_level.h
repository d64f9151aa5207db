// SPDX-License-Identifier: Zlib
// Which version of a hot loop runs. A family of loops has one table of versions, plain first, each wider one
// in a file of its own with the suffix that gives it its compiler flags; the widest that this processor can
// run is taken at each call. Only tests and benchmarks force another.
#pragma once

#include <array>
#include <cstddef>

// The address of a version that only x86-64 has; null elsewhere, where its file is empty.
#if defined(__x86_64__)
#define FENLIGHT_ON_X86(kernels) &(kernels)
#else
#define FENLIGHT_ON_X86(kernels) nullptr
#endif

namespace fenlight {

// Sse4 is SSE4.2 with POPCNT; Avx2 comes with BMI1, BMI2, LZCNT; Avx512 is F, BW, DQ, VL and VBMI.
enum class VectorLevel : int { Plain, Sse4, Avx2, Avx512 };

inline constexpr size_t kVectorLevels = 4;

// What this processor has.
VectorLevel WidestVectorLevel() noexcept;
// What is to be used: the widest, unless forced.
VectorLevel CurrentVectorLevel() noexcept;
// A level above the processor's own is cut down to it.
void ForceVectorLevel(VectorLevel level) noexcept;
void ReleaseVectorLevel() noexcept;

// The versions of one family of loops by level. A level without a version of its own has null and takes the
// next narrower one; the plain version is always there.
//
//   constexpr KernelVersions<RowKernels> kRows{&kPlainRows, nullptr, FENLIGHT_ON_X86(kAvx2Rows)};
template <typename Kernels>
using KernelVersions = std::array<const Kernels *, kVectorLevels>;

template <typename Kernels>
const Kernels &ChooseKernels(const KernelVersions<Kernels> &versions) noexcept {
    auto level = static_cast<size_t>(CurrentVectorLevel());
    while (level > 0 && versions[level] == nullptr) --level;
    return *versions[level];
}

}  // namespace fenlight
