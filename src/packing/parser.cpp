// SPDX-License-Identifier: Zlib
#include "packing/parser.h"

#include <algorithm>

#include "packing/stream_format.h"

namespace fenlight {
namespace {

constexpr uint32_t kNoWay = UINT32_MAX;
// Once the window is full, this part of it is written.
constexpr uint32_t kFullWindow = kWindow - kLongMatch - 1;
constexpr uint32_t kWrittenPart = kFullWindow / 2;
static_assert(kWrittenPart > kLongMatch && kLongMatch <= kMaxAhead);

// A search looks at all candidates that patience is left for, at a few only, or is left out: by the bits that
// the next three positions cost more than this one. Patience grows by a little with each byte and by more
// where long matches are found, for in blocks without them, such as recorded sound, searches cost much and
// bring little.
constexpr uint32_t kPatiencePerByte = 16;
constexpr uint32_t kPatiencePerMatchedByte = 24;
constexpr uint32_t kFirstRewardedByte = 4;
constexpr uint32_t kFewCandidates = 32;
constexpr std::array<uint32_t, 3> kPointless{1, 1, 2};
constexpr std::array<uint32_t, 3> kPoor{4, 6, 6};

// Last offset in bits 0 to 16, length of the item in 17 to 24, rank of the way it continues in 25 to 27, and
// in bit 31 whether it is a match.
constexpr uint32_t kOffsetMask = 0x1FFFF;
constexpr uint32_t kMatchMark = 0x80000000;
constexpr uint32_t kKindMask = kOffsetMask | kMatchMark;  // what later items depend on
static_assert(kMaxOffset <= kOffsetMask && kLongMatch <= 255 && kWaysKept <= 8);

constexpr uint32_t Route(uint32_t lastOffset, uint32_t length, uint32_t rank, uint32_t mark) noexcept {
    return lastOffset | length << 17 | rank << 25 | mark;
}
constexpr uint32_t LastOffset(uint32_t route) noexcept { return route & kOffsetMask; }
constexpr uint32_t ItemLength(uint32_t route) noexcept { return route >> 17 & 0xFF; }
constexpr uint32_t Rank(uint32_t route) noexcept { return route >> 25 & 7; }
constexpr bool IsMatch(uint32_t route) noexcept { return (route & kMatchMark) != 0; }

bool HasZeroByte(uint64_t word) noexcept {
    return ((word - 0x0101010101010101) & ~word & 0x8080808080808080) != 0;
}

uint32_t BitsOfLiteral(const uint8_t *source, uint32_t position) noexcept {
    const uint8_t byte = source[position];
    if (byte == 0) return kNearByteBits;
    if (position < kNearBytes) return NearDistance(source, position) != 0 ? kNearByteBits : kLiteralBits;
    const uint64_t same = uint64_t{byte} * 0x0101010101010101;
    const bool isNear = HasZeroByte(LoadWord(source + position - 15) ^ same) ||
                        HasZeroByte(LoadWord(source + position - 8) ^ same);
    return isNear ? kNearByteBits : kLiteralBits;
}

}  // namespace

// A match of kLongMatch bytes or more, by the rank of the way that it continues most cheaply. The bits of its
// length are left out.
struct Parser::LongMatch {
    uint32_t bits = kNoWay;
    uint32_t offset = 0;
    uint32_t rank = 0;

    void Offer(uint32_t otherBits, uint32_t otherOffset, uint32_t otherRank) noexcept {
        if (otherBits < bits) *this = {otherBits, otherOffset, otherRank};
    }
};

// The cheapest ways to a position after a literal and after a match.
struct Parser::Sources {
    uint32_t literalBits = kNoWay / 2, literalRank = 0;
    uint32_t matchBits = kNoWay / 2, matchRank = 0;

    explicit Sources(const WaysToPosition &ways) noexcept {
        for (uint32_t rank = kWaysKept; rank-- > 0;) {
            if (ways[rank].bits == kNoWay) continue;
            uint32_t &bits = IsMatch(ways[rank].route) ? matchBits : literalBits;
            uint32_t &bestRank = IsMatch(ways[rank].route) ? matchRank : literalRank;
            bits = ways[rank].bits;
            bestRank = rank;
        }
    }
    // The cheaper one for a match with that offset, with the bits of its high part included.
    Way ForOffset(uint32_t offset) const noexcept {
        const uint32_t high = (offset >> 8) + 1;
        const uint32_t afterLiteral = literalBits + GammaBits(high + kAfterLiteral);
        const uint32_t afterMatch = matchBits + GammaBits(high + kAfterMatch);
        if (afterLiteral < afterMatch) return {afterLiteral, literalRank};
        return {afterMatch, matchRank};
    }
};

Parser::Parser(const uint8_t *source, uint32_t length, WorkArea &area, StreamWriter &writer) noexcept
    : source_(source),
      length_(length),
      area_(area),
      writer_(writer),
      search_(source, length, area.pairs.data(), area.ring.data()) {
    StartWindow(1, Route(0, 0, 0, 0));
}

void Parser::StartWindow(uint32_t position, uint32_t route) noexcept {
    for (WaysToPosition &ways : area_.ways) ways.fill({kNoWay, 0});
    WaysTo(position)[0] = {0, route & kKindMask};
    windowStart_ = position_ = position;
}

void Parser::Offer(uint32_t position, uint32_t bits, uint32_t route) noexcept {
    WaysToPosition &ways = WaysTo(position);
    if (bits >= ways.back().bits) return;
    uint32_t rank = 0;
    while (rank < kWaysKept - 1 && ((ways[rank].route ^ route) & kKindMask) != 0) ++rank;
    if (ways[rank].bits <= bits) return;
    for (; rank > 0 && ways[rank - 1].bits > bits; --rank) ways[rank] = ways[rank - 1];
    ways[rank] = {bits, route};
}

void Parser::AddLiterals() noexcept {
    const uint32_t bits = BitsOfLiteral(source_, position_);
    const WaysToPosition &ways = WaysTo(position_);
    for (uint32_t rank = 0; rank < kWaysKept && ways[rank].bits != kNoWay; ++rank)
        Offer(position_ + 1, ways[rank].bits + bits, Route(LastOffset(ways[rank].route), 1, rank, 0));
}

void Parser::AddRepeats(LongMatch &longest) noexcept {
    const WaysToPosition &ways = WaysTo(position_);
    for (uint32_t rank = 0; rank < kWaysKept && ways[rank].bits != kNoWay; ++rank) {
        const uint32_t offset = LastOffset(ways[rank].route);
        if (IsMatch(ways[rank].route) || offset == 0) continue;
        const uint32_t bits = ways[rank].bits + kLastOffsetBits;
        const uint32_t reach = search_.MatchLength(position_, offset, kLongMatch);
        if (reach == kLongMatch) longest.Offer(bits, offset, rank);
        for (uint32_t length = std::min(reach, kLongMatch - 1); length >= 2; --length)
            Offer(position_ + length, bits + GammaBits(length), Route(offset, length, rank, kMatchMark));
    }
}

void Parser::AddMatch(const Sources &sources, Match match, uint32_t shortest) noexcept {
    const Way source = sources.ForOffset(match.offset);
    const uint32_t correction = LengthCorrection(match.offset);
    for (uint32_t length = std::max(shortest, correction + 2); length <= match.length; ++length)
        Offer(position_ + length, source.bits + kLongMatchBits + GammaBits(length - correction),
              Route(match.offset, length, source.route, kMatchMark));
    if (match.offset >= kFirstMiddleOffset) return;
    const Way &cheapest = WaysTo(position_)[0];
    for (uint32_t length = shortest; length <= std::min(match.length, 3u); ++length)
        Offer(position_ + length, cheapest.bits + kShortMatchBits,
              Route(match.offset, length, 0, kMatchMark));
}

void Parser::AddMatches(uint32_t candidates, LongMatch &longest) noexcept {
    MatchSearch::Effort effort{kLongMatch, candidates};
    const uint32_t count = search_.Find(position_, effort, area_.found);
    patience_ -= candidates - effort.candidates;
    const uint32_t longestFound = count == 0 ? 0 : area_.found[count - 1].length;
    if (longestFound > kFirstRewardedByte)
        patience_ += (longestFound - kFirstRewardedByte) * kPatiencePerMatchedByte;
    const Sources sources(WaysTo(position_));
    uint32_t shortest = 2;
    for (uint32_t i = 0; i < count; ++i) {
        Match match = area_.found[i];
        if (match.length == kLongMatch) {
            const Way source = sources.ForOffset(match.offset);
            longest.Offer(source.bits + kLongMatchBits, match.offset, source.route);
            --match.length;
        }
        AddMatch(sources, match, shortest);
        shortest = match.length + 1;
    }
}

// How many candidates are worth looking at. Where the next positions are hardly dearer than this one, a match
// from here is not much better than its rest from there. What is not used adds up for positions that are
// worth more.
uint32_t Parser::CandidatesWorthTrying() noexcept {
    patience_ = std::min(patience_ + kPatiencePerByte, kMaxCandidates);
    const auto isReachedFor = [this](const std::array<uint32_t, 3> &moreBits) {
        const uint32_t bits = WaysTo(position_)[0].bits;
        return WaysTo(position_ + 1)[0].bits <= bits + moreBits[0] ||
               WaysTo(position_ + 2)[0].bits <= bits + moreBits[1] ||
               WaysTo(position_ + 3)[0].bits <= bits + moreBits[2];
    };
    if (isReachedFor(kPointless)) return 0;
    return isReachedFor(kPoor) ? std::min(patience_, kFewCandidates) : patience_;
}

void Parser::Run() noexcept {
    while (position_ < length_) {
        if (position_ - windowStart_ == kFullWindow) MoveWindow();
        search_.EnterUpTo(position_ + kLongMatch);
        WaysTo(position_ + kLongMatch).fill({kNoWay, 0});
        LongMatch longest;
        const uint32_t candidates = CandidatesWorthTrying();
        AddLiterals();
        AddRepeats(longest);
        if (candidates > 0) AddMatches(candidates, longest);
        if (longest.bits != kNoWay)
            TakeLongMatch(longest);
        else
            ++position_;
    }
    WriteWay(length_, 0, length_);
}

void Parser::TakeLongMatch(const LongMatch &longest) noexcept {
    WriteWay(position_, longest.rank, position_);
    const uint32_t length = search_.MatchLength(position_, longest.offset, kMaxMatch);
    writer_.WriteMatch(longest.offset, length);
    search_.EnterUpTo(position_ + length);
    StartWindow(position_ + length, Route(longest.offset, 0, 0, kMatchMark));
}

// Writes the part of a way that ends at `lastPosition` at the latest.
void Parser::WriteWay(uint32_t position, uint32_t rank, uint32_t lastPosition) noexcept {
    uint32_t count = 0;
    while (position > windowStart_) {
        const uint32_t route = WaysTo(position)[rank].route;
        if (position <= lastPosition) area_.chosenRoutes[count++] = route;
        position -= ItemLength(route);
        rank = Rank(route);
    }
    while (count-- > 0) {
        const uint32_t route = area_.chosenRoutes[count];
        if (IsMatch(route))
            writer_.WriteMatch(LastOffset(route), ItemLength(route));
        else
            writer_.WriteLiteral(position);
        position += ItemLength(route);
    }
}

void Parser::MoveWindow() noexcept {
    const uint32_t last = windowStart_ + kWrittenPart;
    uint32_t position = position_;
    uint32_t rank = 0;
    while (position > last) {
        const uint32_t route = WaysTo(position)[rank].route;
        position -= ItemLength(route);
        rank = Rank(route);
    }
    WriteWay(position, rank, position);
    DropOtherWays(position, rank);
    windowStart_ = position;
}

// Makes the way of that rank the window's new start. Only what continues it stays.
void Parser::DropOtherWays(uint32_t position, uint32_t rank) noexcept {
    const uint32_t written = WaysTo(position)[rank].bits;
    for (uint32_t other = 0; other < kWaysKept; ++other) {
        if (other != rank) WaysTo(position)[other].bits = kNoWay;
    }
    for (uint32_t later = position + 1; later < position_ + kLongMatch; ++later) {
        WaysToPosition &ways = WaysTo(later);
        for (Way &way : ways) {
            if (way.bits == kNoWay) continue;
            const uint32_t from = later - ItemLength(way.route);
            const bool continues = from >= position && WaysTo(from)[Rank(way.route)].bits != kNoWay;
            way.bits = continues ? way.bits - written : kNoWay;
        }
        // The ranks of passed positions are referred to; those of others are not yet.
        if (later < position_) continue;
        const auto kept =
            std::remove_if(ways.begin(), ways.end(), [](Way way) { return way.bits == kNoWay; });
        std::fill(kept, ways.end(), Way{kNoWay, 0});
    }
    WaysTo(position)[rank].bits = 0;
}

}  // namespace fenlight
