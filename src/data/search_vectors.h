// SPDX-License-Identifier: Zlib
// The search for a pattern of bytes in vectors, for any width of a vector; memory_vectors.h tells what Lanes
// has. In an unnamed namespace, because each file that includes this is compiled for other instructions.
//
// Scan walks over a text in blocks of 64 positions, of which the three probes leave few to compare, and leaps
// where the pattern is long.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "data/memory_plain.h"
#include "data/search_leaps.h"
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

        // Few positions are not worth finding out how often pairs hold.
        void DoubtIn(int64_t positions) noexcept {
            if (positions < 3 * kWorthPairs) doubts = positions < kWorthPairs ? kMostDoubts : kMostDoubts - 1;
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
        if (!isEqual && verdict.fault == 0 && pattern.length > 16) {
            verdict.fault = FindDeepFault(pattern, place);
            verdict.work += verdict.fault / 64;
        }
        return isEqual;
    }

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
        probes.DoubtIn(candidates - from);
        const bool areApart = pattern.length <= 3 && pattern.bytes[0] != pattern.bytes[pattern.length - 1];
        WordLeaper<Lanes> leaper(pattern, text, candidates);
        int lessons = 3, failures = 0;
        for (; at < candidates; at += 64) {
            at = leaper.Pass(at);
            if (at >= candidates) break;
            // The last block lies over the one before; what that has had is cut off.
            const int64_t base = at <= candidates - 64 ? at : candidates - 64;
            uint64_t bits = probes(base) >> (at - base) << (at - base);
            if (bits == 0) {
                // Matches are near each other.
                if (at - hit < kNear) continue;
                const bool hadPairs = probes.doubts < kMostDoubts;
                at = PassBlocks(probes, at + 64, std::min(candidates, leaper.Next())) - 64;
                if (!hadPairs || probes.doubts < kMostDoubts) continue;
                if (pattern.length < kLongPattern && pattern.mayChoose && candidates - at >= kWorthChoosing) {
                    return at + 64;
                }
                if (pattern.length >= kLongPattern) leaper.TryAt(at + 64);
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

    // In positions that are left: for pairs, and for better probes than the first.
    static constexpr int64_t kWorthPairs = 1024, kWorthChoosing = 16384;
    // In vectors looked at, and fours of blocks.
    static constexpr int64_t kMatchWork = 16, kMostDoubts = 2;
    // From this length on leaps are longer than blocks are quick.
    static constexpr int64_t kLongPattern = 30;
    static constexpr int64_t kNear = 256;
};

}  // namespace
}  // namespace fenlight
