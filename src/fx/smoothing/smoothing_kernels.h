// SPDX-License-Identifier: Zlib
// The row loops under the filters that look at neighbours, in one version for each width of vectors.
//
// A kernel sees addresses and counts only: which rows there are, what is kept of the old picture and which
// bytes have all their neighbours is settled by the filters. Nothing here keeps state.
#pragma once

#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// Marks of a row of pixels: 21 pixels a word, three bits each, so that a word is also a mask of 63 bytes. In
// memory only the lowest of the three is set.
inline constexpr int64_t kMarksPerWord = 21;
inline constexpr int64_t kBytesPerWord = 3 * kMarksPerWord;
inline constexpr uint64_t kAllMarks = 0x1249249249249249;

constexpr int64_t WordsForMarks(int64_t pixels) { return (pixels + kMarksPerWord - 1) / kMarksPerWord; }

// The rows that a smoothed row is made of, each from its first smoothed byte on; three bytes before and
// behind `row` are read too.
struct RowNeighbours {
    const uint8_t *above;
    const uint8_t *row;
    const uint8_t *below;
};

// Three rows of sums that AddAcross made.
struct SumRows {
    const uint16_t *above;
    const uint16_t *row;
    const uint16_t *below;
};

// What stands in for the right neighbour of a byte: the byte of `shown` for the draw 0, 255 for 1 to 3.
struct FogDraws {
    const uint8_t *draws;
    const uint8_t *shown;
};

// A count is one of bytes, from a pixel's first one on, unless told.
struct SmoothingKernels {
    // sums[i] = below[i] + row[i + 3], and above[i] on top unless `above` is null.
    void (*addBefore)(uint16_t *sums, const RowNeighbours &rows, int64_t count) noexcept;
    // bytes[i] = values[i], which are below 256.
    void (*narrow)(uint8_t *bytes, const uint16_t *values, int64_t count) noexcept;

    // sums[i] = bytes[i - 3] + bytes[i] + bytes[i + 3]. The count is of any bytes, here and in the next two.
    void (*addAcross)(uint16_t *sums, const uint8_t *bytes, int64_t count) noexcept;
    // The mean of the eight around, rounded down, where the mask is not 0. `mask` may be `bytes`.
    void (*smoothMasked)(uint8_t *bytes, const uint8_t *mask, const SumRows &sums, int64_t count) noexcept;
    // The same with another byte in place of the right neighbour where the draw says so.
    void (*fogMasked)(uint8_t *bytes, const uint8_t *mask, const SumRows &sums, const FogDraws &draws,
                      int64_t count) noexcept;

    // Antialiasing works on kept rows, which hold the complements of the picture's bytes.
    void (*keep)(uint8_t *kept, const uint8_t *row, int64_t count) noexcept;
    // The mean of left and right, that of above and below, and the mean of both, each rounded down.
    void (*average)(uint8_t *target, const RowNeighbours &kept, int64_t count) noexcept;
    // The mean of the five, rounded down; the first byte of a pixel counts its own value twice.
    void (*averageWithCentre)(uint8_t *target, const RowNeighbours &kept, int64_t count) noexcept;
    // Marks the pixels of one colour, 0x00BBGGRR.
    void (*markColour)(uint64_t *marks, const uint8_t *row, int64_t pixels, uint32_t colour) noexcept;
    // Marks the pixels from which no mark is two steps away or less, nor a step across; a pixel's own mark
    // does not count. rows[2] is the row itself, the others are those above and below. One word before and
    // behind rows[1] to rows[3] is read too.
    void (*markFar)(uint64_t *marks, const uint64_t *const *rows, int64_t words) noexcept;
    // Takes marked pixels from a kept row; no marks lie at or behind `pixels`.
    void (*takeMarked)(uint8_t *row, const uint8_t *kept, const uint64_t *marks, int64_t pixels) noexcept;
};

extern const SmoothingKernels kPlainSmoothingKernels;
extern const SmoothingKernels kAvx2SmoothingKernels;
extern const SmoothingKernels kAvx512SmoothingKernels;

const SmoothingKernels &ChooseSmoothingKernels() noexcept;

}  // namespace fenlight
