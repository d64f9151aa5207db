// SPDX-License-Identifier: Zlib
// The loops over memory that matter for speed, in one version for every machine and others for what a
// processor may have. A kernel sees memory and counts above 0, nothing else; memory may lie at any alignment,
// and a kernel reads and writes exactly the elements that it is told. Only tests choose a version.
#pragma once

#include <cstdint>

#include "data/search_matches.h"
#include "frame/vector_level.h"

namespace fenlight {

// What happens to each element, in this order and at the element's width: times `factor`, divided by
// `divisor`, which is not 0, plus `summand`.
struct Arithmetic {
    uint32_t factor;
    uint32_t divisor;
    uint32_t summand;
};

struct MemoryKernels {
    // By the width of an element: 1, 2 and 4 bytes.
    int64_t (*countEqual[3])(const uint8_t *memory, int64_t count, uint32_t value) noexcept;
    void (*compute[3])(uint8_t *memory, int64_t count, const Arithmetic &arithmetic) noexcept;
    // From 1 to 2 and from 2 to 4 bytes. What is written must not reach elements that are still to be read.
    void (*widen[2])(uint8_t *target, const uint8_t *source, int64_t count) noexcept;
    int64_t (*countLeading)(const uint8_t *memory, int64_t count, uint8_t value) noexcept;
    int64_t (*countDifferent)(const uint8_t *first, const uint8_t *second, int64_t count) noexcept;
    int64_t (*countBeyond)(const uint8_t *first, const uint8_t *second, int64_t count,
                           uint8_t tolerance) noexcept;
    void (*reverseLongs)(uint8_t *memory, int64_t count) noexcept;
    ScanText<NthMatch> *scanForNth;
    ScanText<SeparateList> *scanForSeparate;
    ScanTail<NthMatch> *scanTailForNth;
    ScanTail<SeparateList> *scanTailForSeparate;
};

// memory_kernels_sse4.cpp, memory_kernels_avx2.cpp, memory_kernels_avx512.cpp
extern const MemoryKernels kMemorySse4, kMemoryAvx2, kMemoryAvx512;

const MemoryKernels &ChooseMemoryKernels() noexcept;

}  // namespace fenlight
