// SPDX-License-Identifier: Zlib
// Finds earlier places of the bytes at a position. A table tells for each pair of bytes where it was last
// seen, a ring links each position to the one before it with the same pair. Both belong to the packer's work
// area and start as zeros: positions count from 1 in them, and 0 is no position.
#pragma once

#include <cstdint>
#include <span>

namespace fenlight {

inline constexpr uint32_t kPairs = 256 * 256;
inline constexpr uint32_t kRingEntries = 92160;
inline constexpr uint32_t kMaxOffset = 91904;
inline constexpr uint32_t kMaxMatch = 91904;
inline constexpr uint32_t kMaxCandidates = 2048;
// Positions may be entered so far ahead of the one that is searched for: their ring entries replace those
// that lie beyond the greatest offset.
inline constexpr uint32_t kMaxAhead = kRingEntries - kMaxOffset - 1;

struct Match {
    uint32_t offset;
    uint32_t length;
};

class MatchSearch {
  public:
    MatchSearch(const uint8_t *source, uint32_t length, uint32_t *pairs, uint32_t *ring) noexcept
        : source_(source), length_(length), pairs_(pairs), ring_(ring) {}

    // Enters all positions below `end` that have a pair.
    void EnterUpTo(uint32_t end) noexcept;

    struct Effort {
        uint32_t enough;      // the search ends with a match of that length and looks for none longer
        uint32_t candidates;  // how many may be looked at; the search takes off those that it did
    };
    // Matches for `position`, each longer than the one before it and with the nearest offset for its length;
    // gives their number. Positions up to `position` + `enough` must have been entered, and none beyond
    // `position` + kMaxAhead.
    uint32_t Find(uint32_t position, Effort &effort, std::span<Match> found) const noexcept;

    // How many bytes at `position` repeat those `offset` before, `limit` at most. Stays within the source.
    uint32_t MatchLength(uint32_t position, uint32_t offset, uint32_t limit) const noexcept;

  private:
    // A walk down one chain. All bytes of a longer match lie on chains of their own, so the walk may follow
    // the one of any pair, `lead` bytes into the match; the one with the widest steps is the best.
    struct Walk {
        uint32_t place;  // of the pair, counted from 1; the candidate itself lies `lead` before
        uint32_t lead;

        uint32_t Start() const noexcept { return place - lead; }
        bool Reaches(uint32_t lowest) const noexcept { return place >= lowest + lead; }
    };

    // The place before `place` with the same pair; 0: none.
    uint32_t PlaceBefore(uint32_t place) const noexcept {
        const uint32_t slot = place - 1 - ringStart_;
        return ring_[slot < kRingEntries ? slot : slot + kRingEntries];
    }
    Walk TakeWidestStep(uint32_t start, uint32_t position, uint32_t length) const noexcept;
    Walk RaceChains(Walk walk, uint32_t position, uint32_t length) const noexcept;

    const uint8_t *source_;
    uint32_t length_;
    uint32_t *pairs_;
    uint32_t *ring_;
    uint32_t entered_ = 0;
    uint32_t ringStart_ = 0;  // the last position that went into the ring's first entry
};

}  // namespace fenlight
