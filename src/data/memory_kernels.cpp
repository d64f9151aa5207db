// SPDX-License-Identifier: Zlib
#include "data/memory_kernels.h"

#include "data/memory_plain.h"

namespace fenlight {
namespace {

// Without vectors the C library's own search is the better one: leave all to it.
template <typename Matches>
int64_t ScanNothing(const ProbedPattern &, const uint8_t *, int64_t, int64_t, Matches &) noexcept {
    return 0;
}

// And the positions at a text's end to the scan with borders.
template <typename Matches>
int64_t ScanNoTail(const Pattern &, const TextTail &, int64_t from, Matches &) noexcept {
    return from;
}

constexpr MemoryKernels kMemoryPlain{
    {CountEqualPlain<uint8_t>, CountEqualPlain<uint16_t>, CountEqualPlain<uint32_t>},
    {ComputePlain<uint8_t>, ComputePlain<uint16_t>, ComputePlain<uint32_t>},
    {WidenPlain<uint8_t, uint16_t>, WidenPlain<uint16_t, uint32_t>},
    CountLeadingPlain,
    CountDifferentPlain,
    CountBeyondPlain,
    ReverseLongsPlain,
    ScanNothing<NthMatch>,
    ScanNothing<SeparateList>,
    ScanNoTail<NthMatch>,
    ScanNoTail<SeparateList>,
};

constexpr KernelVersions<MemoryKernels> kVersions{&kMemoryPlain, FENLIGHT_ON_X86(kMemorySse4),
                                                  FENLIGHT_ON_X86(kMemoryAvx2),
                                                  FENLIGHT_ON_X86(kMemoryAvx512)};

}  // namespace

const MemoryKernels &ChooseMemoryKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
