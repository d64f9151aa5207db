// SPDX-License-Identifier: Zlib
// The loops over memory in vectors, for any width of a vector: each memory_kernels_<set>.cpp gives its lanes
// and makes its table. In an unnamed namespace, because each file is compiled for other instructions.
//
// Lanes has
//   kBytes, Vector, Load, Store
//   Spread<width>(value): the low bytes of a value in every element
//   Equal<width>(a, b): Flags, joined by &; Bits makes them a number with kBitsOf<width> bits an element
//   Distance, Beyond: bytes, |a - b| and what of a lies above b
//   Widen<width>(source): the elements of half a vector, twice as wide
//   ReverseLongs: the order of the 32-bit elements
//   Add, Multiply, MultiplyHigh, ShiftRight<width>: unsigned, elements of 2 and 4 bytes
#pragma once

#include <cstdint>
#include <cstring>

#include "data/memory_plain.h"

namespace fenlight {
namespace {

template <typename Lanes>
struct VectorLoops {
    using Vector = typename Lanes::Vector;
    using Flags = typename Lanes::Flags;
    static constexpr int64_t kBytes = Lanes::kBytes;

    // Sums what `hits` gives for vectors at four offsets at a time, so that the sums need not wait for each
    // other, and stops before the last incomplete vector.
    template <typename Hits>
    static int64_t SumVectors(int64_t bytes, int64_t &done, Hits hits) noexcept {
        int64_t sums[4] = {};
        int64_t i = 0;
        for (; i + 4 * kBytes <= bytes; i += 4 * kBytes) {
            for (int part = 0; part < 4; ++part) sums[part] += hits(i + part * kBytes);
        }
        for (; i + kBytes <= bytes; i += kBytes) sums[0] += hits(i);
        done = i;
        return sums[0] + sums[1] + sums[2] + sums[3];
    }

    static int CountFlags(Flags flags) noexcept { return __builtin_popcountll(Lanes::Bits(flags)); }

    template <typename Element>
    static int64_t CountEqual(const uint8_t *memory, int64_t count, uint32_t value) noexcept {
        constexpr int kWidth = sizeof(Element);
        const Vector wanted = Lanes::template Spread<kWidth>(value);
        int64_t done = 0;
        const int64_t bits = SumVectors(count * kWidth, done, [&](int64_t i) {
            return CountFlags(Lanes::template Equal<kWidth>(Lanes::Load(memory + i), wanted));
        });
        return bits / Lanes::template kBitsOf<kWidth> +
               CountEqualPlain<Element>(memory + done, count - done / kWidth, value);
    }

    static int64_t CountDifferent(const uint8_t *first, const uint8_t *second, int64_t count) noexcept {
        int64_t done = 0;
        const int64_t equal = SumVectors(count, done, [&](int64_t i) {
            return CountFlags(Lanes::template Equal<1>(Lanes::Load(first + i), Lanes::Load(second + i)));
        });
        return done - equal + CountDifferentPlain(first + done, second + done, count - done);
    }

    static int64_t CountBeyond(const uint8_t *first, const uint8_t *second, int64_t count,
                               uint8_t tolerance) noexcept {
        const Vector bound = Lanes::template Spread<1>(tolerance), zero = Lanes::template Spread<1>(0);
        int64_t done = 0;
        const int64_t within = SumVectors(count, done, [&](int64_t i) {
            const Vector distance = Lanes::Distance(Lanes::Load(first + i), Lanes::Load(second + i));
            return CountFlags(Lanes::template Equal<1>(Lanes::Beyond(distance, bound), zero));
        });
        return done - within + CountBeyondPlain(first + done, second + done, count - done, tolerance);
    }

    static int64_t CountLeading(const uint8_t *memory, int64_t count, uint8_t value) noexcept {
        const Vector wanted = Lanes::template Spread<1>(value);
        const auto equal = [&](int64_t i) {
            return Lanes::template Equal<1>(Lanes::Load(memory + i), wanted);
        };
        constexpr uint64_t kAll = ~0ULL >> (64 - kBytes);
        int64_t i = 0;
        while (i + 4 * kBytes <= count && Lanes::Bits(equal(i) & equal(i + kBytes) & equal(i + 2 * kBytes) &
                                                      equal(i + 3 * kBytes)) == kAll) {
            i += 4 * kBytes;
        }
        for (; i + kBytes <= count; i += kBytes) {
            const uint64_t bits = Lanes::Bits(equal(i));
            if (bits != kAll) return i + __builtin_ctzll(~bits);
        }
        return i + CountLeadingPlain(memory + i, count - i, value);
    }

    template <typename Narrow, typename Wide>
    static void Widen(uint8_t *target, const uint8_t *source, int64_t count) noexcept {
        constexpr int64_t kStep = kBytes / static_cast<int64_t>(sizeof(Wide));
        int64_t i = 0;
        for (; i + kStep <= count; i += kStep) {
            const auto *from = source + i * static_cast<int64_t>(sizeof(Narrow));
            Lanes::Store(target + i * static_cast<int64_t>(sizeof(Wide)),
                         Lanes::template Widen<sizeof(Narrow)>(from));
        }
        for (; i < count; ++i) StoreElement<Wide>(target, i, LoadElement<Narrow>(source, i));
    }

    // Vectors from both ends change places. The last two may overlap: both are read before, and what both
    // write is the same.
    static void ReverseLongs(uint8_t *memory, int64_t count) noexcept {
        int64_t low = 0, high = count * 4;
        for (; high - low >= kBytes; low += kBytes, high -= kBytes) {
            const Vector first = Lanes::Load(memory + low), last = Lanes::Load(memory + high - kBytes);
            Lanes::Store(memory + low, Lanes::ReverseLongs(last));
            Lanes::Store(memory + high - kBytes, Lanes::ReverseLongs(first));
        }
        ReverseLongsPlain(memory + low, (high - low) / 4);
    }

    // Division by a number that is known for the whole loop: a product's upper half, corrected, as published
    // by Granlund and Montgomery, "Division by invariant integers using multiplication" (1994). Exact for
    // every value of kWidth bytes; a divisor of more bits shifts all of them out, which is the 0 that it
    // gives.
    template <int kWidth>
    class Divisor {
      public:
        explicit Divisor(uint32_t divisor) noexcept {
            const int bits = divisor < 2 ? 0 : 32 - __builtin_clz(divisor - 1);
            const uint64_t excess = (1ULL << bits) - divisor;
            const uint64_t multiplier = (excess << (8 * kWidth)) / divisor + 1;
            multiplier_ = Lanes::template Spread<kWidth>(static_cast<uint32_t>(multiplier));
            firstShift_ = bits < 1 ? bits : 1;
            secondShift_ = bits < 1 ? 0 : bits - 1;
        }

        Vector operator()(Vector value) const noexcept {
            const Vector high = Lanes::template MultiplyHigh<kWidth>(value, multiplier_);
            const Vector rest = Lanes::template ShiftRight<kWidth>(
                Lanes::template Subtract<kWidth>(value, high), firstShift_);
            return Lanes::template ShiftRight<kWidth>(Lanes::template Add<kWidth>(high, rest), secondShift_);
        }

      private:
        Vector multiplier_;
        int firstShift_, secondShift_;
    };

    // The arithmetic for elements of kWidth bytes, 2 or 4, each of which holds a number below `limit`.
    template <int kWidth, bool kDivides>
    struct Steps {
        Vector factor, mask, summand;
        Divisor<kWidth> divisor;

        Steps(const Arithmetic &arithmetic, uint32_t limit) noexcept
            : factor(Lanes::template Spread<kWidth>(arithmetic.factor)),
              mask(Lanes::template Spread<kWidth>(limit)),
              summand(Lanes::template Spread<kWidth>(arithmetic.summand)),
              divisor(arithmetic.divisor) {}

        Vector operator()(Vector value) const noexcept {
            value = Lanes::template Multiply<kWidth>(value, factor);
            if constexpr (kDivides) value = divisor(value & mask);
            return Lanes::template Add<kWidth>(value, summand);
        }
    };

    // Bytes are worked on as words, those at even and those at odd addresses for themselves.
    template <typename Element, bool kDivides>
    static int64_t ComputeVectors(uint8_t *memory, int64_t bytes, const Arithmetic &arithmetic) noexcept {
        constexpr int kWidth = sizeof(Element) == 4 ? 4 : 2;
        const Steps<kWidth, kDivides> steps(arithmetic, static_cast<Element>(~0U));
        const Vector low = Lanes::template Spread<2>(0xFF);
        int64_t i = 0;
        for (; i + kBytes <= bytes; i += kBytes) {
            const Vector value = Lanes::Load(memory + i);
            if constexpr (sizeof(Element) > 1) {
                Lanes::Store(memory + i, steps(value));
            } else {
                const Vector odd = steps(Lanes::template ShiftRight<2>(value, 8));
                Lanes::Store(memory + i, (steps(value & low) & low) | Lanes::ShiftBytesUp(odd));
            }
        }
        return i;
    }

    template <typename Element>
    static void Compute(uint8_t *memory, int64_t count, const Arithmetic &arithmetic) noexcept {
        constexpr int64_t kWidth = sizeof(Element);
        const int64_t done = arithmetic.divisor > 1
                                 ? ComputeVectors<Element, true>(memory, count * kWidth, arithmetic)
                                 : ComputeVectors<Element, false>(memory, count * kWidth, arithmetic);
        ComputePlain<Element>(memory + done, count - done / kWidth, arithmetic);
    }

    // One bit for each of 64 positions at which the probes of the pattern hold.
    struct Probes {
        Vector bytes[3];
        const uint8_t *texts[3];

        Probes(const ProbedPattern &pattern, const uint8_t *text) noexcept {
            for (int i = 0; i < 3; ++i) {
                bytes[i] = Lanes::template Spread<1>(pattern.bytes[pattern.probes[i]]);
                texts[i] = text + pattern.probes[i];
            }
        }

        void ReplaceLast(const ProbedPattern &pattern, const uint8_t *text, int64_t place) noexcept {
            bytes[2] = Lanes::template Spread<1>(pattern.bytes[place]);
            texts[2] = text + place;
        }

        uint64_t operator()(int64_t at) const noexcept {
            uint64_t bits = 0;
            for (int64_t part = 0; part < 64; part += kBytes) {
                Flags flags = Lanes::template Equal<1>(Lanes::Load(texts[0] + at + part), bytes[0]);
                flags &= Lanes::template Equal<1>(Lanes::Load(texts[1] + at + part), bytes[1]);
                flags &= Lanes::template Equal<1>(Lanes::Load(texts[2] + at + part), bytes[2]);
                bits |= Lanes::Bits(flags) << part;
            }
            return bits;
        }
    };

    static uint64_t EqualBits(const uint8_t *text, Vector wanted) noexcept {
        uint64_t bits = 0;
        for (int64_t part = 0; part < 64; part += kBytes) {
            bits |= Lanes::Bits(Lanes::template Equal<1>(Lanes::Load(text + part), wanted)) << part;
        }
        return bits;
    }

    // Whether 4 bytes or more are the same: both ends at once, and what lies between them if they are.
    static bool IsEqual(const uint8_t *a, const uint8_t *b, int64_t length) noexcept {
        if (length < 8) {
            const int64_t last = length - 4;
            return LoadElement<uint32_t>(a, 0) == LoadElement<uint32_t>(b, 0) &&
                   LoadElement<uint32_t>(a + last, 0) == LoadElement<uint32_t>(b + last, 0);
        }
        const int64_t last = length - 8;
        if (LoadElement<uint64_t>(a, 0) != LoadElement<uint64_t>(b, 0)) return false;
        if (LoadElement<uint64_t>(a + last, 0) != LoadElement<uint64_t>(b + last, 0)) return false;
        return length <= 16 || std::memcmp(a + 8, b + 8, static_cast<size_t>(length - 16)) == 0;
    }

    struct Verdict {
        uint64_t bits;  // those at which the whole pattern stands, or the first of them
        int64_t work;   // what that took, counted in vectors
        int64_t fault;  // where the last of many failed; 0: no such place
    };

    // Looks at byte after byte for all places at once, and at the last few ones, or the lasting ones, one by
    // one.
    static Verdict Verify(const ProbedPattern &pattern, const uint8_t *text, uint64_t bits,
                          bool wantsFirst) noexcept {
        const int64_t end = std::min<int64_t>(pattern.length, 300);
        if (wantsFirst && IsEqual(text + __builtin_ctzll(bits), pattern.bytes, pattern.length)) {
            return {bits & -bits, 0, 0};
        }
        int64_t i = 0;
        for (; i < end && __builtin_popcountll(bits) > 4; ++i) {
            bits &= EqualBits(text + i, Lanes::template Spread<1>(pattern.bytes[i]));
        }
        if (bits == 0) return {0, i, i - 1};
        if (i == pattern.length) return {bits, i, 0};
        Verdict verdict{0, i, 0};
        for (; bits != 0; bits &= bits - 1) {
            const int at = __builtin_ctzll(bits);
            const bool isEqual = IsEqual(text + at, pattern.bytes, pattern.length);
            verdict.bits |= static_cast<uint64_t>(isEqual) << at;
            verdict.work += 8 + (isEqual ? pattern.length / 32 : 0);
            if (isEqual && wantsFirst) break;
        }
        return verdict;
    }

    // This and the next function are kept by themselves, because the compiler only makes such short loops
    // where nothing else wants the registers.

    // Leaps from position to position while the last word of a match's marked part is one that no match has.
    [[gnu::noinline]] static int64_t Leap(const ProbedPattern &pattern, const uint8_t *text, int64_t at,
                                          int64_t candidates) noexcept {
        const WordMarks &words = *pattern.words;
        // To the eight bytes at the end of the marked part.
        const int64_t ahead = pattern.marked - 8, leap = pattern.marked - words.wordBytes + 1;
        const uint8_t *place = text + at + ahead;
        const uint8_t *const end = text + candidates + ahead;
        const auto has = [marks = words.marks.data(), mask = words.mask,
                          factor = words.factor](const uint8_t *eight) -> int {
            return marks[WordMarks::Hash(WordMarks::Load(eight), mask, factor)];
        };
        while (end - place > 3 * leap) {
            const int any = has(place) | has(place + leap) | has(place + 2 * leap) | has(place + 3 * leap);
            if (any != 0) break;
            place += 4 * leap;
        }
        while (place < end && has(place) == 0) place += leap;
        return place - text - ahead;
    }

    // Leaps where that has proved worth while; where it has not, it is left alone for longer and longer.
    class Leaper {
      public:
        Leaper(const ProbedPattern &pattern, const uint8_t *text, int64_t candidates) noexcept
            : pattern_(pattern), text_(text), candidates_(candidates) {
            if (pattern.words == nullptr) next_ = candidates;
        }
        // Places from here on are looked at in blocks.
        int64_t Pass(int64_t at) noexcept {
            if (at < next_) return at;
            const int64_t reached = Leap(pattern_, text_, at, candidates_);
            pause_ = reached - at >= kWorthWhile ? 0 : std::min(2 * pause_ + 1024, kLongestPause);
            // At the least all the places that the word may belong to.
            next_ = reached + std::max(pause_, pattern_.marked - pattern_.words->wordBytes + 1);
            return reached;
        }
        int64_t Next() const noexcept { return next_; }
        bool HasFailed() const noexcept { return pause_ > kFailed; }

      private:
        static constexpr int64_t kWorthWhile = 1024, kFailed = 2048, kLongestPause = 65536;
        const ProbedPattern &pattern_;
        const uint8_t *text_;
        int64_t candidates_;
        int64_t next_ = 0, pause_ = 0;
    };

    // Passes the whole blocks from `at` on in which the probes hold nowhere. By itself, for a loop as short
    // as this one is only made if nothing else wants the registers.
    [[gnu::noinline]] static int64_t PassBlocks(const Probes &probes, int64_t at,
                                                int64_t candidates) noexcept {
        const Probes held = probes;
        while (at + 64 <= candidates && held(at) == 0) at += 64;
        return at;
    }

    // Counts the matches of a pattern that is probed whole, as long as the wanted one is far, without a
    // branch for each.
    static int64_t PassMatches(const Probes &probes, int64_t at, int64_t candidates,
                               NthMatch &matches) noexcept {
        int64_t passed = 0;
        const int64_t most = matches.Far() - 64;
        for (; at + 64 <= candidates && passed <= most; at += 64) {
            passed += __builtin_popcountll(probes(at));
        }
        matches.Pass(passed);
        return at;
    }

    template <typename Matches>
    static int64_t Scan(const ProbedPattern &pattern, const uint8_t *text, int64_t from, int64_t candidates,
                        Matches &matches) noexcept {
        Probes probes(pattern, text);
        int64_t work = 0, at = from;
        if constexpr (Matches::kMayOverlap) {
            if (pattern.length <= 3) at = PassMatches(probes, from, candidates, matches);
        }
        Leaper leaper(pattern, text, candidates);
        int lessons = 3;
        for (; at < candidates; at += 64) {
            at = leaper.Pass(at);
            if (at >= candidates) break;
            if (leaper.HasFailed() && pattern.words->mayChange) return at;
            // The last block lies over the one before; what that has had is cut off.
            const int64_t base = at <= candidates - 64 ? at : candidates - 64;
            uint64_t bits = probes(base) >> (at - base) << (at - base);
            if (bits == 0) {
                at = PassBlocks(probes, at + 64, std::min(candidates, leaper.Next())) - 64;
                continue;
            }
            if (pattern.length > 3) {
                const Verdict verdict = Verify(pattern, text + base, bits, matches.WantsFirst());
                bits = verdict.bits;
                work += verdict.work;
                // What many places lack is the best to look at first, and finding it is worth some work.
                if (verdict.fault > 0 && lessons-- > 0) {
                    probes.ReplaceLast(pattern, text, verdict.fault);
                    work -= verdict.work;
                }
            }
            if (bits != 0 && matches.TakeBits(base, bits)) return candidates;
            // A match is worth the work of finding it in another way.
            work -= kMatchWork * __builtin_popcountll(bits);
            if (work > pattern.patience + at / pattern.allowance) return std::min(base + 64, candidates);
            if (work < 0) work = 0;
        }
        return candidates;
    }

    // In vectors looked at.
    static constexpr int64_t kMatchWork = 16;
};

template <typename Lanes>
constexpr MemoryKernels MakeMemoryKernels() noexcept {
    using Loops = VectorLoops<Lanes>;
    return {
        {Loops::template CountEqual<uint8_t>, Loops::template CountEqual<uint16_t>,
         Loops::template CountEqual<uint32_t>},
        {Loops::template Compute<uint8_t>, Loops::template Compute<uint16_t>,
         Loops::template Compute<uint32_t>},
        {Loops::template Widen<uint8_t, uint16_t>, Loops::template Widen<uint16_t, uint32_t>},
        Loops::CountLeading,
        Loops::CountDifferent,
        Loops::CountBeyond,
        Loops::ReverseLongs,
        Loops::template Scan<NthMatch>,
        Loops::template Scan<SeparateList>,
    };
}

}  // namespace
}  // namespace fenlight
