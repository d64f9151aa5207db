// SPDX-License-Identifier: Zlib
// What packer and depacker agree on: the container's header, and the rules of the packed stream. Whole bytes
// and tag bits are mixed in it; a tag byte gives eight tag bits, highest first, and stands where the reader
// first needs one of them. After a first plain byte come items, told by their tag bits:
//
//   0                    literal: a byte
//   1 1 1, 4 bits        near byte: the byte that many places back, or the byte 0 for 0
//   1 1 0, byte b        short match: offset b >> 1, length 2 + (b & 1); offset 0 is the end mark
//   1 0, gamma, ...      long match: gamma - kAfterLiteral or kAfterMatch is the offset's high part + 1 and a
//                        byte with its low part follows; 0 stands for the last offset. Then gamma of the
//                        length less LengthCorrection (none with the last offset).
//
// A gamma number's bits behind the leading one are each followed by a bit that is 1 where another one comes.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace fenlight {

inline constexpr uint32_t kHeaderBytes = 24;
inline constexpr uint32_t kContainerTag = 0x32335041;  // "AP32"
// The bytes in front of it stay readable in a container with a password.
inline constexpr uint32_t kFirstCipheredByte = 64;

// All fields low byte first, as on every machine that the library runs on.
struct PackHeader {
    uint32_t totalSize;  // the tag while the container is worked on
    uint32_t headerSize;
    uint32_t packedSize;
    uint32_t packedCrc;
    uint32_t originalSize;
    uint32_t originalCrc;
};
static_assert(sizeof(PackHeader) == kHeaderBytes && std::endian::native == std::endian::little);

inline constexpr uint32_t kAfterLiteral = 2;
inline constexpr uint32_t kAfterMatch = 1;

inline constexpr uint32_t kFirstMiddleOffset = 128;
inline constexpr uint32_t kFirstFarOffset = 1280;
inline constexpr uint32_t kFirstFarthestOffset = 32000;
inline constexpr uint32_t kNearBytes = 15;

// 2, 0, 1, 2 for the four classes of offsets. Written as a sum, for a branch would often be foreseen wrongly.
constexpr uint32_t LengthCorrection(uint64_t offset) noexcept {
    return 2 * uint32_t{offset < kFirstMiddleOffset} + uint32_t{offset >= kFirstFarOffset} +
           uint32_t{offset >= kFirstFarthestOffset};
}

// Bits that items take in the stream.
inline constexpr uint32_t kImpossible = 100;
inline constexpr uint32_t kLiteralBits = 9;
inline constexpr uint32_t kNearByteBits = 7;
inline constexpr uint32_t kShortMatchBits = 11;
inline constexpr uint32_t kLastOffsetBits = 4;  // and the length's gamma
inline constexpr uint32_t kLongMatchBits = 10;  // and the gammas of the offset's high part and the length

constexpr uint32_t GammaBits(uint32_t value) noexcept {
    return value < 2 ? kImpossible : 2 * (static_cast<uint32_t>(std::bit_width(value)) - 1);
}

inline uint64_t LoadWord(const uint8_t *bytes) noexcept {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline void StoreWord(uint8_t *bytes, uint64_t word) noexcept { std::memcpy(bytes, &word, sizeof word); }

}  // namespace fenlight
