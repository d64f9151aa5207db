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
    pattern.probes[0] = 0;
    pattern.probes[1] = pattern.length - 1;
    pattern.probes[2] = pattern.length / 2;
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

// Three places that cost nothing to choose; only the middle one gives way to a byte that neither end has.
void TakeFirstProbes(ProbedPattern &pattern) noexcept {
    const int64_t last = pattern.length - 1;
    const auto isNew = [&](int64_t i) {
        return pattern.bytes[i] != pattern.bytes[0] && pattern.bytes[i] != pattern.bytes[last];
    };
    int64_t middle = pattern.length / 2;
    for (int64_t i = 1; !isNew(middle) && i < std::min<int64_t>(last, 16); ++i) {
        if (isNew(i)) middle = i;
    }
    // Different bytes first, for two of the probes may be looked at alone.
    const bool isSame = pattern.bytes[0] == pattern.bytes[last];
    pattern.probes[0] = 0;
    pattern.probes[1] = isSame ? middle : last;
    pattern.probes[2] = isSame ? last : middle;
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

// The scan of a text and that of its tail.
template <typename Sink>
ScanText<Sink> *ChooseScan() noexcept {
    if constexpr (Sink::kMayOverlap) {
        return ChooseMemoryKernels().scanForNth;
    } else {
        return ChooseMemoryKernels().scanForSeparate;
    }
}

template <typename Sink>
ScanTail<Sink> *ChooseTailScan() noexcept {
    if constexpr (Sink::kMayOverlap) {
        return ChooseMemoryKernels().scanTailForNth;
    } else {
        return ChooseMemoryKernels().scanTailForSeparate;
    }
}

template <typename Sink>
bool TakeRange(int64_t from, int64_t end, Sink &matches) noexcept {
    for (; from < end; from += 64) {
        const uint64_t bits = end - from >= 64 ? ~uint64_t{0} : (uint64_t{1} << (end - from)) - 1;
        if (matches.TakeBits(from, bits)) return true;
    }
    return false;
}

// Where the run of one byte starts that ends at `at`; not below `lowest`.
int64_t StartOfRun(const uint8_t *text, int64_t lowest, int64_t at) noexcept {
    const uint64_t eight = 0x0101010101010101U * text[at];
    uint64_t word = 0;
    for (; at - 8 >= lowest; at -= 8) {
        std::memcpy(&word, text + at - 8, sizeof word);
        if (word != eight) break;
    }
    while (at > lowest && text[at - 1] == text[at]) --at;
    return at;
}

// The first of the places `step` apart from `at` on where eight times the byte stand; `end` or more if there
// is none.
int64_t NextEight(const uint8_t *text, int64_t at, int64_t end, int64_t step, uint8_t byte) noexcept {
    const uint64_t eight = 0x0101010101010101U * byte;
    const auto isEqual = [=](int64_t place) {
        uint64_t word = 0;
        std::memcpy(&word, text + place, sizeof word);
        return static_cast<int>(word == eight);
    };
    for (; at + 3 * step < end; at += 4 * step) {
        if ((isEqual(at) | isEqual(at + step) | isEqual(at + 2 * step) | isEqual(at + 3 * step)) != 0) break;
    }
    while (at < end && isEqual(at) == 0) at += step;
    return at;
}

// Finds runs of one byte. A match covers a whole word at one of any `step` places in a row, so that the
// others need no look unless the word there is all of that byte.
template <typename Sink>
void ScanForRuns(const uint8_t *text, int64_t candidates, const Pattern &pattern, Sink &matches) noexcept {
    const uint8_t byte = pattern.bytes[0];
    const int64_t length = pattern.length, end = candidates + length - 1, step = length - 7;
    // How much of a run is looked at beyond its first match; more and more, for a caller may want the first.
    int64_t reach = 0, lowest = 0;
    for (int64_t at = step - 1; (at = NextEight(text, at, end - 7, step, byte)) < end - 7;) {
        const int64_t start = StartOfRun(text, std::max(lowest, at - step + 1), at);
        const int64_t limit = std::min(end, std::max(at + 8, start + length + reach));
        int64_t stop = at + 8;
        if (stop < limit) stop += ChooseMemoryKernels().countLeading(text + stop, limit - stop, byte);
        if (stop - start >= length) {
            if (TakeRange(start, stop - length + 1, matches)) return;
            reach = std::max<int64_t>(length, std::min<int64_t>(2 * reach + 64, 4096));
        }
        // In a run that goes on, the starts up to here are done.
        const bool goesOn = stop == limit && stop < end;
        lowest = goesOn ? std::max(start, stop - length + 1) : stop + 1;
        at = lowest + step - 1;
    }
}

bool IsRun(const Pattern &pattern) noexcept {
    return std::memcmp(pattern.bytes, pattern.bytes + 1, static_cast<size_t>(pattern.length - 1)) == 0;
}

// Begins without any preparation, which would cost more than many a search, and chooses the probes when the
// first ones hold too often. Gives the first position that was not looked at.
template <typename Sink>
int64_t ScanProbed(const uint8_t *text, int64_t candidates, ProbedPattern &probed, Sink &matches) noexcept {
    constexpr int64_t kWorthChoosing = 1024;
    ScanText<Sink> *const scan = ChooseScan<Sink>();
    const int64_t from = scan(probed, text, 0, candidates, matches);
    if (from == candidates || probed.length <= 3 || candidates - from < kWorthChoosing) return from;
    ChooseProbes(probed, candidates - from);
    probed.mayChoose = false;
    probed.patience = 256;
    probed.allowance = 128;
    return scan(probed, text, from, candidates, matches);
}

// With leaps, which need much room, over what a long pattern's match is not near to. In texts that would take
// hardly longer without them, they are only for the case that the probes are of little use.
template <typename Sink>
[[gnu::noinline]] int64_t ScanLeaping(const uint8_t *text, int64_t candidates, ProbedPattern &probed,
                                      Sink &matches) noexcept {
    constexpr int64_t kFirstLook = 1024;
    const bool isWorthIt = probed.length >= 48 && candidates >= (probed.length >= 90 ? 8192 : 16384);
    WordLeaps leaps;
    leaps.next = isWorthIt ? kFirstLook : candidates;
    leaps.pause = leaps.turns = 0;
    probed.leaps = &leaps;
    return ScanProbed(text, candidates, probed, matches);
}

template <typename Sink>
int64_t ScanMany(const uint8_t *text, int64_t candidates, const Pattern &pattern, Sink &matches) noexcept {
    constexpr int64_t kShortestLeaping = 20, kFewestForLeaps = 2048;
    const int64_t length = pattern.length;
    ProbedPattern probed{pattern, {0, length - 1, length / 2}, 32, 512, length > 3, nullptr};
    if (length > 3) TakeFirstProbes(probed);
    const bool mayLeap = length >= kShortestLeaping && candidates >= kFewestForLeaps;
    return (mayLeap ? ScanLeaping<Sink> : ScanProbed<Sink>)(text, candidates, probed, matches);
}

// Gives the matches at the first `candidates` positions to `matches`. All bytes of them may be read.
template <typename Sink>
void ScanInside(const uint8_t *text, int64_t candidates, const Pattern &pattern, Sink &matches) noexcept {
    constexpr int64_t kShortestRun = 14, kShortestLongRun = 24, kLongText = 4096;
    const int64_t length = pattern.length;
    int64_t from = 0;
    if (candidates < kScanned) {
        from = ChooseTailScan<Sink>()(pattern, {text, candidates, candidates + length - 1}, 0, matches);
    } else if (length >= (candidates < kLongText ? kShortestRun : kShortestLongRun) && IsRun(pattern)) {
        return ScanForRuns(text, candidates, pattern, matches);
    } else {
        from = ScanMany(text, candidates, pattern, matches);
    }
    if (from < candidates) ChainMatches(text, from, candidates, pattern, matches);
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

void ScanSlowly(const uint8_t *text, int64_t from, int64_t candidates, const Pattern &pattern,
                NthMatch &matches) noexcept {
    for (int64_t at = from; at < candidates; ++at) {
        int64_t matched = 0;
        while (matched < pattern.length && text[at + matched] == pattern.bytes[matched]) ++matched;
        if (matched == pattern.length && matches.Take(at)) return;
    }
}

// The positions from which a match may reach behind the range, where a byte is read only when all before it
// match. With a table of borders once that costs too much.
void ScanEdge(const uint8_t *text, int64_t from, int64_t candidates, const Pattern &pattern,
              NthMatch &matches) noexcept {
    const int64_t at =
        ChooseMemoryKernels().scanTailForNth(pattern, {text, candidates, candidates}, from, matches);
    if (at >= candidates) return;
    Borders borders(pattern);
    if (borders.HasMemory()) return ScanWithBorders(text, at, candidates, pattern, borders, matches);
    ScanSlowly(text, at, candidates, pattern, matches);
}

// Up to so many positions are not worth a scan of their own.
constexpr int64_t kShortText = 192;

void ScanRange(const uint8_t *first, int64_t candidates, const Pattern &pattern, NthMatch &matches) noexcept {
    if (candidates <= 0 || pattern.length <= 0) return;
    const int64_t inside = candidates - pattern.length + 1;
    if (inside < kShortText) return ScanEdge(first, 0, candidates, pattern, matches);
    ScanInside(first, inside, pattern, matches);
    if (!matches.HasEnough()) ScanEdge(first, inside, candidates, pattern, matches);
}

// Looks at the first positions for a pair that may be frequent. One byte more is read.
constexpr int64_t kNear = 16;

int64_t FindNearPair(const uint8_t *text, const uint8_t *pair) noexcept {
    constexpr uint64_t kOnes = 0x0101010101010101U;
    for (int64_t at = 0; at < kNear; at += 8) {
        uint64_t first = 0, second = 0;
        std::memcpy(&first, text + at, sizeof first);
        std::memcpy(&second, text + at + 1, sizeof second);
        const uint64_t different = (first ^ kOnes * pair[0]) | (second ^ kOnes * pair[1]);
        // The lowest of the zero bytes has its high bit set, and no byte below it.
        const uint64_t zeros = (different - kOnes) & ~different & (kOnes << 7);
        if (zeros != 0) return at + __builtin_ctzll(zeros) / 8;
    }
    return -1;
}

}  // namespace

int64_t FindPattern(const uint8_t *first, int64_t candidates, const uint8_t *pattern, int64_t patternLength,
                    int64_t index) noexcept {
    if (index < 0) return -1;
    if (patternLength == 1 && index == 0 && candidates > 0) {
        const void *found = std::memchr(first, *pattern, static_cast<size_t>(candidates));
        return found == nullptr ? -1 : static_cast<const uint8_t *>(found) - first;
    }
    if (patternLength == 2 && index == 0 && candidates > kNear) {
        const int64_t near = FindNearPair(first, pattern);
        if (near >= 0) return near;
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
