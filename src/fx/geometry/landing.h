// SPDX-License-Identifier: Zlib
// Which pixels of a source row land inside the target of a free rotation: worked out before a row is drawn,
// so that the loop over its pixels has nothing to test. Nothing here owns anything.
#pragma once

#include <algorithm>
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

}  // namespace fenlight
