// SPDX-License-Identifier: Zlib
#include "data/memory_kernels.h"

#include <cstring>

#include "data/memory_plain.h"

namespace fenlight {
namespace {

// Without vectors the C library's own search is the better one: leave all to it.
template <typename Matches>
int64_t ScanNothing(const ProbedPattern &, const uint8_t *, int64_t, int64_t, Matches &) noexcept {
    return 0;
}

// That knows no text whose end must not be read.
template <typename Matches>
int64_t ScanTailPlain(const Pattern &pattern, const TextTail &tail, int64_t from, Matches &matches) noexcept {
    int64_t patience = 2 * pattern.length + 256, at = from;
    for (; at < tail.candidates && patience > 0; ++at) {
        const void *start =
            std::memchr(tail.text + at, *pattern.bytes, static_cast<size_t>(tail.candidates - at));
        if (start == nullptr) return tail.candidates;
        at = static_cast<const uint8_t *>(start) - tail.text;
        int64_t matched = 1;
        while (matched < pattern.length && tail.text[at + matched] == pattern.bytes[matched]) ++matched;
        if (matched == pattern.length && matches.Take(at)) return tail.candidates;
        patience -= matched;
    }
    return at;
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
    ScanTailPlain<NthMatch>,
    ScanTailPlain<SeparateList>,
};

constexpr KernelVersions<MemoryKernels> kVersions{&kMemoryPlain, FENLIGHT_ON_X86(kMemorySse4),
                                                  FENLIGHT_ON_X86(kMemoryAvx2),
                                                  FENLIGHT_ON_X86(kMemoryAvx512)};

}  // namespace

const MemoryKernels &ChooseMemoryKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
