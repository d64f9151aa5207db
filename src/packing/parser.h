// SPDX-License-Identifier: Zlib
// Chooses the items of the packed stream. For each position of a window it keeps the few cheapest ways to get
// there, told apart by their last offset and by the kind of their last item, for these decide what the next
// items cost. The window moves on with the cheapest way; a long match is taken as soon as it is seen.
//
// All working state lies in the work area; nothing is kept between two blocks.
#pragma once

#include <array>
#include <cstdint>

#include "packing/match_search.h"
#include "packing/stream_writer.h"

namespace fenlight {

inline constexpr uint32_t kWindow = 512;
inline constexpr uint32_t kWaysKept = 3;
// A match of this length is taken at once. Also how far an item reaches within the window.
inline constexpr uint32_t kLongMatch = 128;

// A way to get to a position: by one item from a way to an earlier one.
struct Way {
    uint32_t bits;   // from the window's start; kNoWay: there is none
    uint32_t route;  // see Route in parser.cpp
};

using WaysToPosition = std::array<Way, kWaysKept>;  // cheapest first

struct WorkArea {
    std::array<uint32_t, kPairs> pairs;
    std::array<uint32_t, kRingEntries> ring;
    std::array<WaysToPosition, kWindow> ways;
    std::array<uint32_t, kWindow> chosenRoutes;  // from the last item back to the first
    std::array<Match, 32> found;
};

inline constexpr uint32_t kWorkAreaBytes = 655360;
static_assert(sizeof(WorkArea) <= kWorkAreaBytes);

class Parser {
  public:
    // The area must be all zeros.
    Parser(const uint8_t *source, uint32_t length, WorkArea &area, StreamWriter &writer) noexcept;

    // Writes the items of all bytes but the first.
    void Run() noexcept;

  private:
    struct LongMatch;
    struct Sources;

    WaysToPosition &WaysTo(uint32_t position) noexcept { return area_.ways[position % kWindow]; }
    void StartWindow(uint32_t position, uint32_t route) noexcept;
    void Offer(uint32_t position, uint32_t bits, uint32_t route) noexcept;
    void AddLiterals() noexcept;
    void AddRepeats(LongMatch &longest) noexcept;
    void AddMatches(uint32_t candidates, LongMatch &longest) noexcept;
    void AddMatch(const Sources &sources, Match match, uint32_t shortest) noexcept;
    uint32_t CandidatesWorthTrying() noexcept;
    void TakeLongMatch(const LongMatch &longest) noexcept;
    void WriteWay(uint32_t position, uint32_t rank, uint32_t lastPosition) noexcept;
    void MoveWindow() noexcept;
    void DropOtherWays(uint32_t position, uint32_t rank) noexcept;

    const uint8_t *source_;
    uint32_t length_;
    WorkArea &area_;
    StreamWriter &writer_;
    MatchSearch search_;
    uint32_t windowStart_ = 1;
    uint32_t position_ = 1;
    uint32_t patience_ = kMaxCandidates;  // candidates that may be looked at
};

}  // namespace fenlight
