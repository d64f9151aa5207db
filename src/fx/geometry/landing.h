// SPDX-License-Identifier: Zlib
// What the two free rotations share: which pixels of a source row land inside the target, and an order of
// walking that keeps to the caches.
//
// Both send each source pixel to a place of the target, row by row, and what comes later covers what came
// before. Nothing here owns anything.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace fenlight {

// Pixels of a row from `begin` up to, not including, `end`; empty where that is not above it.
struct PixelSpan {
    int64_t begin;
    int64_t end;

    bool IsEmpty() const { return begin >= end; }
    PixelSpan operator&(const PixelSpan &other) const {
        return {std::max(begin, other.begin), std::min(end, other.end)};
    }
};

constexpr int64_t DivideDown(int64_t dividend, int64_t divisor) {
    const int64_t quotient = dividend / divisor;
    return quotient - (dividend % divisor != 0 && (dividend < 0) != (divisor < 0) ? 1 : 0);
}

// The pixels i for which `lowest` <= (start + i * step) >> 10 <= `highest`.
constexpr PixelSpan LandingSpan(int64_t start, int64_t step, int64_t lowest, int64_t highest) {
    const int64_t least = lowest * 1024 - start, most = highest * 1024 + 1023 - start;
    if (step == 0) return least <= 0 && most >= 0 ? PixelSpan{INT32_MIN, INT32_MAX} : PixelSpan{0, 0};
    if (step > 0) return {-DivideDown(-least, step), DivideDown(most, step) + 1};
    return {-DivideDown(-most, step), DivideDown(least, step) + 1};
}

// Columns of a tile; with the second, rows are drawn one after the other as a whole.
inline constexpr int64_t kTileColumns = 128;
inline constexpr int64_t kWholeRows = int64_t{1} << 40;

// draw(row, span) for all pixels of `rows` rows of which spanOf(row) land, in tiles that touch few lines of
// the target. Pixels that can land on each other, less than kReach columns apart, keep their order: a tile
// leans to the left by kReach columns a row, so that whatever is drawn before a pixel of the row below, and
// lies close to it, is in the same tile or in one before it.
template <typename SpanOf, typename Draw>
void DrawInTiles(int64_t rows, int64_t tileColumns, SpanOf spanOf, Draw draw) {
    constexpr int64_t kTileRows = 32, kReach = 3;
    std::array<PixelSpan, kTileRows> spans;
    for (int64_t top = 0; top < rows; top += kTileRows) {
        const int64_t count = std::min(kTileRows, rows - top);
        PixelSpan touched{INT64_MAX, 0};
        for (int64_t i = 0; i < count; ++i) {
            PixelSpan &span = spans[static_cast<size_t>(i)] = spanOf(top + i);
            if (span.IsEmpty()) continue;
            touched.begin = std::min(touched.begin, span.begin + kReach * i);
            touched.end = std::max(touched.end, span.end + kReach * i);
        }
        for (int64_t left = touched.begin; left < touched.end; left += tileColumns) {
            for (int64_t i = 0; i < count; ++i) {
                const PixelSpan tile{left - kReach * i, left - kReach * i + tileColumns};
                const PixelSpan span = spans[static_cast<size_t>(i)] & tile;
                if (!span.IsEmpty()) draw(top + i, span);
            }
        }
    }
}

}  // namespace fenlight
