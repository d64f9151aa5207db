// SPDX-License-Identifier: Zlib
#include "packing/stream_writer.h"

#include <algorithm>

#include "packing/stream_format.h"

namespace fenlight {

uint32_t NearDistance(const uint8_t *source, uint32_t position) noexcept {
    for (uint32_t distance = std::min(position, kNearBytes); distance > 0; --distance) {
        if (source[position - distance] == source[position]) return distance;
    }
    return 0;
}

StreamWriter::StreamWriter(const uint8_t *source, uint8_t *destination) noexcept
    : source_(source), begin_(destination), next_(destination) {
    *next_++ = source[0];
}

void StreamWriter::WriteBit(uint32_t bit) noexcept {
    if (freeTagBits_ == 0) {
        tag_ = next_++;
        *tag_ = 0;
        freeTagBits_ = 8;
    }
    --freeTagBits_;
    *tag_ = static_cast<uint8_t>(*tag_ | bit << freeTagBits_);
}

void StreamWriter::WriteBits(uint32_t bits, uint32_t count) noexcept {
    while (count-- > 0) WriteBit(bits >> count & 1);
}

void StreamWriter::WriteGamma(uint32_t value) noexcept {
    for (int shift = std::bit_width(value) - 2; shift >= 0; --shift) {
        WriteBit(value >> shift & 1);
        WriteBit(shift != 0 ? 1 : 0);
    }
}

void StreamWriter::WriteLiteral(uint32_t position) noexcept {
    const uint8_t byte = source_[position];
    const uint32_t distance = byte == 0 ? 0 : NearDistance(source_, position);
    if (byte == 0 || distance != 0) {
        WriteBits(0b111, 3);
        WriteBits(distance, 4);
    } else {
        WriteBit(0);
        *next_++ = byte;
    }
    afterMatch_ = false;
}

void StreamWriter::WriteLongMatch(uint32_t offset, uint32_t length) noexcept {
    WriteBits(0b10, 2);
    WriteGamma((offset >> 8) + 1 + (afterMatch_ ? kAfterMatch : kAfterLiteral));
    *next_++ = static_cast<uint8_t>(offset);
    WriteGamma(length - LengthCorrection(offset));
}

void StreamWriter::WriteMatch(uint32_t offset, uint32_t length) noexcept {
    if (!afterMatch_ && offset == lastOffset_) {
        WriteBits(0b10, 2);
        WriteGamma(kAfterLiteral);
        WriteGamma(length);
    } else if (offset < kFirstMiddleOffset && length <= 3) {
        WriteBits(0b110, 3);
        *next_++ = static_cast<uint8_t>(offset << 1 | (length - 2));
    } else {
        WriteLongMatch(offset, length);
    }
    lastOffset_ = offset;
    afterMatch_ = true;
}

uint32_t StreamWriter::Finish() noexcept {
    WriteBits(0b110, 3);
    *next_++ = 0;
    return static_cast<uint32_t>(next_ - begin_);
}

}  // namespace fenlight
