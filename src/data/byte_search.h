// SPDX-License-Identifier: Zlib
// The one search for a pattern of bytes behind FindBytes, FindBytesCount, CountStrings and Replace. It holds
// no state and takes no lock; any thread may call it.
//
// FindPattern and CountPattern bound where a match may start: `candidates` positions from `first` on. A match
// may reach behind them, but a byte there is only read when all bytes before it match, as a plain scan from
// left to right would do, so that a text may end right where the memory ends. Matches may overlap each other.
// SeparateMatches takes only matches that lie wholly inside the text and do not overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fenlight {

// Distance of match number `index`, counted from 0, from `first`; -1 if there are not so many. Sizes of 0 or
// below find nothing, and nothing is read then.
int64_t FindPattern(const uint8_t *first, int64_t candidates, const uint8_t *pattern, int64_t patternLength,
                    int64_t index = 0) noexcept;

int64_t CountPattern(const uint8_t *first, int64_t candidates, const uint8_t *pattern,
                     int64_t patternLength) noexcept;

// Walks over the matches inside a text from left to right; the next match starts behind the end of the last.
// Text and pattern must stay as they are for the time of the walk.
class SeparateMatches {
  public:
    SeparateMatches(const uint8_t *text, int64_t length, const uint8_t *pattern,
                    int64_t patternLength) noexcept
        : text_(text), length_(length), pattern_(pattern), patternLength_(patternLength) {}

    // Puts the positions of the next matches, counted from the start of the text, into `positions` and tells
    // how many there are; fewer than there is room for: that was the end. A hundred at a time cost hardly
    // more than the search itself.
    size_t Next(std::span<int64_t> positions) noexcept;

  private:
    const uint8_t *text_;
    int64_t length_;
    const uint8_t *pattern_;
    int64_t patternLength_;
    int64_t from_ = 0;
};

}  // namespace fenlight
