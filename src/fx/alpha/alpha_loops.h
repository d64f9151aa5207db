// SPDX-License-Identifier: Zlib
// Loops over alpha images that need no shuffles, written once: each file of kernels includes them and gets
// them in the width that its compiler flags allow. The same expressions do whole vectors and what is left.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace fenlight {
namespace {

#if defined(__AVX512BW__)
constexpr int64_t kVectorBytes = 64;
#elif defined(__AVX2__)
constexpr int64_t kVectorBytes = 32;
#else
constexpr int64_t kVectorBytes = 16;
#endif

static_assert(std::endian::native == std::endian::little, "a pixel is loaded as one word, alpha highest");

using Bytes [[gnu::vector_size(kVectorBytes)]] = uint8_t;
using Words [[gnu::vector_size(kVectorBytes)]] = uint32_t;
using Longs [[gnu::vector_size(kVectorBytes)]] = uint64_t;
using PixelOfBytes [[gnu::vector_size(4)]] = uint8_t;

template <typename Value>
Value Load(const uint8_t *bytes) {
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <typename Value>
void Store(uint8_t *bytes, Value value) {
    std::memcpy(bytes, &value, sizeof value);
}

// The bytes at the even places of each word, two products or sums of 16 bits side by side.
constexpr uint32_t kEvenBytes = 0x00FF00FF;

// Each half of 16 bits divided by 255 and rounded down, times 256. Exact for all sums below 65535.
template <typename Word>
Word DivideHalves(Word sums) {
    return sums + 0x00010001u + (sums >> 8 & kEvenBytes);
}

// Red and blue change places: the image has red in its low byte, the surface blue.
template <typename Word>
Word PaintOver(Word image, Word backdrop) {
    const Word alpha = image >> 24;
    const Word rest = 255u - alpha;
    const Word blueRed = image & kEvenBytes;
    const Word redBlue = blueRed << 16 | blueRed >> 16;
    const Word outer = DivideHalves(redBlue * alpha + (backdrop & kEvenBytes) * rest);
    const Word green = DivideHalves((image >> 8 & 0xFFu) * alpha + (backdrop >> 8 & 0xFFu) * rest);
    return (outer >> 8 & kEvenBytes) | (green & 0xFF00u);
}

void Paint(uint8_t *target, const uint8_t *backdrop, const uint8_t *image, int64_t pixels) noexcept {
    const int64_t end = 4 * pixels;
    int64_t i = 0;
    for (; i + kVectorBytes <= end; i += kVectorBytes)
        Store(target + i, PaintOver(Load<Words>(image + i), Load<Words>(backdrop + i)));
    for (; i < end; i += 4)
        Store(target + i, PaintOver(Load<uint32_t>(image + i), Load<uint32_t>(backdrop + i)));
}

void InvertAlpha(uint8_t *image, int64_t pixels) noexcept {
    const int64_t end = 4 * pixels;
    int64_t i = 0;
    for (; i + kVectorBytes <= end; i += kVectorBytes) Store(image + i, Load<Words>(image + i) ^ 0xFF000000u);
    for (; i < end; i += 4) Store(image + i, Load<uint32_t>(image + i) ^ 0xFF000000u);
}

// Moves the bytes of one vector and returns by how much each.
template <typename Value>
Value MoveTowards(uint8_t *image, const uint8_t *goal, Value limits) {
    const Value from = Load<Value>(image), to = Load<Value>(goal);
    const Value rise = to > from ? to - from : Value{}, fall = from > to ? from - to : Value{};
    const Value up = rise < limits ? rise : limits, down = fall < limits ? fall : limits;
    Store(image, static_cast<Value>(from + up - down));
    return up | down;
}

// The sum of the eight bytes of each long, for bytes that are sums themselves.
Longs SumBytes(Bytes bytes) {
    constexpr uint64_t kEven = 0x00FF00FF00FF00FF;
    const auto longs = reinterpret_cast<Longs>(bytes);
    const Longs pairs = (longs & kEven) + (longs >> 8 & kEven);
    return pairs * 0x0001000100010001u >> 48;
}

// Seven moves of 36 fit a byte; so many vectors are counted at a time.
constexpr int64_t kMovesInByte = 7;

int64_t Merge(uint8_t *image, const uint8_t *goal, int64_t pixels, uint32_t limits) noexcept {
    const int64_t end = 4 * pixels;
    const auto vectorLimits = reinterpret_cast<Bytes>(Words{} + limits);
    const int64_t vectorsEnd = end / kVectorBytes * kVectorBytes;
    Longs counts{};
    int64_t i = 0;
    while (i < vectorsEnd) {
        Bytes moves{};
        const int64_t groupEnd = std::min(i + kMovesInByte * kVectorBytes, vectorsEnd);
        for (; i < groupEnd; i += kVectorBytes) moves += MoveTowards(image + i, goal + i, vectorLimits);
        counts += SumBytes(moves);
    }
    uint64_t count = 0;
    for (int64_t lane = 0; lane < kVectorBytes / 8; ++lane) count += counts[lane];
    PixelOfBytes pixelLimits;
    std::memcpy(&pixelLimits, &limits, sizeof pixelLimits);
    for (; i < end; i += 4) {
        const PixelOfBytes moves = MoveTowards(image + i, goal + i, pixelLimits);
        count += uint64_t{moves[0]} + moves[1] + moves[2] + moves[3];
    }
    return static_cast<int64_t>(count);
}

}  // namespace
}  // namespace fenlight
