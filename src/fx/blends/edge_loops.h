// SPDX-License-Identifier: Zlib
// Merging with the edge of the shape treated by itself, for the _avx2 and _avx512 files. They include it
// behind their colour planes and
//
//   uint64_t MatchingPixels(planes, planes)         a bit for each pixel that is the same in both
//   PlaneOf(byte)                                   one colour of a plane, of the lowest 8 bits
//   MergeWord<rule>(target, source, copied, edges)  64 pixels, each as its bits say
//
// Which pixels have the key colour is found out once for each, as bits of words of 64 pixels. The words from
// a row above to a row below stay in a ring, and the edge is a matter of shifting and combining words.
#pragma once

#include <cstdint>

#include "fx/blends/blend_kernels.h"

namespace fenlight {
namespace {

constexpr int64_t kWordPixels = 64;
constexpr int64_t kWordBytes = 3 * kWordPixels;
constexpr int64_t kRingWords = 512;
constexpr int64_t kGroupWords = 32;
// Rows above and below, a group of words and those beside it stay known at a time.
constexpr int64_t kWidestRow = (kRingWords / 2 - kGroupWords) * kWordPixels;

// Bits of the pixels of a word that begins with pixel `start`.
uint64_t BitsFrom(int64_t start, int64_t pixel) noexcept {
    const int64_t before = pixel - start;
    return before <= 0 ? ~uint64_t{0} : before >= kWordPixels ? 0 : ~uint64_t{0} << before;
}

uint64_t BitsBefore(int64_t start, int64_t pixel) noexcept { return ~BitsFrom(start, pixel); }

uint64_t KeysInWord(const uint8_t *pixels, const ColourPlanes &key) noexcept {
    uint64_t keys = 0;
    for (int64_t i = 0; i < kWordPixels; i += kPlanePixels)
        keys |= MatchingPixels(LoadPlanes(pixels + 3 * i), key) << i;
    return keys;
}

// The ends of a picture are kept out of the loops over its words, which need all registers.
[[gnu::noinline]] uint64_t KeysInRest(const uint8_t *pixels, int64_t count, uint32_t key) noexcept {
    uint64_t keys = 0;
    for (int64_t i = 0; i < count; ++i, pixels += 3)
        keys |= uint64_t{(pixels[0] | uint32_t{pixels[1]} << 8 | uint32_t{pixels[2]} << 16) == key} << i;
    return keys;
}

template <EdgeRule kRule>
[[gnu::noinline]] void MergeRest(uint8_t *target, const uint8_t *source, int64_t count, uint64_t copied,
                                 uint64_t edges) noexcept {
    for (int64_t i = 0; i < 3 * count; ++i) {
        if ((copied >> i / 3 & 1) != 0) target[i] = source[i];
        if (kRule == EdgeRule::Average && (edges >> i / 3 & 1) != 0)
            target[i] = static_cast<uint8_t>((target[i] + source[i]) >> 1);
    }
}

class KeyRing {
  public:
    KeyRing(const EdgeMerge &merge, const ColourPlanes &key) noexcept : merge_(merge), key_(key) {}

    // Makes the words up to that one known.
    void ReachTo(int64_t word) noexcept {
        for (; known_ <= word; ++known_) {
            const int64_t left = merge_.sourcePixels - known_ * kWordPixels;
            const uint8_t *pixels = merge_.source + known_ * kWordBytes;
            Word(known_) =
                left >= kWordPixels ? KeysInWord(pixels, key_) : KeysInRest(pixels, left, merge_.key);
        }
    }

    // Of a known word; those before the first hold anything.
    uint64_t &Word(int64_t word) noexcept { return words_[word & (kRingWords - 1)]; }
    // As Word, from any pixel on.
    uint64_t From(int64_t pixel) noexcept {
        const int64_t word = pixel >> 6, past = pixel & 63;
        return Word(word) >> past | Word(word + 1) << 1 << (63 - past);
    }

  private:
    const EdgeMerge &merge_;
    const ColourPlanes &key_;
    int64_t known_ = 0;
    uint64_t words_[kRingWords] = {};
};

// Which pixels of a word have the key colour beside them where it counts. `isInside`: it counts everywhere.
[[gnu::always_inline]] inline uint64_t BesideKey(KeyRing &keys, const EdgeMerge &merge, int64_t word,
                                                 bool isInside) noexcept {
    const int64_t start = word * kWordPixels;
    const uint64_t own = keys.Word(word);
    const uint64_t left = own << 1 | keys.Word(word - 1) >> 63, right = own >> 1 | keys.Word(word + 1) << 63;
    const uint64_t above = keys.From(start - merge.width), below = keys.From(start + merge.width);
    if (isInside) return left | right | above | below;
    return (left & BitsFrom(start, merge.leftFrom)) | (above & BitsFrom(start, merge.aboveFrom)) |
           (right & BitsBefore(start, merge.rightEnd)) | (below & BitsBefore(start, merge.belowEnd));
}

// Words are taken by the group, in one loop after the other: found, combined, merged.
template <EdgeRule kRule>
void MergeGroup(KeyRing &keys, const EdgeMerge &merge, int64_t first, int64_t words) noexcept {
    const int64_t start = first * kWordPixels, end = start + words * kWordPixels;
    const bool isInside =
        start >= merge.leftFrom && start >= merge.aboveFrom && end <= merge.rightEnd && end <= merge.belowEnd;
    uint64_t copied[kGroupWords], edges[kGroupWords];
    for (int64_t i = 0; i < words; ++i) {
        const uint64_t others = ~keys.Word(first + i), beside = BesideKey(keys, merge, first + i, isInside);
        copied[i] = others & ~beside;
        edges[i] = others & beside;
    }
    uint8_t *target = merge.target + 3 * start;
    const uint8_t *source = merge.source + 3 * start;
    for (int64_t i = 0; i < words; ++i) {
        const int64_t left = merge.count - start - i * kWordPixels, at = i * kWordBytes;
        if (left < kWordPixels) return MergeRest<kRule>(target + at, source + at, left, copied[i], edges[i]);
        MergeWord<kRule>(target + at, source + at, copied[i], edges[i]);
    }
}

template <EdgeRule kRule>
void MergeBy(const EdgeMerge &merge, const ColourPlanes &key) noexcept {
    KeyRing keys(merge, key);
    const int64_t words = (merge.count + kWordPixels - 1) / kWordPixels;
    const int64_t ahead = (merge.width + kWordPixels - 1) / kWordPixels + 1;
    for (int64_t word = 0; word < words; word += kGroupWords) {
        const int64_t group = words - word < kGroupWords ? words - word : kGroupWords;
        keys.ReachTo(word + group - 1 + ahead);
        MergeGroup<kRule>(keys, merge, word, group);
    }
}

// The plain version takes rows that are too wide for the ring.
void MergeEdges(const EdgeMerge &merge, EdgeRule rule) noexcept {
    if (merge.width > kWidestRow) return kPlainBlendKernels.mergeEdges(merge, rule);
    const ColourPlanes key{PlaneOf(merge.key), PlaneOf(merge.key >> 8), PlaneOf(merge.key >> 16)};
    (rule == EdgeRule::Average ? MergeBy<EdgeRule::Average> : MergeBy<EdgeRule::Keep>)(merge, key);
}

}  // namespace
}  // namespace fenlight
