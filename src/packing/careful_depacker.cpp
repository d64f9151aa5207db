// SPDX-License-Identifier: Zlib
#include "packing/careful_depacker.h"

#include <algorithm>

#include "packing/stream_format.h"

namespace fenlight {
namespace {

// More than any block can need; the checks behind refuse it.
constexpr uint64_t kGreatestGamma = uint64_t{1} << 40;

class CarefulDepacker {
  public:
    explicit CarefulDepacker(DepackCursor &cursor) : at_(cursor) {}

    DepackState DoItem() {
        if (ReadBit() == 0)
            Write(ReadByte());
        else if (ReadBit() == 0)
            DoLongMatch();
        else if (ReadBit() == 0)
            DoShortMatch();
        else
            DoNearByte();
        return state_;
    }

  private:
    uint32_t ReadByte() {
        if (at_.read != at_.readEnd) return *at_.read++;
        state_ = DepackState::Broken;
        return 0;
    }

    uint32_t ReadBit() {
        if (at_.tags.count == 0) at_.tags = {uint64_t{ReadByte()} << 56, 8};
        const auto bit = static_cast<uint32_t>(at_.tags.bits >> 63);
        at_.tags.bits <<= 1;
        --at_.tags.count;
        return bit;
    }

    // Ends with the stream, whose missing bits read as 0.
    uint64_t ReadGamma() {
        uint64_t value = 1;
        do value = std::min(value * 2 + ReadBit(), kGreatestGamma);
        while (ReadBit() != 0);
        return value;
    }

    void Write(uint32_t byte) {
        if (at_.write == at_.writeEnd) state_ = DepackState::Broken;
        if (state_ == DepackState::Broken) return;
        *at_.write++ = static_cast<uint8_t>(byte);
        at_.highBase = kAfterLiteral;
    }

    void DoNearByte() {
        uint32_t distance = 0;
        for (int i = 0; i < 4; ++i) distance = distance * 2 + ReadBit();
        if (distance > at_.Written())
            state_ = DepackState::Broken;
        else
            Write(distance == 0 ? 0 : *(at_.write - distance));
    }

    void DoShortMatch() {
        const uint32_t byte = ReadByte();
        if (byte >> 1 != 0)
            Copy(byte >> 1, 2 + (byte & 1));
        else if (state_ == DepackState::Going)
            state_ = DepackState::Ended;
    }

    void DoLongMatch() {
        const uint64_t high = ReadGamma() - at_.highBase;
        if (high == 0) return Copy(at_.lastOffset, ReadGamma());
        const uint64_t offset = (high - 1) << 8 | ReadByte();
        Copy(offset, ReadGamma() + LengthCorrection(offset));
    }

    void Copy(uint64_t offset, uint64_t length) {
        const auto room = static_cast<uint64_t>(at_.writeEnd - at_.write);
        if (offset == 0 || offset > at_.Written() || length > room) state_ = DepackState::Broken;
        if (state_ == DepackState::Broken) return;
        for (; length > 0; --length, ++at_.write) *at_.write = *(at_.write - offset);
        at_.lastOffset = offset;
        at_.highBase = kAfterMatch;
    }

    DepackCursor &at_;
    DepackState state_ = DepackState::Going;
};

}  // namespace

DepackState DepackItemCarefully(DepackCursor &cursor) noexcept { return CarefulDepacker(cursor).DoItem(); }

}  // namespace fenlight
