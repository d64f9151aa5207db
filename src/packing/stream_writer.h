// SPDX-License-Identifier: Zlib
// Writes the items of one packed stream in the order in which a reader meets them. Checks no room: the packer
// picks items that take no more than a literal for each byte, and that fits by Pack's contract.
#pragma once

#include <cstdint>

namespace fenlight {

class StreamWriter {
  public:
    // The source's first byte goes out at once.
    StreamWriter(const uint8_t *source, uint8_t *destination) noexcept;

    // As a near byte where that is possible, else as a plain literal. `position` is its place in the source.
    void WriteLiteral(uint32_t position) noexcept;
    // In the shortest form for that offset and length. The pair must have a form: see LengthCorrection.
    void WriteMatch(uint32_t offset, uint32_t length) noexcept;
    // Writes the end mark; gives the stream's length in bytes.
    uint32_t Finish() noexcept;

  private:
    void WriteBit(uint32_t bit) noexcept;
    void WriteBits(uint32_t bits, uint32_t count) noexcept;  // highest first
    void WriteGamma(uint32_t value) noexcept;
    void WriteLongMatch(uint32_t offset, uint32_t length) noexcept;

    const uint8_t *source_;
    uint8_t *begin_;
    uint8_t *next_;
    uint8_t *tag_ = nullptr;  // the tag byte that is being filled
    uint32_t freeTagBits_ = 0;
    uint32_t lastOffset_ = 0;  // 0: none yet
    bool afterMatch_ = false;
};

// How far back the byte at `position` stands among the last 15, at the greatest such distance; 0: not there.
uint32_t NearDistance(const uint8_t *source, uint32_t position) noexcept;

}  // namespace fenlight
