// SPDX-License-Identifier: Zlib
#include "data/byte_search.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "data/memory_kernels.h"
#include "fenlight/platform/system.h"

namespace fenlight {
namespace {

struct Pattern {
    const uint8_t *bytes;
    int64_t length;
};

// The bytes of written language, tables and pictures from the most frequent on. Only the order of the rarer
// ones matters: a pattern is probed where its rarest bytes are.
constexpr std::array<uint8_t, 256> RankBytes() {
    using std::string_view_literals::operator""sv;
    constexpr std::string_view kFrequent =
        "\0 etaoinsrhldcumfpgwybv\n,.\xFFkI0T1-SA\tE;=()xqjz\"'CN2RLDMPO"sv;
    std::array<uint8_t, 256> ranks{};
    uint8_t rank = 255;
    for (const char frequent : kFrequent) ranks[static_cast<uint8_t>(frequent)] = rank--;
    for (size_t byte = 0; byte < ranks.size(); ++byte) {
        if (ranks[byte] == 0) ranks[byte] = rank--;
    }
    return ranks;
}

// All different, so that equal ranks mean equal bytes.
constexpr std::array<uint8_t, 256> kRanks = RankBytes();

// Three places with different bytes, if the pattern has so many, the rarest first. A short text is not worth
// a look at all of a long pattern.
void ChooseProbes(ProbedPattern &pattern, int64_t candidates) noexcept {
    int ranks[3] = {256, 256, 256};
    const int64_t end = std::min<int64_t>(pattern.length, 64 + candidates / 64);
    for (int64_t i = 0; i < end; ++i) {
        if (i > 0 && pattern.bytes[i] == pattern.bytes[i - 1]) continue;
        const int rank = kRanks[pattern.bytes[i]];
        if (rank >= ranks[2] || rank == ranks[1] || rank == ranks[0]) continue;
        int place = 2;
        for (; place > 0 && rank < ranks[place - 1]; --place) {
            ranks[place] = ranks[place - 1];
            if (ranks[place] < 256) pattern.probes[place] = pattern.probes[place - 1];
        }
        ranks[place] = rank;
        pattern.probes[place] = i;
    }
}

using PairMarks = std::array<uint8_t, 256>;

// A long pattern of few different pairs lets a scan leap over its whole length where a text has none of them.
// True: that beats looking at 64 places at a time, which needs no leaps.
bool MarkPairs(const Pattern &pattern, PairMarks &marks) noexcept {
    constexpr int64_t kMostPairs = 16;
    if (pattern.length < 16) return false;
    marks.fill(0);
    const auto mark = [&](int64_t from, int64_t end) {
        for (int64_t i = from; i < end; ++i) marks[HashPair(pattern.bytes[i], pattern.bytes[i + 1])] = 1;
        return ChooseMemoryKernels().countEqual[0](marks.data(), std::ssize(marks), 1);
    };
    const int64_t pairs = pattern.length - 1, first = std::min<int64_t>(pairs, 64);
    int64_t different = mark(0, first);
    if (different <= kMostPairs && first < pairs) different = mark(first, pairs);
    return different <= kMostPairs && pattern.length >= 16 * std::min<int64_t>(different, 3);
}

bool Matches(const uint8_t *text, int64_t at, const Pattern &pattern, int64_t from, int64_t count) noexcept {
    return std::memcmp(text + at + from, pattern.bytes + from, static_cast<size_t>(count)) == 0;
}

// Follows matches that lie a period apart, each of which needs no more than its last bytes compared.
template <typename Sink>
bool FollowPeriod(const uint8_t *text, int64_t candidates, const Pattern &pattern, int64_t period,
                  int64_t &last, Sink &matches) noexcept {
    while (last + period < candidates &&
           Matches(text, last + period, pattern, pattern.length - period, period)) {
        last += period;
        if (matches.Take(last)) return true;
    }
    return false;
}

// Finds with the C library's search, in time linear in the text also where matches overlap each other: two
// matches next to each other that are at most half a pattern apart show the pattern's smallest period. From
// then on matches come in chains of that distance, and behind a chain's end none can start that overlaps its
// last match by a period or more.
template <typename Sink>
bool ChainMatches(const uint8_t *text, int64_t from, int64_t candidates, const Pattern &pattern,
                  Sink &matches) noexcept {
    int64_t period = 0, last = -pattern.length;
    for (int64_t at = std::max(from, matches.Next()); at < candidates;) {
        const void *found = memmem(text + at, static_cast<size_t>(candidates - at + pattern.length - 1),
                                   pattern.bytes, static_cast<size_t>(pattern.length));
        if (found == nullptr) return false;
        const int64_t position = static_cast<const uint8_t *>(found) - text;
        if (matches.Take(position)) return true;
        if (period == 0 && position - last <= pattern.length / 2) period = position - last;
        last = position;
        at = last + (Sink::kMayOverlap ? 1 : pattern.length);
        if (!Sink::kMayOverlap || period == 0) continue;
        if (FollowPeriod(text, candidates, pattern, period, last, matches)) return true;
        at = last + pattern.length - period + 1;
    }
    return false;
}

template <typename Sink>
ScanText<Sink> *ChooseScan() noexcept {
    if constexpr (Sink::kMayOverlap) {
        return ChooseMemoryKernels().scanForNth;
    } else {
        return ChooseMemoryKernels().scanForSeparate;
    }
}

// Gives the matches at the first `candidates` positions to `matches`. All bytes of them may be read.
template <typename Sink>
void ScanInside(const uint8_t *text, int64_t candidates, const Pattern &pattern, Sink &matches) noexcept {
    int64_t from = 0;
    if (candidates >= kScanned) {
        ProbedPattern probed{
            pattern.bytes, pattern.length, {0, pattern.length - 1, pattern.length / 2}, nullptr};
        PairMarks marks;
        if (MarkPairs(pattern, marks)) probed.pairs = marks.data();
        if (pattern.length > 3) ChooseProbes(probed, candidates);
        from = ChooseScan<Sink>()(probed, text, candidates, matches);
    }
    if (from < candidates && !matches.HasEnough()) {
        ChainMatches(text, from, candidates, pattern, matches);
    }
}

// For each length of a match that broke off, the longest beginning of the pattern that is also its end. Known
// as far as it was asked for.
class Borders {
  public:
    explicit Borders(const Pattern &pattern) noexcept
        : bytes_(pattern.bytes),
          lengths_(static_cast<int32_t *>(
              GlobalAlloc(GMEM_FIXED, static_cast<size_t>(pattern.length) * sizeof(int32_t)))) {}
    ~Borders() { GlobalFree(lengths_); }
    Borders(const Borders &) = delete;
    Borders &operator=(const Borders &) = delete;

    bool HasMemory() const noexcept { return lengths_ != nullptr; }

    // `matched` is above 0.
    int32_t Of(int64_t matched) noexcept {
        for (; known_ < matched; ++known_) {
            int32_t length = known_ > 0 ? lengths_[known_ - 1] : 0;
            while (length > 0 && bytes_[known_] != bytes_[length]) length = lengths_[length - 1];
            if (known_ > 0 && bytes_[known_] == bytes_[length]) ++length;
            lengths_[known_] = length;
        }
        return lengths_[matched - 1];
    }

  private:
    const uint8_t *bytes_;
    int32_t *lengths_;
    int64_t known_ = 0;
};

// The scan of Knuth, Morris and Pratt: it too reads no byte unless all before it match.
void ScanWithBorders(const uint8_t *text, int64_t from, int64_t candidates, const Pattern &pattern,
                     Borders &borders, NthMatch &matches) noexcept {
    int64_t matched = 0;
    for (int64_t at = from; at < candidates;) {
        while (matched < pattern.length && text[at + matched] == pattern.bytes[matched]) ++matched;
        if (matched == pattern.length && matches.Take(at)) return;
        const int64_t border = matched > 0 ? borders.Of(matched) : -1;
        at += matched > 0 ? matched - border : 1;
        matched = matched > 0 ? border : 0;
    }
}

// The positions from which a match may reach behind the range. Byte by byte, and with a table of borders once
// that costs too much.
void ScanEdge(const uint8_t *text, int64_t from, int64_t candidates, const Pattern &pattern,
              NthMatch &matches) noexcept {
    int64_t patience = pattern.length + 256;
    for (int64_t at = from; at < candidates; ++at) {
        const void *start = std::memchr(text + at, pattern.bytes[0], static_cast<size_t>(candidates - at));
        if (start == nullptr) return;
        at = static_cast<const uint8_t *>(start) - text;
        int64_t matched = 1;
        while (matched < pattern.length && text[at + matched] == pattern.bytes[matched]) ++matched;
        if (matched == pattern.length && matches.Take(at)) return;
        patience -= matched;
        if (patience > 0) continue;
        Borders borders(pattern);
        if (borders.HasMemory()) {
            return ScanWithBorders(text, at + 1, candidates, pattern, borders, matches);
        }
        patience = std::numeric_limits<int64_t>::max();
    }
}

void ScanRange(const uint8_t *first, int64_t candidates, const Pattern &pattern, NthMatch &matches) noexcept {
    if (candidates <= 0 || pattern.length <= 0) return;
    const int64_t inside = std::max<int64_t>(candidates - pattern.length + 1, 0);
    if (inside > 0) ScanInside(first, inside, pattern, matches);
    if (!matches.HasEnough()) ScanEdge(first, inside, candidates, pattern, matches);
}

}  // namespace

int64_t FindPattern(const uint8_t *first, int64_t candidates, const uint8_t *pattern, int64_t patternLength,
                    int64_t index) noexcept {
    if (index < 0) return -1;
    if (patternLength == 1 && index == 0 && candidates > 0) {
        const void *found = std::memchr(first, *pattern, static_cast<size_t>(candidates));
        return found == nullptr ? -1 : static_cast<const uint8_t *>(found) - first;
    }
    NthMatch matches(index);
    ScanRange(first, candidates, {pattern, patternLength}, matches);
    return matches.Position();
}

int64_t CountPattern(const uint8_t *first, int64_t candidates, const uint8_t *pattern,
                     int64_t patternLength) noexcept {
    if (patternLength == 1 && candidates > 0) {
        return ChooseMemoryKernels().countEqual[0](first, candidates, *pattern);
    }
    NthMatch matches(std::numeric_limits<int64_t>::max());
    ScanRange(first, candidates, {pattern, patternLength}, matches);
    return matches.Seen();
}

size_t SeparateMatches::Next(std::span<int64_t> positions) noexcept {
    if (patternLength_ <= 0 || from_ < 0 || from_ > length_ - patternLength_ || positions.empty()) return 0;
    SeparateList matches(positions, patternLength_);
    ScanInside(text_ + from_, length_ - patternLength_ - from_ + 1, Pattern{pattern_, patternLength_},
               matches);
    for (int64_t &position : positions.first(matches.Count())) position += from_;
    from_ += matches.HasEnough() ? matches.Next() : length_;
    return matches.Count();
}

}  // namespace fenlight
