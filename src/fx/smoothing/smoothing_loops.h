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
void FogMasked(uint8_t *bytes, const uint8_t *mask, const SumRows &sums, const uint8_t *__restrict right,
               int64_t count) noexcept {
    const uint16_t *__restrict above = sums.above, *__restrict row = sums.row, *__restrict below = sums.below;
    for (int64_t i = 0; i < count; ++i) {
        const auto around = static_cast<uint16_t>(above[i] + row[i] + below[i] - bytes[i]);
        const auto sum = static_cast<uint16_t>(around - bytes[i + 3] + right[i]);
        bytes[i] = mask[i] != 0 ? static_cast<uint8_t>(sum >> 3) : bytes[i];
    }
}

// Processors have a mean that rounds up; from the complements it is the one that rounds down.
uint8_t MeanOfComplements(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) >> 1); }
uint8_t Complement(uint8_t a) { return static_cast<uint8_t>(~a); }

void Average(uint8_t *__restrict target, const RowNeighbours &rows, int64_t count) noexcept {
    const uint8_t *above = rows.above, *row = rows.row, *below = rows.below;
    for (int64_t i = 0; i < count; ++i) {
        const uint8_t beside = MeanOfComplements(Complement(row[i + 3]), Complement(row[i - 3]));
        const uint8_t upright = MeanOfComplements(Complement(below[i]), Complement(above[i]));
        target[i] = Complement(MeanOfComplements(beside, upright));
    }
}

// What the bytes of a pixel differ in: whether the own value counts again, and the reciprocal of the weights,
// rounded up. Sums of 6 and 5 bytes are divided exactly by them.
constexpr int64_t kPatternBytes = 768;
struct CentrePattern {
    uint16_t reciprocal[kPatternBytes];
    uint8_t again[kPatternBytes];
};

constexpr CentrePattern MakeCentrePattern() {
    CentrePattern pattern{};
    for (int64_t i = 0; i < kPatternBytes; ++i) {
        pattern.reciprocal[i] = i % 3 == 0 ? 0x10000 / 6 + 1 : 0x10000 / 5 + 1;
        pattern.again[i] = i % 3 == 0 ? 0xFF : 0;
    }
    return pattern;
}

constexpr CentrePattern kCentrePattern = MakeCentrePattern();

void AverageWithCentre(uint8_t *__restrict target, const RowNeighbours &rows, int64_t count) noexcept {
    for (int64_t start = 0; start < count; start += kPatternBytes) {
        const int64_t left = count - start < kPatternBytes ? count - start : kPatternBytes;
        const uint8_t *above = rows.above + start, *row = rows.row + start, *below = rows.below + start;
        for (int64_t i = 0; i < left; ++i) {
            const auto sum = static_cast<uint16_t>(row[i] + (row[i] & kCentrePattern.again[i]) + row[i + 3] +
                                                   row[i - 3] + below[i] + above[i]);
            target[start + i] = static_cast<uint8_t>((uint32_t{sum} * kCentrePattern.reciprocal[i]) >> 16);
        }
    }
}

// One and two pixels to either side.
uint64_t NextTo(const uint64_t *word) { return *word << 3 | *word >> 3 | word[-1] >> 60 | word[1] << 60; }
uint64_t NextButOne(const uint64_t *word) { return *word << 6 | *word >> 6 | word[-1] >> 57 | word[1] << 57; }

void MarkFar(uint64_t *__restrict marks, const uint64_t *const *rows, int64_t words) noexcept {
    const uint64_t *top = rows[0], *above = rows[1], *row = rows[2], *below = rows[3], *bottom = rows[4];
    for (int64_t i = 0; i < words; ++i) {
        const uint64_t upright = top[i] | above[i] | below[i] | bottom[i];
        const uint64_t across = NextTo(above + i) | NextTo(row + i) | NextTo(below + i);
        marks[i] = ~(upright | across | NextButOne(row + i)) & kAllMarks;
    }
}

}  // namespace
}  // namespace fenlight
