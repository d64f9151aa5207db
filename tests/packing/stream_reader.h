// SPDX-License-Identifier: Zlib
// A slow reader and a builder of packed streams, written from the format alone and sharing no code with the
// library, bit by bit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace fenlight::test {

using Bytes = std::vector<uint8_t>;

struct StreamItem {
    enum Kind { Literal, NearByte, ShortMatch, LongMatch, LastOffsetMatch } kind;
    uint64_t position, offset, length;
};

struct ReadStream {
    Bytes output;
    std::vector<StreamItem> items;
    size_t bytesUsed = 0;
};

// Nothing if the stream breaks off, refers to what lies before its output, or makes more than `room`.
std::optional<ReadStream> ReadWholeStream(const Bytes &stream, uint64_t room);

class StreamBuilder {
  public:
    explicit StreamBuilder(uint8_t first) : bytes_{first} {}

    StreamBuilder &Bits(const std::string &bits);
    StreamBuilder &Byte(unsigned byte);
    // `value` from 2 on.
    StreamBuilder &Gamma(uint64_t value);
    StreamBuilder &Literals(const Bytes &bytes);
    // Gamma values as they stand in the stream.
    StreamBuilder &Long(uint64_t high, unsigned low, uint64_t length) {
        return Bits("10").Gamma(high).Byte(low).Gamma(length);
    }
    StreamBuilder &Last(uint64_t length) { return Bits("10").Gamma(2).Gamma(length); }
    StreamBuilder &End() { return Bits("110").Byte(0); }
    const Bytes &Stream() const { return bytes_; }

  private:
    Bytes bytes_;
    size_t tag_ = 0;
    int free_ = 0;
};

// Sentences of an invented language, the same for the same seed.
Bytes MakeText(size_t length, uint32_t seed);
Bytes MakeNoise(size_t length, uint32_t seed);

}  // namespace fenlight::test
