// SPDX-License-Identifier: Zlib
#include "fx/blends/blend_kernels.h"

#include <array>

#include "fx/blends/blend_loops.h"

namespace fenlight {
namespace {

uint32_t PixelAt(const uint8_t *bytes) {
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16;
}

bool IsEdge(const EdgeRun &run, const uint8_t *pixel) {
    for (const int64_t distance : {run.right, run.left, run.below, run.above})
        if (PixelAt(pixel + distance) == run.key) return true;
    return false;
}

void Average(uint8_t *target, const uint8_t *source) {
    for (int i = 0; i < 3; ++i) target[i] = static_cast<uint8_t>((target[i] + source[i]) >> 1);
}

void Copy(uint8_t *target, const uint8_t *source) {
    for (int i = 0; i < 3; ++i) target[i] = source[i];
}

void MergeEdges(const EdgeRun &run, EdgeRule rule) noexcept {
    uint8_t *target = run.target;
    const uint8_t *source = run.source;
    for (int64_t i = 0; i < run.count; ++i, target += 3, source += 3) {
        if (PixelAt(source) == run.key) continue;
        if (!IsEdge(run, source))
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
