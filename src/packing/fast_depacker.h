// SPDX-License-Identifier: Zlib
// The depacker's hot loop, for the files that compile it for one kind of processor each. It reads the tag
// bits of eight bytes at once and copies in pieces of 8 or 16 bytes, beyond the ends of runs and matches, so
// it needs slack on both sides; bounds are checked once an item.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "packing/depack_cursor.h"
#include "packing/stream_format.h"

namespace fenlight {
namespace {

// A gamma value ends at the first 0 among the bits at these places.
constexpr uint64_t kGoOnBits = 0x5555555555555555;
constexpr uint32_t kMaxFastGammaBits = 20;

// The tag bits of the current tag byte and of the bytes at the read position: what comes next as long as no
// plain byte lies between.
struct TagView {
    uint64_t bits;
    uint32_t used = 0;

    bool Bit(uint32_t place) const { return (bits << place >> 63) != 0; }
    void Skip(uint32_t count) {
        bits <<= count;
        used += count;
    }
};

// How a word is filled with the bytes of a short offset, and at which distance whole words repeat them: a
// multiple of the offset. A table, for short offsets come in no order that a branch could follow.
struct Pattern {
    uint64_t mask, factor, distance;
};

constexpr uint32_t kShortOffsets = 16;

constexpr Pattern MakePattern(uint32_t offset) {
    if (offset == 0 || offset >= 8) return {~uint64_t{0}, 1, offset};
    Pattern pattern{~uint64_t{0} >> (64 - 8 * offset), 0, offset * ((7 + offset) / offset)};
    for (uint32_t place = 0; place < 8; place += offset) pattern.factor |= uint64_t{1} << 8 * place;
    return pattern;
}

constexpr auto kPatterns = [] {
    std::array<Pattern, kShortOffsets> patterns{};
    for (uint32_t offset = 0; offset < kShortOffsets; ++offset) patterns[offset] = MakePattern(offset);
    return patterns;
}();

// `GatherEveryOther` puts the bits at the places 0, 2, 4 ... from the top together to 32 bits. All is done on
// a cursor of its own, because bytes written through a pointer might be the members of one that is shared.
template <uint32_t (*GatherEveryOther)(uint64_t)>
class FastDepacker {
  public:
    explicit FastDepacker(const DepackCursor &cursor) : at_(cursor) {}

    // Stops in front of an item: one that it cannot do, the end mark, or any without slack.
    [[gnu::always_inline]] DepackCursor Run() {
        while (HasSlack()) {
            CopyLiterals();
            if (at_.tags.count != 0 && !DoTaggedItem()) break;
        }
        return at_;
    }

  private:
    // Literals and the item behind them read 24 bytes at most, with the last view. They write 11 bytes before
    // a match's length is looked at, which then ends a whole slack before the end and writes 32 beyond it.
    static constexpr ptrdiff_t kSlack = 64;

    bool HasSlack() const { return at_.readEnd - at_.read >= kSlack && at_.writeEnd - at_.write >= kSlack; }

    // Literals are the zeros in front of the next set bit of a tag byte, and their bytes lie together.
    [[gnu::always_inline]] void CopyLiterals() {
        if (at_.tags.count == 0) at_.tags = {uint64_t{*at_.read++} << 56, 8};
        const uint64_t fence = uint64_t{1} << 63 >> at_.tags.count;
        const auto run = static_cast<uint32_t>(std::countl_zero(at_.tags.bits | fence));
        StoreWord(at_.write, LoadWord(at_.read));
        at_.read += run;
        at_.write += run;
        at_.tags.bits <<= run;
        at_.tags.count -= run;
        at_.highBase = run == 0 ? at_.highBase : kAfterLiteral;
    }

    TagView View() const { return {at_.tags.bits | __builtin_bswap64(LoadWord(at_.read)) >> at_.tags.count}; }

    // Takes the bits that a view used out of the stream.
    [[gnu::always_inline]] void Take(const TagView &view) {
        const uint32_t newBytes = (view.used + 7 - at_.tags.count) / 8;
        at_.read += newBytes;
        at_.tags.count += newBytes * 8 - view.used;
        at_.tags.bits = view.bits & ~(~uint64_t{0} >> at_.tags.count);
    }

    // False: more bits than any sensible value has.
    [[gnu::always_inline]] static bool ReadGamma(TagView &view, uint32_t &value) {
        const uint32_t bits = static_cast<uint32_t>(std::countl_zero(~view.bits & kGoOnBits)) / 2 + 1;
        if (bits > kMaxFastGammaBits) return false;
        value = uint32_t{1} << bits | GatherEveryOther(view.bits) >> (32 - bits);
        view.Skip(2 * bits);
        return true;
    }

    // The item whose first tag bit is set. False: nothing of it is done.
    [[gnu::always_inline]] bool DoTaggedItem() {
        const TagBits tagsBefore = at_.tags;
        const uint8_t *const readBefore = at_.read;
        const TagView view = View();
        const bool done = !view.Bit(1)  ? DoLongMatch(view)
                          : view.Bit(2) ? DoNearByte(view)
                                        : DoShortMatch(view);
        if (!done) {
            at_.tags = tagsBefore;
            at_.read = readBefore;
        }
        return done;
    }

    [[gnu::always_inline]] bool DoNearByte(TagView view) {
        const uint64_t distance = view.bits << 3 >> 60;
        if (distance > at_.Written()) return false;
        *at_.write = distance == 0 ? 0 : *(at_.write - distance);
        ++at_.write;
        view.Skip(7);
        Take(view);
        at_.highBase = kAfterLiteral;
        return true;
    }

    [[gnu::always_inline]] bool DoShortMatch(TagView view) {
        view.Skip(3);
        Take(view);
        const uint32_t byte = *at_.read++;
        const uint32_t offset = byte >> 1;
        if (offset == 0 || offset > at_.Written()) return false;
        const uint8_t *const from = at_.write - offset;
        at_.write[0] = from[0];
        at_.write[1] = from[1];
        at_.write[2] = from[2];
        at_.write += 2 + (byte & 1);
        at_.lastOffset = offset;
        at_.highBase = kAfterMatch;
        return true;
    }

    [[gnu::always_inline]] bool DoLongMatch(TagView view) {
        view.Skip(2);
        uint32_t high = 0;
        if (!ReadGamma(view, high)) return false;
        Take(view);
        high -= at_.highBase;
        const uint64_t newOffset = (uint64_t{high} << 8) - 256 + *at_.read;
        at_.read += high != 0 ? 1 : 0;
        const uint64_t offset = high != 0 ? newOffset : at_.lastOffset;
        const uint32_t correction = high != 0 ? LengthCorrection(offset) : 0;
        view = View();
        uint32_t length = 0;
        if (!ReadGamma(view, length)) return false;
        Take(view);
        length += correction;
        if (offset - 1 >= at_.Written() || length > at_.writeEnd - at_.write - kSlack) return false;
        CopyMatch(offset, length);
        at_.lastOffset = offset;
        at_.highBase = kAfterMatch;
        return true;
    }

    [[gnu::always_inline]] void CopyMatch(uint64_t offset, uint32_t length) {
        uint8_t *to = at_.write;
        at_.write += length;
        if (offset >= kShortOffsets) {
            std::memcpy(to, to - offset, 16);
            std::memcpy(to + 16, to + 16 - offset, 16);
            for (to += 32; to < at_.write; to += 16) std::memcpy(to, to - offset, 16);
            return;
        }
        const Pattern &pattern = kPatterns[offset];
        StoreWord(to, (LoadWord(to - offset) & pattern.mask) * pattern.factor);
        for (to += 8; to < at_.write; to += 8) StoreWord(to, LoadWord(to - pattern.distance));
    }

    DepackCursor at_;
};

}  // namespace
}  // namespace fenlight
