// SPDX-License-Identifier: Zlib
// The leaps of the search in vectors: from word to word of eight bytes, as published by Wu and Manber, "A
// fast algorithm for multi-pattern searching" (1994), with longer words. In an unnamed namespace, because
// each file that includes this is compiled for other instructions.
#pragma once

#include <algorithm>
#include <cstdint>

#include "data/search_matches.h"

namespace fenlight {
namespace {

// Leaps where that has proved worth while; where it has not, it is left alone for longer and longer.
template <typename Lanes>
class WordLeaper {
  public:
    WordLeaper(const ProbedPattern &pattern, const uint8_t *text, int64_t candidates) noexcept
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
    using Vector = typename Lanes::Vector;
    // In positions: what has to be left, what a leap has to pass, and for how long they are left alone.
    static constexpr int64_t kWorthTrying = 2048, kWorthChanging = 16384, kWorthWhile = 1024, kFailed = 2048,
                             kLongestPause = 65536;
    static constexpr int kTurns = 3;

    // Of a longer pattern only so much, for that takes time, and the more marks, the fewer leaps.
    [[gnu::noinline]] void Mark(int64_t at) noexcept {
        constexpr uint64_t kFactors[kTurns] = {0x9E3779B97F4A7C15U, 0xD6E8FEB86659FD93U, 0xA0761D6478BD642FU};
        WordLeaps &leaps = *pattern_.leaps;
        const uint64_t factor = kFactors[leaps.turns++];
        const int64_t places = candidates_ - at;
        // Better ones cost time and wait until they are needed.
        int bits = places < 32768 ? 11 : 12;
        if (leaps.turns > 1) bits = places < 262144 ? 13 : WordLeaps::kMostBits;
        uint8_t *const marks = leaps.marks.data();
        const Vector zero = Lanes::template Spread<1>(0);
        for (int64_t i = 0; i < int64_t{1} << bits; i += Lanes::kBytes) Lanes::Store(marks + i, zero);
        leaps.marked = std::min({pattern_.length, int64_t{256}, 64 + places / 128});
        leaps.factor = factor;
        leaps.shift = 64 - bits;
        const uint8_t *const bytes = pattern_.bytes;
        const int64_t words = leaps.Leap();
        int64_t i = 0;
        if constexpr (Lanes::kBytes == 64) {
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

}  // namespace
}  // namespace fenlight
