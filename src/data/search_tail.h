// SPDX-License-Identifier: Zlib
// The search in vectors at the positions from which a match may reach behind what can be read, and in short
// texts. In an unnamed namespace, because each file that includes this is compiled for other instructions.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "data/memory_plain.h"
#include "data/search_matches.h"
#include "data/search_vectors.h"

namespace fenlight {
namespace {

template <typename Lanes>
struct TailSearch {
    using Vector = typename Lanes::Vector;
    static constexpr int64_t kBytes = Lanes::kBytes;

    // The last 64 bytes that can be read, or fewer.
    class LastBytes {
      public:
        explicit LastBytes(const TextTail &tail) noexcept
            : missing_(std::max<int64_t>(64 - tail.readable, 0)) {
            const uint8_t *from = tail.text + tail.readable - (64 - missing_);
            std::array<uint8_t, 64> room;
            if (missing_ > 0) {
                if constexpr (kBytes == 64) {
                    parts_[0] = Lanes::LoadFirst(from, tail.readable);
                    return;
                }
                room.fill(0);
                std::memcpy(room.data(), from, static_cast<size_t>(tail.readable));
                from = room.data();
            }
            for (int64_t i = 0; i < 64 / kBytes; ++i) parts_[i] = Lanes::Load(from + i * kBytes);
        }

        // Bit 63 is that of the very last one.
        uint64_t Equal(Vector wanted) const noexcept {
            uint64_t bits = 0;
            for (int64_t i = 0; i < 64 / kBytes; ++i) {
                bits |= Lanes::Bits(Lanes::template Equal<1>(parts_[i], wanted)) << (i * kBytes);
            }
            return bits << missing_;
        }

      private:
        Vector parts_[64 / kBytes];
        int64_t missing_;
    };

    // The positions at which some of the pattern's bytes stand, as far as they can be read.
    class Starts {
      public:
        // Behind a run at the pattern's beginning stands the byte that tells most; in a run, neighbours do.
        Starts(const Pattern &pattern, const TextTail &tail, int64_t run) noexcept
            : last_(tail),
              pattern_(pattern),
              tail_(tail),
              places_{0, pattern.length - 1, run < pattern.length ? run : pattern.length / 4,
                      run < pattern.length ? pattern.length / 2 : std::min<int64_t>(1, pattern.length - 1)} {
            for (int i = 0; i < kCount; ++i) {
                bytes_[i] = Lanes::template Spread<1>(pattern.bytes[places_[i]]);
            }
        }

        // One bit for each position from `base` on.
        uint64_t Find(int64_t base) const noexcept {
            const int64_t positions = tail_.candidates - base;
            uint64_t bits = positions < 64 ? (uint64_t{1} << positions) - 1 : ~uint64_t{0};
            for (int i = 0; i < kCount; ++i) bits &= EqualFrom(base + places_[i], bytes_[i]);
            return bits;
        }

        // Takes away from positions those at which a byte does not stand that was missing at another, and
        // from many those at which the next few do not.
        uint64_t Narrow(int64_t base, uint64_t bits, int64_t fault) noexcept {
            if (bits == 0) return 0;
            places_[2] = fault;
            bytes_[2] = Lanes::template Spread<1>(pattern_.bytes[fault]);
            bits &= EqualFrom(base + fault, bytes_[2]);
            const int64_t end = std::min<int64_t>(pattern_.length, 7);
            for (int64_t i = 1; i < end && __builtin_popcountll(bits) > 1; ++i) {
                bits &= EqualFrom(base + i, Lanes::template Spread<1>(pattern_.bytes[i]));
            }
            return bits;
        }

      private:
        static constexpr int kCount = 4;
        // What lies behind the last byte may be equal.
        uint64_t EqualFrom(int64_t at, Vector wanted) const noexcept {
            const int64_t beyond = at + 64 - tail_.readable;
            if (beyond <= 0) return VectorSearch<Lanes>::EqualBits(tail_.text + at, wanted);
            if (beyond > 63) return ~uint64_t{0};
            return last_.Equal(wanted) >> beyond | ~(~uint64_t{0} >> beyond);
        }

        LastBytes last_;
        Vector bytes_[kCount];
        const Pattern &pattern_;
        const TextTail &tail_;
        int64_t places_[kCount];
    };

    static int64_t CountRun(const Pattern &pattern) noexcept {
        if (pattern.length == 1 || pattern.bytes[1] != pattern.bytes[0]) return 1;
        return 1 + VectorSearch<Lanes>::CountMatched(pattern.bytes + 1, pattern.length - 1,
                                                     {pattern.bytes, pattern.length - 1});
    }

    // Walks over the positions that the filter leaves.
    class TailWalk {
      public:
        TailWalk(const Pattern &pattern, const TextTail &tail) noexcept
            : pattern_(pattern),
              text_(tail.text),
              candidates_(tail.candidates),
              known_(tail.readable),
              run_(CountRun(pattern)) {}

        int64_t Run() const noexcept { return run_; }
        // The first position that is neither done nor ruled out.
        int64_t Next() const noexcept { return next_; }
        // Vectors looked at.
        int64_t Work() const noexcept { return work_; }

        // How much of the pattern stands there.
        int64_t Match(int64_t at) noexcept {
            const int64_t matched = VectorSearch<Lanes>::CountMatched(text_ + at, known_ - at, pattern_);
            work_ += 8 + matched / 64;
            next_ = at + 1;
            // All bytes up to one that broke it off have been read.
            known_ = std::max(known_, at + std::min(matched + 1, pattern_.length));
            if (matched >= 8 && matched < pattern_.length) next_ = NextStart(at, matched);
            return matched;
        }

      private:
        // Where the next match may start: the byte that broke this one off has to stand in the pattern; if it
        // makes a run longer, at its place before the run's end.
        int64_t NextStart(int64_t at, int64_t matched) noexcept {
            const uint8_t byte = text_[at + matched];
            if (matched == run_ && byte == pattern_.bytes[0]) {
                int64_t end = at + matched + 1;
                while (end - run_ < candidates_ && text_[end] == byte) ++end;
                known_ = std::max(known_, std::min(end, candidates_ + run_ - 1) + 1);
                return end - run_;
            }
            const void *same = memrchr(pattern_.bytes, byte, static_cast<size_t>(matched));
            const int64_t place = same == nullptr ? -1 : static_cast<const uint8_t *>(same) - pattern_.bytes;
            return at + matched - place;
        }

        const Pattern &pattern_;
        const uint8_t *text_;
        int64_t candidates_;
        int64_t known_;
        int64_t run_;
        int64_t next_ = 0;
        int64_t work_ = 0;
    };

    template <typename Matches>
    static int64_t Scan(const Pattern &pattern, const TextTail &tail, int64_t from,
                        Matches &matches) noexcept {
        TailWalk walk(pattern, tail);
        Starts starts(pattern, tail, walk.Run());
        const int64_t patience = 4 * pattern.length + 512;
        for (int64_t base = from; base < tail.candidates; base += 64) {
            uint64_t bits = starts.Find(base);
            while (bits != 0) {
                const int64_t at = base + __builtin_ctzll(bits);
                bits &= bits - 1;
                if (at < walk.Next()) continue;
                const int64_t matched = walk.Match(at);
                if (matched < pattern.length) {
                    bits = starts.Narrow(base, bits, matched);
                } else if (matches.Take(at)) {
                    return tail.candidates;
                }
            }
            if (walk.Work() > patience + base - from) {
                return std::max(walk.Next(), std::min(base + 64, tail.candidates));
            }
        }
        return tail.candidates;
    }
};

}  // namespace
}  // namespace fenlight
