// SPDX-License-Identifier: Zlib
#include "packing/match_search.h"

#include <algorithm>
#include <array>
#include <bit>

#include "packing/stream_format.h"

namespace fenlight {
namespace {

// Weighing more chains after a find costs more than it saves.
constexpr uint32_t kWeighedChains = 16;
constexpr uint32_t kRunners = 8;
// After so many candidates in vain another chain is looked for; a race takes no more rounds than that.
constexpr uint32_t kPatience = 32;
// From this length on, four bytes tell at once whether a candidate can be longer.
constexpr uint32_t kTailBytes = 3;

uint32_t PairAt(const uint8_t *bytes) noexcept { return static_cast<uint32_t>(bytes[0] << 8 | bytes[1]); }

// The byte at `end` and the three before it.
uint32_t LoadTail(const uint8_t *end) noexcept {
    uint32_t tail;
    std::memcpy(&tail, end - kTailBytes, sizeof tail);
    return tail;
}

uint32_t CountSameBytes(const uint8_t *a, const uint8_t *b, uint32_t limit) noexcept {
    uint32_t count = 0;
    for (; count + 8 <= limit; count += 8) {
        const uint64_t difference = LoadWord(a + count) ^ LoadWord(b + count);
        if (difference != 0) return count + static_cast<uint32_t>(std::countr_zero(difference)) / 8;
    }
    while (count < limit && a[count] == b[count]) ++count;
    return count;
}

bool MayBeLonger(const uint8_t *there, const uint8_t *here, uint32_t best) noexcept {
    if (there[best] != here[best]) return false;
    return best < kTailBytes || LoadTail(there + best) == LoadTail(here + best);
}

}  // namespace

void MatchSearch::EnterUpTo(uint32_t end) noexcept {
    end = std::min(end, length_ - 1);
    for (; entered_ < end; ++entered_) {
        if (entered_ - ringStart_ == kRingEntries) ringStart_ = entered_;
        uint32_t &last = pairs_[PairAt(source_ + entered_)];
        ring_[entered_ - ringStart_] = last;
        last = entered_ + 1;
    }
}

uint32_t MatchSearch::MatchLength(uint32_t position, uint32_t offset, uint32_t limit) const noexcept {
    const uint8_t *const here = source_ + position;
    return CountSameBytes(here, here - offset, std::min(limit, length_ - position));
}

// The candidate at `start` matches `length` bytes. Longer matches hold all of its pairs and the one at
// `position` that reaches beyond them, so the next one lies no nearer than any of these chains tells.
MatchSearch::Walk MatchSearch::TakeWidestStep(uint32_t start, uint32_t position,
                                              uint32_t length) const noexcept {
    Walk widest{PlaceBefore(start), 0};
    for (uint32_t lead = 1; lead < std::min(length - 1, kWeighedChains); ++lead) {
        const Walk other{PlaceBefore(start + lead), lead};
        if (!other.Reaches(1)) return other;
        if (other.Start() < widest.Start()) widest = other;
    }
    const Walk beyond{PlaceBefore(position + length), length - 1};
    return !beyond.Reaches(1) || beyond.Start() < widest.Start() ? beyond : widest;
}

// Runs down the chains of a longer match from the position itself, side by side, and takes the one that gets
// to the candidate first: it has the fewest places. None gets there soon: stays on the chain.
MatchSearch::Walk MatchSearch::RaceChains(Walk walk, uint32_t position, uint32_t length) const noexcept {
    const uint32_t runners = std::min(length, kRunners);
    const uint32_t firstLead = length - runners;
    std::array<Walk, kRunners> races;
    for (uint32_t i = 0; i < runners; ++i) races[i] = {position + 1 + firstLead + i, firstLead + i};
    for (uint32_t round = 0; round < kPatience; ++round) {
        for (uint32_t i = 0; i < runners; ++i) {
            races[i].place = PlaceBefore(races[i].place);
            if (!races[i].Reaches(walk.Start() + 1)) return races[i];
        }
    }
    return walk;
}

uint32_t MatchSearch::Find(uint32_t position, Effort &effort, std::span<Match> found) const noexcept {
    const uint32_t limit = std::min(effort.enough, length_ - position);
    if (limit < 2) return 0;
    const uint8_t *const here = source_ + position;
    const uint32_t lowest = position < kMaxOffset ? 1 : position + 1 - kMaxOffset;
    uint32_t count = 0;
    uint32_t best = 1;
    uint32_t misses = 0;
    for (Walk walk{PlaceBefore(position + 1), 0}; walk.Reaches(lowest) && effort.candidates > 0;) {
        --effort.candidates;
        const uint32_t start = walk.Start();
        const uint8_t *const there = source_ + start - 1;
        const uint32_t length = MayBeLonger(there, here, best) ? CountSameBytes(here, there, limit) : 0;
        if (length > best) {
            best = length;
            misses = 0;
            if (count == found.size()) --count;
            found[count++] = {position + 1 - start, length};
            if (length == limit) break;
            walk = TakeWidestStep(start, position, length);
        } else {
            walk.place = PlaceBefore(walk.place);
            if (++misses % kPatience == 0 && walk.Reaches(lowest)) walk = RaceChains(walk, position, best);
        }
    }
    return count;
}

}  // namespace fenlight
