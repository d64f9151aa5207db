// SPDX-License-Identifier: Zlib
// Loops that compilers turn into vectors of whatever width the including file is built for. Everything is
// local to that file, and nothing of other headers is called: code for one width must not end up in another.
#pragma once

#include <cstdint>

#include "fx/smoothing/smoothing_kernels.h"

namespace fenlight {
namespace {

void AddBefore(uint16_t *__restrict sums, const RowNeighbours &rows, int64_t count) noexcept {
    const uint8_t *above = rows.above, *row = rows.row, *below = rows.below;
    if (above == nullptr) {
        for (int64_t i = 0; i < count; ++i) sums[i] = static_cast<uint16_t>(below[i] + row[i + 3]);
    } else {
        for (int64_t i = 0; i < count; ++i) sums[i] = static_cast<uint16_t>(below[i] + row[i + 3] + above[i]);
    }
}

void Narrow(uint8_t *__restrict bytes, const uint16_t *__restrict values, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(values[i]);
}

void AddAcross(uint16_t *__restrict sums, const uint8_t *__restrict bytes, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i)
        sums[i] = static_cast<uint16_t>(bytes[i - 3] + bytes[i] + bytes[i + 3]);
}

void SmoothMasked(uint8_t *bytes, const uint8_t *mask, const SumRows &sums, int64_t count) noexcept {
    const uint16_t *__restrict above = sums.above, *__restrict row = sums.row, *__restrict below = sums.below;
    for (int64_t i = 0; i < count; ++i) {
        const auto sum = static_cast<uint16_t>(above[i] + row[i] + below[i] - bytes[i]);
        bytes[i] = mask[i] != 0 ? static_cast<uint8_t>(sum >> 3) : bytes[i];
    }
}

// Each byte is read before those ahead of it are written, with vectors too.
void FogMasked(uint8_t *bytes, const uint8_t *mask, const SumRows &sums, const FogDraws &draws,
               int64_t count) noexcept {
    const uint16_t *__restrict above = sums.above, *__restrict row = sums.row, *__restrict below = sums.below;
    const uint8_t *__restrict draw = draws.draws;
    const uint8_t *shown = draws.shown;
    for (int64_t i = 0; i < count; ++i) {
        const uint8_t bright = draw[i] < 4 ? 255 : bytes[i + 3];
        const uint8_t right = draw[i] == 0 ? shown[i] : bright;
        const auto around = static_cast<uint16_t>(above[i] + row[i] + below[i] - bytes[i]);
        const auto sum = static_cast<uint16_t>(around - bytes[i + 3] + right);
        bytes[i] = mask[i] != 0 ? static_cast<uint8_t>(sum >> 3) : bytes[i];
    }
}

// Parts as long as the longest vectors; the last one goes over some bytes again rather than being shorter. So
// for loops that read nothing of what they write.
constexpr int64_t kPartBytes = 64;

template <typename Part>
void ForEachPart(int64_t count, Part part) noexcept {
    if (count < kPartBytes) return part(0, count);
    for (int64_t first = 0; first + kPartBytes <= count; first += kPartBytes) part(first, kPartBytes);
    if (count % kPartBytes != 0) part(count - kPartBytes, kPartBytes);
}

void Keep(uint8_t *__restrict kept, const uint8_t *row, int64_t count) noexcept {
    ForEachPart(count, [=](int64_t first, int64_t bytes) {
        for (int64_t i = first; i < first + bytes; ++i) kept[i] = static_cast<uint8_t>(~row[i]);
    });
}

// Processors have it. Of complements it is the complement of the mean that is rounded down.
uint8_t MeanRoundedUp(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) >> 1); }

void Average(uint8_t *__restrict target, const RowNeighbours &rows, int64_t count) noexcept {
    const uint8_t *above = rows.above, *row = rows.row, *below = rows.below;
    ForEachPart(count, [=](int64_t first, int64_t bytes) {
        for (int64_t i = first; i < first + bytes; ++i)
            target[i] = static_cast<uint8_t>(
                ~MeanRoundedUp(MeanRoundedUp(row[i + 3], row[i - 3]), MeanRoundedUp(below[i], above[i])));
    });
}

// What the bytes of a pixel differ in: whether the own value counts again, the sum of the weights times 255,
// and the reciprocal of that sum, rounded up. Sums of 6 and 5 bytes are divided exactly by it.
constexpr int64_t kPatternBytes = 768;
struct CentrePattern {
    uint16_t whole[kPatternBytes];
    uint16_t reciprocal[kPatternBytes];
    uint8_t again[kPatternBytes];
};

constexpr CentrePattern MakeCentrePattern() {
    CentrePattern pattern{};
    for (int64_t i = 0; i < kPatternBytes; ++i) {
        const int weights = i % 3 == 0 ? 6 : 5;
        pattern.whole[i] = static_cast<uint16_t>(255 * weights);
        pattern.reciprocal[i] = static_cast<uint16_t>(0x10000 / weights + 1);
        pattern.again[i] = i % 3 == 0 ? 0xFF : 0;
    }
    return pattern;
}

constexpr CentrePattern kCentrePattern = MakeCentrePattern();

void AverageWithCentre(uint8_t *__restrict target, const RowNeighbours &rows, int64_t count) noexcept {
    for (int64_t start = 0; start < count; start += kPatternBytes) {
        const int64_t left = count - start < kPatternBytes ? count - start : kPatternBytes;
        const uint8_t *above = rows.above + start, *row = rows.row + start, *below = rows.below + start;
        uint8_t *__restrict out = target + start;
        ForEachPart(left, [=](int64_t first, int64_t bytes) {
            for (int64_t i = first; i < first + bytes; ++i) {
                const auto missing = static_cast<uint16_t>(row[i] + (row[i] & kCentrePattern.again[i]) +
                                                           row[i + 3] + row[i - 3] + below[i] + above[i]);
                const auto sum = static_cast<uint16_t>(kCentrePattern.whole[i] - missing);
                out[i] = static_cast<uint8_t>((uint32_t{sum} * kCentrePattern.reciprocal[i]) >> 16);
            }
        });
    }
}

void MarkFar(uint64_t *__restrict marks, const uint64_t *const *rows, int64_t words) noexcept {
    const uint64_t *top = rows[0], *above = rows[1], *row = rows[2], *below = rows[3], *bottom = rows[4];
    for (int64_t i = 0; i < words; ++i) {
        const uint64_t before = above[i - 1] | row[i - 1] | below[i - 1];
        const uint64_t here = above[i] | row[i] | below[i];
        const uint64_t behind = above[i + 1] | row[i + 1] | below[i + 1];
        const uint64_t oneAcross = here << 3 | here >> 3 | before >> 60 | behind << 60;
        const uint64_t twoAcross = row[i] << 6 | row[i] >> 6 | row[i - 1] >> 57 | row[i + 1] << 57;
        const uint64_t upright = top[i] | above[i] | below[i] | bottom[i];
        marks[i] = ~(oneAcross | twoAcross | upright) & kAllMarks;
    }
}

}  // namespace
}  // namespace fenlight
