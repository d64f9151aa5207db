// SPDX-License-Identifier: Zlib
#include "fx/blends/blend_kernels.h"

#include <array>

#include "fx/blends/blend_loops.h"

namespace fenlight {
namespace {

uint32_t PixelAt(const uint8_t *bytes) {
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16;
}

bool IsEdge(const EdgeMerge &merge, int64_t i) {
    const auto isKey = [&](int64_t pixel) { return PixelAt(merge.source + 3 * pixel) == merge.key; };
    return (i >= merge.leftFrom && isKey(i - 1)) || (i < merge.rightEnd && isKey(i + 1)) ||
           (i >= merge.aboveFrom && isKey(i - merge.width)) || (i < merge.belowEnd && isKey(i + merge.width));
}

void Average(uint8_t *target, const uint8_t *source) {
    for (int i = 0; i < 3; ++i) target[i] = static_cast<uint8_t>((target[i] + source[i]) >> 1);
}

void Copy(uint8_t *target, const uint8_t *source) {
    for (int i = 0; i < 3; ++i) target[i] = source[i];
}

void MergeEdges(const EdgeMerge &merge, EdgeRule rule) noexcept {
    for (int64_t i = 0; i < merge.count; ++i) {
        uint8_t *target = merge.target + 3 * i;
        const uint8_t *source = merge.source + 3 * i;
        if (PixelAt(source) == merge.key) continue;
        if (!IsEdge(merge, i))
            Copy(target, source);
        else if (rule == EdgeRule::Average)
            Average(target, source);
    }
}

}  // namespace

extern const BlendKernels kPlainBlendKernels{FadeBytes, MixBytes, MergeEdges};

namespace {

constexpr KernelVersions<BlendKernels> kVersions{
    &kPlainBlendKernels, nullptr, FENLIGHT_ON_X86(kAvx2BlendKernels), FENLIGHT_ON_X86(kAvx512BlendKernels)};

}  // namespace

const BlendKernels &ChooseBlends() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
