// SPDX-License-Identifier: Zlib
// The search for a pattern of bytes in vectors, for any width of a vector; memory_vectors.h tells what Lanes
// has. In an unnamed namespace, because each file that includes this is compiled for other instructions.
//
// Scan walks over a text in blocks of 64 positions, of which the three probes leave few to compare, and leaps
// where the pattern is long. ScanTail takes the positions from which a match may reach behind what can be
// read.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "data/memory_plain.h"
#include "data/search_matches.h"

namespace fenlight {
namespace {

template <typename Lanes>
struct VectorSearch {
    using Vector = typename Lanes::Vector;
    using Flags = typename Lanes::Flags;
    static constexpr int64_t kBytes = Lanes::kBytes;

    static Flags Equal(const uint8_t *text, Vector wanted) noexcept {
        return Lanes::template Equal<1>(Lanes::Load(text), wanted);
    }

    // One bit for each of 64 bytes.
    static uint64_t EqualBits(const uint8_t *text, Vector wanted) noexcept {
        uint64_t bits = 0;
        for (int64_t part = 0; part < 64; part += kBytes) {
            bits |= Lanes::Bits(Equal(text + part, wanted)) << part;
        }
        return bits;
    }

    struct Probes {
        Vector bytes[3];
        const uint8_t *texts[3];
        // Fours of blocks at which two probes held and the third did not, beside those that were passed.
        int64_t doubts = 0;

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

        template <int kProbes>
        Flags Hold(int64_t at) const noexcept {
            Flags flags = Equal(texts[0] + at, bytes[0]);
            for (int i = 1; i < kProbes; ++i) flags &= Equal(texts[i] + at, bytes[i]);
            return flags;
        }

        // One bit for each of 64 positions at which the probes of the pattern hold.
        uint64_t operator()(int64_t at) const noexcept {
            uint64_t bits = 0;
            for (int64_t part = 0; part < 64; part += kBytes) {
                bits |= Lanes::Bits(Hold<3>(at + part)) << part;
            }
            return bits;
        }

        // Whether so many of the probes hold anywhere in four blocks.
        template <int kProbes>
        bool HoldInFour(int64_t at) const noexcept {
            Flags flags = Hold<kProbes>(at);
            for (int64_t part = kBytes; part < 256; part += kBytes) flags |= Hold<kProbes>(at + part);
            return Lanes::Bits(flags) != 0;
        }
    };

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

    // How many bytes of the pattern stand at a place of which so many may be read at once.
    static int64_t CountMatched(const uint8_t *text, int64_t readable, const Pattern &pattern) noexcept {
        const int64_t atOnce = std::min(readable, pattern.length);
        int64_t matched = 0;
        for (; matched + kBytes <= atOnce; matched += kBytes) {
            constexpr uint64_t kAll = ~0ULL >> (64 - kBytes);
            const uint64_t bits = Lanes::Bits(
                Lanes::template Equal<1>(Lanes::Load(text + matched), Lanes::Load(pattern.bytes + matched)));
            if (bits != kAll) return matched + __builtin_ctzll(~bits);
        }
        for (; matched + 8 <= atOnce; matched += 8) {
            const uint64_t different =
                LoadElement<uint64_t>(text + matched, 0) ^ LoadElement<uint64_t>(pattern.bytes + matched, 0);
            if (different != 0) return matched + __builtin_ctzll(different) / 8;
        }
        while (matched < pattern.length && text[matched] == pattern.bytes[matched]) ++matched;
        return matched;
    }

    struct Verdict {
        uint64_t bits;  // those at which the whole pattern stands, or the first of them
        int64_t work;   // what that took, counted in vectors
        int64_t fault;  // where the last of many failed; 0: no such place
    };

    // Where a match broke off that had begun well; 0 if it had not.
    static int64_t FindDeepFault(const ProbedPattern &pattern, const uint8_t *text) noexcept {
        if (LoadElement<uint64_t>(text, 0) != LoadElement<uint64_t>(pattern.bytes, 0)) return 0;
        return CountMatched(text, pattern.length, pattern);
    }

    // Looks at the first place by itself, as it is often the only one, then at byte after byte for all places
    // at once, and at the last few ones, or the lasting ones, one by one.
    static Verdict Verify(const ProbedPattern &pattern, const uint8_t *text, uint64_t bits,
                          bool wantsFirst) noexcept {
        Verdict verdict{0, 0, 0};
        if (wantsFirst || (bits & (bits - 1)) == 0) {
            if (Compare(pattern, text, bits, verdict) && wantsFirst) return verdict;
            bits &= bits - 1;
        }
        const int64_t end = std::min<int64_t>(pattern.length, 300);
        int64_t i = 0;
        for (; i < end && __builtin_popcountll(bits) > 4; ++i) {
            bits &= EqualBits(text + i, Lanes::template Spread<1>(pattern.bytes[i]));
        }
        verdict.work += i;
        if (i > 0 && bits == 0) verdict.fault = i - 1;
        if (i == pattern.length) return {bits, verdict.work, verdict.fault};
        for (; bits != 0; bits &= bits - 1) {
            if (Compare(pattern, text, bits, verdict) && wantsFirst) break;
        }
        return verdict;
    }

    // Looks at the first of the places.
    static bool Compare(const ProbedPattern &pattern, const uint8_t *text, uint64_t bits,
                        Verdict &verdict) noexcept {
        const uint8_t *const place = text + __builtin_ctzll(bits);
        const bool isEqual = IsEqual(place, pattern.bytes, pattern.length);
        if (isEqual) verdict.bits |= bits & -bits;
        verdict.work += 8 + (isEqual ? pattern.length / 32 : 0);
        if (!isEqual && verdict.fault == 0 && pattern.length > 16)
            verdict.fault = FindDeepFault(pattern, place);
        return isEqual;
    }

    // Leaps where that has proved worth while; where it has not, it is left alone for longer and longer.
    class Leaper {
      public:
        Leaper(const ProbedPattern &pattern, const uint8_t *text, int64_t candidates) noexcept
            : pattern_(pattern),
              text_(text),
              candidates_(candidates),
              next_(pattern.leaps == nullptr ? candidates : pattern.leaps->next) {}

        // Places from here on are looked at in blocks.
        int64_t Pass(int64_t at) noexcept {
            if (at < next_) return at;
            WordLeaps &leaps = *pattern_.leaps;
            if (leaps.turns == 0) Mark(at);
            const int64_t reached = Leap(leaps, text_, at, candidates_);
            leaps.pause = reached - at >= kWorthWhile ? 0 : std::min(2 * leaps.pause + 1024, kLongestPause);
            const bool hasFailed = leaps.pause > kFailed || (leaps.turns == 1 && reached - at < leaps.marked);
            if ((hasFailed || leaps.hasStumbled) && leaps.turns < kTurns &&
                candidates_ - reached >= kWorthChanging) {
                Mark(reached);
                leaps.pause = 0;
            }
            // At the least all the places that the word may belong to.
            next_ = leaps.next = reached + std::max(leaps.pause, leaps.Leap());
            return reached;
        }
        int64_t Next() const noexcept { return next_; }
        // The probes hold where no match is: leaps may do better, if they have not been tried.
        void TryAt(int64_t at) noexcept {
            if (pattern_.leaps == nullptr || pattern_.leaps->turns > 0) return;
            if (candidates_ - at >= kWorthTrying) next_ = std::min(next_, at);
        }

      private:
        static constexpr int64_t kWorthTrying = 2048;
        static constexpr int64_t kWorthWhile = 1024, kFailed = 2048, kLongestPause = 65536,
                                 kWorthChanging = 16384;
        static constexpr int kTurns = 3;

        // Of a longer pattern only so much, for that takes time, and the more marks, the fewer leaps.
        [[gnu::noinline]] void Mark(int64_t at) noexcept {
            constexpr uint64_t kFactors[kTurns] = {0x9E3779B97F4A7C15U, 0xD6E8FEB86659FD93U,
                                                   0xA0761D6478BD642FU};
            WordLeaps &leaps = *pattern_.leaps;
            const uint64_t factor = kFactors[leaps.turns++];
            const int64_t places = candidates_ - at;
            // Better ones cost time and wait until they are needed.
            int bits = places < 32768 ? 11 : 12;
            if (leaps.turns > 1) bits = places < 262144 ? 13 : WordLeaps::kMostBits;
            uint8_t *const marks = leaps.marks.data();
            const Vector zero = Lanes::template Spread<1>(0);
            for (int64_t i = 0; i < int64_t{1} << bits; i += kBytes) Lanes::Store(marks + i, zero);
            leaps.marked = std::min({pattern_.length, int64_t{256}, 64 + places / 128});
            leaps.factor = factor;
            leaps.shift = 64 - bits;
            const uint8_t *const bytes = pattern_.bytes;
            const int64_t words = leaps.Leap();
            int64_t i = 0;
            if constexpr (kBytes == 64) {
                uint64_t hashes[8];
                for (; i + 16 <= leaps.marked; i += 8) {
                    Lanes::HashWords(hashes, bytes + i, factor, 64 - bits);
                    for (const uint64_t hash : hashes) marks[hash] = 1;
                }
            }
            for (; i < words; ++i) marks[WordLeaps::Hash(bytes + i, factor, 64 - bits)] = 1;
        }

        // From position to position while the last word of a match's marked part is one that no match has.
        // By itself, for a loop as short as this one is only made if nothing else wants the registers.
        [[gnu::noinline]] static int64_t Leap(WordLeaps &leaps, const uint8_t *text, int64_t at,
                                              int64_t candidates) noexcept {
            const int64_t leap = leaps.Leap(), ahead = leap - 1;
            const uint8_t *place = text + at + ahead;
            const uint8_t *const end = text + candidates + ahead;
            const auto has = [marks = leaps.marks.data(), factor = leaps.factor,
                              shift = leaps.shift](const uint8_t *word) -> int {
                return marks[WordLeaps::Hash(word, factor, shift)];
            };
            leaps.hasStumbled = false;
            for (int64_t stumbles = 0;; ++stumbles) {
                while (end - place > 3 * leap) {
                    const int any =
                        has(place) | has(place + leap) | has(place + 2 * leap) | has(place + 3 * leap);
                    if (any != 0) break;
                    place += 4 * leap;
                }
                while (place < end && has(place) == 0) place += leap;
                // No match has this word by chance and not the one before, unless it starts between them.
                if (place >= end || has(place - WordLeaps::kWord) != 0) break;
                place += leap - WordLeaps::kWord;
                leaps.hasStumbled = stumbles > 16 && place - text - at < 32 * leap * stumbles;
                if (leaps.hasStumbled && leaps.turns < kTurns) break;
            }
            return place - text - ahead;
        }

        const ProbedPattern &pattern_;
        const uint8_t *text_;
        int64_t candidates_;
        int64_t next_;
    };

    // Passes whole blocks from `at` on in which the probes hold nowhere: by two probes as long as they do,
    // since each vector that lies across two lines of the cache costs double. By itself for the registers.
    [[gnu::noinline]] static int64_t PassBlocks(Probes &probes, int64_t at, int64_t candidates) noexcept {
        const Probes held = probes;
        if (at + 64 > candidates || held(at) != 0) return at;
        // The first probe's vectors lie within lines from here on.
        at += 64 - static_cast<int64_t>(reinterpret_cast<uintptr_t>(held.texts[0] + at) & 63);
        int64_t doubts = held.doubts;
        while (doubts < kMostDoubts) {
            const int64_t from = at;
            while (at + 256 <= candidates && !held.template HoldInFour<2>(at)) at += 256;
            if (at + 256 > candidates || held.template HoldInFour<3>(at)) break;
            at += 256;
            doubts = std::max<int64_t>(doubts - (at - from) / 4096, 0) + 1;
        }
        probes.doubts = doubts;
        if (doubts > held.doubts && doubts == kMostDoubts) return at;
        while (at + 256 <= candidates && !held.template HoldInFour<3>(at)) at += 256;
        // The last four lie over those before.
        const bool isLast = at + 128 <= candidates && at + 256 > candidates && candidates >= 256;
        if (isLast && !held.template HoldInFour<3>(candidates - 256)) return candidates;
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

    // Takes the matches of a pattern that is probed whole and cannot overlap itself, as long as there are
    // many. No branch depends on where they are: nobody can foretell that.
    [[gnu::noinline]] static int64_t GatherMatches(const Probes &probes, int64_t at, int64_t candidates,
                                                   SeparateList &matches) noexcept {
        const Probes held = probes;
        constexpr uint64_t kHighest = uint64_t{1} << 63;
        const std::span<int64_t> room = matches.Room();
        size_t count = 0;
        for (int quiet = 0; at + 64 <= candidates && quiet < 16; at += 64) {
            uint64_t bits = held(at);
            const auto found = static_cast<size_t>(__builtin_popcountll(bits));
            const size_t written = std::max(found, SeparateList::kAtOnce);
            if (count + written >= room.size()) break;
            quiet = (quiet + 1) & -static_cast<int>(bits == 0);
            for (size_t i = 0; i < written; ++i, bits &= bits - 1) {
                room[count + i] = at + __builtin_ctzll(bits | kHighest);
            }
            count += found;
        }
        matches.TookApart(count);
        return at;
    }

    template <typename Matches>
    static int64_t Scan(const ProbedPattern &pattern, const uint8_t *text, int64_t from, int64_t candidates,
                        Matches &matches) noexcept {
        Probes probes(pattern, text);
        int64_t work = 0, at = from, hit = from - kNear;
        if constexpr (Matches::kMayOverlap) {
            if (pattern.length <= 3) at = PassMatches(probes, from, candidates, matches);
        }
        if (candidates - from < 3 * kWorthPairs) probes.doubts = kMostDoubts - 1;
        if (candidates - from < kWorthPairs) probes.doubts = kMostDoubts;
        const bool areApart = pattern.length <= 3 && pattern.bytes[0] != pattern.bytes[pattern.length - 1];
        Leaper leaper(pattern, text, candidates);
        int lessons = 3, failures = 0;
        for (; at < candidates; at += 64) {
            at = leaper.Pass(at);
            if (at >= candidates) break;
            // The last block lies over the one before; what that has had is cut off.
            const int64_t base = at <= candidates - 64 ? at : candidates - 64;
            uint64_t bits = probes(base) >> (at - base) << (at - base);
            if (bits == 0) {
                // Matches in a row are near each other.
                if (at - hit < kNear) continue;
                const bool hadPairs = probes.doubts < kMostDoubts;
                at = PassBlocks(probes, at + 64, std::min(candidates, leaper.Next())) - 64;
                if (hadPairs && probes.doubts >= kMostDoubts) {
                    if (pattern.length >= kLongPattern) {
                        leaper.TryAt(at + 64);
                    } else if (candidates - at >= kWorthChoosing && pattern.mayChoose) {
                        return at + 64;
                    }
                }
                continue;
            }
            if (pattern.length > 3) {
                const Verdict verdict = Verify(pattern, text + base, bits, matches.WantsFirst());
                bits = verdict.bits;
                work += verdict.work;
                if (bits == 0 && ++failures >= 2) {
                    if (pattern.length >= kLongPattern || failures * 256 > at - from) leaper.TryAt(base + 64);
                }
                // What many places lack is the best to look at first, and finding it is worth some work.
                if (verdict.fault > 0 && lessons-- > 0) {
                    probes.ReplaceLast(pattern, text, verdict.fault);
                    work -= verdict.work;
                }
            }
            if (bits != 0) hit = at;
            if (bits != 0 && matches.TakeBits(base, bits)) return candidates;
            if constexpr (!Matches::kMayOverlap) {
                if (areApart) at = GatherMatches(probes, at + 64, candidates, matches) - 64;
            }
            // A match is worth the work of finding it in another way.
            work -= kMatchWork * __builtin_popcountll(bits);
            if (work > pattern.patience + at / pattern.allowance) return std::min(base + 64, candidates);
            if (work < 0) work = 0;
        }
        return candidates;
    }

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
            if (beyond <= 0) return EqualBits(tail_.text + at, wanted);
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
        return 1 + CountMatched(pattern.bytes + 1, pattern.length - 1, {pattern.bytes, pattern.length - 1});
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
            const int64_t matched = CountMatched(text_ + at, known_ - at, pattern_);
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
    static int64_t ScanLast(const Pattern &pattern, const TextTail &tail, int64_t from,
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

    static constexpr int64_t kWorthPairs = 1024, kWorthChoosing = 16384;
    static constexpr int64_t kMatchWork = 16, kMostDoubts = 2;
    static constexpr int64_t kLongPattern = 30, kNear = 256;
};

}  // namespace
}  // namespace fenlight
