// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "fx/blends/blend_loops.h"
#include "fx/colour_planes_avx2.h"

namespace fenlight {
namespace {

ColourPlanes PlanesOfColour(uint32_t colour) noexcept {
    const auto plane = [&](int shift) { return _mm256_set1_epi8(static_cast<char>(colour >> shift)); };
    return {plane(0), plane(8), plane(16)};
}

__m256i MatchesIn(const ColourPlanes &pixels, const ColourPlanes &key) noexcept {
    return _mm256_and_si256(_mm256_and_si256(_mm256_cmpeq_epi8(pixels.blue, key.blue),
                                             _mm256_cmpeq_epi8(pixels.green, key.green)),
                            _mm256_cmpeq_epi8(pixels.red, key.red));
}

// Rounded down; the instruction rounds up.
__m256i AverageOf(__m256i first, __m256i second) noexcept {
    const __m256i odd = _mm256_and_si256(_mm256_xor_si256(first, second), _mm256_set1_epi8(1));
    return _mm256_sub_epi8(_mm256_avg_epu8(first, second), odd);
}

// What the 32 pixels become: the target's own where `kept`, mixed or again its own where `edges`.
template <EdgeRule kRule>
__m256i MergePlane(__m256i target, __m256i source, __m256i kept, __m256i edges) noexcept {
    const __m256i edge = kRule == EdgeRule::Average ? AverageOf(target, source) : target;
    return _mm256_blendv_epi8(_mm256_blendv_epi8(source, edge, edges), target, kept);
}

template <EdgeRule kRule>
void MergeStep(const EdgeRun &run, int64_t at, const ColourPlanes &key) noexcept {
    const uint8_t *source = run.source + at;
    const auto matchesAt = [&](int64_t distance) { return MatchesIn(LoadPlanes(source + distance), key); };
    const __m256i edges = _mm256_or_si256(_mm256_or_si256(matchesAt(run.right), matchesAt(run.left)),
                                          _mm256_or_si256(matchesAt(run.below), matchesAt(run.above)));
    const ColourPlanes pixels = LoadPlanes(source), old = LoadPlanes(run.target + at);
    const __m256i kept = MatchesIn(pixels, key);
    StorePlanes(run.target + at, {MergePlane<kRule>(old.blue, pixels.blue, kept, edges),
                                  MergePlane<kRule>(old.green, pixels.green, kept, edges),
                                  MergePlane<kRule>(old.red, pixels.red, kept, edges)});
}

void MergeEdges(const EdgeRun &run, EdgeRule rule) noexcept {
    const ColourPlanes key = PlanesOfColour(run.key);
    const auto step = rule == EdgeRule::Average ? MergeStep<EdgeRule::Average> : MergeStep<EdgeRule::Keep>;
    EdgeRun rest = run;
    int64_t at = 0;
    for (; rest.count >= kPlanePixels; rest.count -= kPlanePixels, at += kPlaneBytes) step(run, at, key);
    rest.target += at;
    rest.source += at;
    kPlainBlendKernels.mergeEdges(rest, rule);
}

}  // namespace

extern const BlendKernels kAvx2BlendKernels{FadeBytes, MixBytes, MergeEdges};

}  // namespace fenlight
#endif
