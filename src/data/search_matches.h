// SPDX-License-Identifier: Zlib
// What the searches for a pattern of bytes tell each other: the pattern with what was learned of it, who
// takes the matches, and what a scan is. All of it lives for one search, on its stack.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace fenlight {

struct Pattern {
    const uint8_t *bytes;
    int64_t length;
};

// Leaps over a text from word to word, as long as they meet words of eight bytes that the pattern does not
// have.
struct WordLeaps {
    static constexpr int64_t kWord = 8;
    static constexpr int kMostBits = 14;
    // The place to leap from, and how long they have not been worth while.
    int64_t next;
    int64_t pause;
    // So often the words were marked, so many words, and with this factor.
    int turns;
    int64_t marked;
    uint64_t factor;
    int shift;
    // Words that seemed to be marked were met too often.
    bool hasStumbled;
    // Now and then a word seems to be marked that is not. Bytes and not bits: neighbours in a pattern may be
    // alike, and must not wait for each other.
    alignas(64) std::array<uint8_t, size_t{1} << kMostBits> marks;

    // Positions from one place to the next: none of them has its match when the word is not marked.
    int64_t Leap() const noexcept { return marked - kWord + 1; }
    // The high bits of the product depend on all bytes.
    static uint64_t Hash(const uint8_t *place, uint64_t factor, int shift) noexcept {
        uint64_t word = 0;
        std::memcpy(&word, place, sizeof word);
        return word * factor >> shift;
    }
};

// A pattern and what a scan looks at first.
struct ProbedPattern : Pattern {
    // Places of bytes that rarely occur; all of a pattern of up to three bytes.
    int64_t probes[3];
    // So many vectors may be looked at in vain beside one for each `allowance` places.
    int64_t patience;
    int64_t allowance;
    // The scan may ask for better probes, where those at hand are of little use.
    bool mayChoose;
    // Null: it does not leap.
    WordLeaps *leaps;
};

// A scan looks at so many candidates at a time; fewer there must not be.
inline constexpr int64_t kScanned = 64;

// Takes matches from the left, counts them, and has enough with number `wanted`.
class NthMatch {
  public:
    static constexpr bool kMayOverlap = true;
    explicit NthMatch(int64_t wanted) : wanted_(wanted) {}

    // True: enough.
    bool Take(int64_t position) noexcept {
        position_ = position;
        return seen_++ == wanted_;
    }
    // A match at base + n for each bit n; at least one.
    bool TakeBits(int64_t base, uint64_t bits) noexcept {
        const int64_t found = __builtin_popcountll(bits);
        if (seen_ + found <= wanted_) {
            seen_ += found;
            return false;
        }
        for (; seen_ < wanted_; ++seen_) bits &= bits - 1;
        return Take(base + __builtin_ctzll(bits));
    }
    bool HasEnough() const noexcept { return seen_ > wanted_; }
    bool WantsFirst() const noexcept { return seen_ == wanted_; }
    // So many matches before the wanted one may be passed, counted and not looked at.
    int64_t Far() const noexcept { return wanted_ - seen_; }
    void Pass(int64_t matches) noexcept { seen_ += matches; }
    // Where the next match may start.
    static int64_t Next() noexcept { return 0; }
    int64_t Seen() const noexcept { return seen_; }
    int64_t Position() const noexcept { return HasEnough() ? position_ : -1; }

  private:
    int64_t wanted_;
    int64_t seen_ = 0;
    int64_t position_ = -1;
};

// Takes those matches from the left that do not overlap the one before, and has enough when it is full.
class SeparateList {
  public:
    static constexpr bool kMayOverlap = false;
    SeparateList(std::span<int64_t> positions, int64_t patternLength) noexcept
        : positions_(positions), patternLength_(patternLength) {}

    bool Take(int64_t position) noexcept {
        if (position < next_) return false;
        next_ = position + patternLength_;
        positions_[count_++] = position;
        return HasEnough();
    }
    bool TakeBits(int64_t base, uint64_t bits) noexcept {
        for (; bits != 0; bits &= bits - 1) {
            if (Take(base + __builtin_ctzll(bits))) return true;
        }
        return false;
    }
    bool HasEnough() const noexcept { return count_ == positions_.size(); }
    // Where matches that do not overlap each other may be put, without a branch for each: kAtOnce in any
    // case, and one less than there is room for.
    static constexpr size_t kAtOnce = 2;
    std::span<int64_t> Room() noexcept { return positions_.subspan(count_); }
    void TookApart(size_t count) noexcept { count_ += count; }
    static bool WantsFirst() noexcept { return false; }
    size_t Count() const noexcept { return count_; }
    // Where the next match may start.
    int64_t Next() const noexcept { return next_; }

  private:
    std::span<int64_t> positions_;
    int64_t patternLength_;
    size_t count_ = 0;
    int64_t next_ = 0;
};

// Gives matches that start at the positions of a text from `from` to before `candidates`, all bytes of which
// may be read, to `matches`, and tells the first position that it has not looked at: all are done, `matches`
// has enough, or the probes hold too often to be of use.
template <typename Matches>
using ScanText = int64_t(const ProbedPattern &pattern, const uint8_t *text, int64_t from, int64_t candidates,
                         Matches &matches) noexcept;

// A text of which `readable` bytes may be read, and more of them only where all bytes before match the
// pattern. Matches may start at `candidates` positions.
struct TextTail {
    const uint8_t *text;
    int64_t candidates;
    int64_t readable;
};

// The same for a text's last positions, or all of a short one. Patterns have two bytes or more.
template <typename Matches>
using ScanTail = int64_t(const Pattern &pattern, const TextTail &tail, int64_t from,
                         Matches &matches) noexcept;

}  // namespace fenlight
