// SPDX-License-Identifier: Zlib
// The loops of the blends, in a version for each vector level. They see runs of memory and nothing of
// buffers, keep no state and take no lock.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// What each picture loses in each byte, down to 0. Both together are at least 255.
struct FadeAmounts {
    uint8_t offFirst, offSecond;
};

// `count` pixels of three bytes, from the start of both blocks. Neighbours to the left and right are the
// pixels before and after in the block, those above and below lie `width` pixels away; they are looked at as
// told.
struct EdgeMerge {
    uint8_t *target;
    const uint8_t *source;
    int64_t count;
    int64_t sourcePixels;         // whole ones in the source's block
    int64_t width;                // at least 1
    uint32_t key;                 // blue in the low byte, as pixels have it
    int64_t leftFrom, aboveFrom;  // the first pixel whose neighbour there is looked at
    int64_t rightEnd, belowEnd;   // behind the last such one
};

// What becomes of a pixel with a neighbour of the key colour.
enum class EdgeRule : uint8_t { Average, Keep };

struct BlendKernels {
    // `count` bytes; the result lies apart from both pictures.
    void (*fade)(uint8_t *result, const uint8_t *first, const uint8_t *second, int64_t count,
                 const FadeAmounts &amounts) noexcept;
    // `count` bytes, `mask` of 255 of the second picture. The result may be any of the three.
    void (*mix)(uint8_t *result, const uint8_t *first, const uint8_t *second, const uint8_t *mask,
                int64_t count) noexcept;
    // Source pixels onto the target but for those of the key colour.
    void (*mergeEdges)(const EdgeMerge &merge, EdgeRule rule) noexcept;
};

extern const BlendKernels kPlainBlendKernels;
extern const BlendKernels kAvx2BlendKernels;
extern const BlendKernels kAvx512BlendKernels;

const BlendKernels &ChooseBlends() noexcept;

}  // namespace fenlight
