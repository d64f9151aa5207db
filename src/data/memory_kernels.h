// SPDX-License-Identifier: Zlib
// The loops over memory that matter for speed, in one version for every machine and others for what a
// processor may have. A kernel sees memory and counts above 0, nothing else; memory may lie at any alignment,
// and a kernel reads and writes exactly the elements that it is told. Only tests choose a version.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "frame/vector_level.h"

namespace fenlight {

// What happens to each element, in this order and at the element's width: times `factor`, divided by
// `divisor`, which is not 0, plus `summand`.
struct Arithmetic {
    uint32_t factor;
    uint32_t divisor;
    uint32_t summand;
};

// A pattern and what a scan looks at first.
struct ProbedPattern {
    const uint8_t *bytes;
    int64_t length;
    // Places of bytes that rarely occur; all of a pattern of up to three bytes.
    int64_t probes[3];
    // So many vectors may be looked at in vain beside one for each `allowance` places.
    int64_t patience;
    int64_t allowance;
    // The words that end within the first `marked` bytes of the pattern, so that a scan leaps over texts that
    // have none of them. 0: it does not leap.
    const struct WordMarks *words;
    int64_t marked;
};

// A set of words of four or eight bytes, which hardly ever meet by chance. Now and then it says that it has a
// word which it has not.
struct WordMarks {
    static constexpr int kBits = 12;
    int64_t wordBytes;
    uint64_t mask;
    uint64_t factor;
    // A scan that hardly leaps returns, to be called again with another factor.
    bool mayChange;
    // Bytes and not bits: neighbours in a pattern may be alike, and must not wait for each other.
    std::array<uint8_t, size_t{1} << kBits> marks;

    // By the eight bytes of which the word is the last ones.
    static uint64_t Load(const uint8_t *place) noexcept {
        uint64_t word = 0;
        std::memcpy(&word, place, sizeof word);
        return word;
    }
    // The high bits of the product depend on all bytes.
    static uint64_t Hash(uint64_t word, uint64_t mask, uint64_t factor) noexcept {
        return (word & mask) * factor >> (64 - kBits);
    }
};

// A scan looks at so many candidates at a time. For fewer ones, so many bytes in front of the last
// candidate's end must be there to read.
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

struct MemoryKernels {
    // By the width of an element: 1, 2 and 4 bytes.
    int64_t (*countEqual[3])(const uint8_t *memory, int64_t count, uint32_t value) noexcept;
    void (*compute[3])(uint8_t *memory, int64_t count, const Arithmetic &arithmetic) noexcept;
    // From 1 to 2 and from 2 to 4 bytes. What is written must not reach elements that are still to be read.
    void (*widen[2])(uint8_t *target, const uint8_t *source, int64_t count) noexcept;
    int64_t (*countLeading)(const uint8_t *memory, int64_t count, uint8_t value) noexcept;
    int64_t (*countDifferent)(const uint8_t *first, const uint8_t *second, int64_t count) noexcept;
    int64_t (*countBeyond)(const uint8_t *first, const uint8_t *second, int64_t count,
                           uint8_t tolerance) noexcept;
    void (*reverseLongs)(uint8_t *memory, int64_t count) noexcept;
    ScanText<NthMatch> *scanForNth;
    ScanText<SeparateList> *scanForSeparate;
};

// memory_kernels_sse4.cpp, memory_kernels_avx2.cpp, memory_kernels_avx512.cpp
extern const MemoryKernels kMemorySse4, kMemoryAvx2, kMemoryAvx512;

const MemoryKernels &ChooseMemoryKernels() noexcept;

}  // namespace fenlight
