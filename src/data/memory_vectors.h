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
// and, where a vector has 64 bytes, LoadFirst and HashWords.
#pragma once

#include <cstdint>
#include <cstring>

#include "data/memory_plain.h"
#include "data/search_tail.h"
#include "data/search_vectors.h"

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
};

template <typename Lanes>
constexpr MemoryKernels MakeMemoryKernels() noexcept {
    using Loops = VectorLoops<Lanes>;
    using Search = VectorSearch<Lanes>;
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
        Search::template Scan<NthMatch>,
        Search::template Scan<SeparateList>,
        TailSearch<Lanes>::template Scan<NthMatch>,
        TailSearch<Lanes>::template Scan<SeparateList>,
    };
}

}  // namespace
}  // namespace fenlight
