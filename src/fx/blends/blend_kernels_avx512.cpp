// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include "fx/blends/blend_loops.h"

namespace fenlight {
namespace {

// 21 pixels; the last byte of a vector belongs to the next 21.
constexpr int64_t kStepBytes = 63;
// Masked stores alone do not make the processor fetch what lies ahead.
constexpr int64_t kAhead = 1024;
constexpr uint64_t kFirstOfThree = 0x1249249249249249;  // bits 0, 3, 6 to 60

__m512i KeyPattern(uint32_t key) noexcept {
    alignas(64) uint8_t bytes[64];
    for (int i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(key >> (i % 3 * 8));
    return _mm512_load_si512(bytes);
}

// The first bit of each pixel that has another colour than the key, among 21 and the first byte of one more.
uint64_t OthersIn(const uint8_t *pixels, __mmask64 inside, __m512i key) noexcept {
    const uint64_t differing =
        _mm512_mask_cmpneq_epi8_mask(inside, _mm512_maskz_loadu_epi8(inside, pixels), key);
    return differing | differing >> 1 | differing >> 2;
}

// Rounded down; the instruction rounds up.
__m512i AverageOf(__m512i first, __m512i second) noexcept {
    const __m512i odd = _mm512_and_si512(_mm512_xor_si512(first, second), _mm512_set1_epi8(1));
    return _mm512_sub_epi8(_mm512_avg_epu8(first, second), odd);
}

template <EdgeRule kRule>
void MergeStep(const EdgeRun &run, int64_t at, __mmask64 inside, __m512i key) noexcept {
    const uint8_t *source = run.source + at;
    uint8_t *target = run.target + at;
    const uint64_t others = OthersIn(source, inside, key) & kFirstOfThree;
    const uint64_t around =
        OthersIn(source + run.right, inside, key) & OthersIn(source + run.left, inside, key) &
        OthersIn(source + run.below, inside, key) & OthersIn(source + run.above, inside, key);
    const __mmask64 copied = (others & around) * 7;
    const __m512i pixels = _mm512_maskz_loadu_epi8(inside, source);
    _mm_prefetch(reinterpret_cast<const char *>(target + kAhead), _MM_HINT_T0);
    if constexpr (kRule == EdgeRule::Keep) {
        _mm512_mask_storeu_epi8(target, copied, pixels);
    } else {
        const __m512i mixed = AverageOf(pixels, _mm512_maskz_loadu_epi8(inside, target));
        _mm512_mask_storeu_epi8(target, others * 7, _mm512_mask_blend_epi8(copied, mixed, pixels));
    }
}

template <EdgeRule kRule>
void MergeBy(const EdgeRun &run) noexcept {
    const __m512i key = KeyPattern(run.key);
    const int64_t bytes = 3 * run.count;
    int64_t at = 0;
    for (; at + 64 <= bytes; at += kStepBytes) MergeStep<kRule>(run, at, ~uint64_t{0}, key);
    for (; at < bytes; at += kStepBytes) {
        const int64_t left = bytes - at < kStepBytes ? bytes - at : kStepBytes;
        MergeStep<kRule>(run, at, _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(left)), key);
    }
}

void MergeEdges(const EdgeRun &run, EdgeRule rule) noexcept {
    if (rule == EdgeRule::Average) return MergeBy<EdgeRule::Average>(run);
    MergeBy<EdgeRule::Keep>(run);
}

}  // namespace

extern const BlendKernels kAvx512BlendKernels{FadeBytes, MixBytes, MergeEdges};

}  // namespace fenlight
#endif
