// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include <cstring>

#include "paths/grid_map.h"

namespace fenlight {
namespace {

constexpr int64_t kPixels = 32;
constexpr int64_t kBytes = 3 * kPixels;

// 96 bytes as two halves of 48, one in each half of the vectors.
struct Triple {
    __m256i first, second, third;
};

__m256i LoadHalves(const uint8_t *bytes) noexcept {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + kBytes / 2));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

Triple AndRows(const uint8_t *bytes, int64_t pitch, int64_t rows) noexcept {
    Triple all{LoadHalves(bytes), LoadHalves(bytes + 16), LoadHalves(bytes + 32)};
    while (--rows > 0) {
        bytes -= pitch;
        all.first = _mm256_and_si256(all.first, LoadHalves(bytes));
        all.second = _mm256_and_si256(all.second, LoadHalves(bytes + 16));
        all.third = _mm256_and_si256(all.third, LoadHalves(bytes + 32));
    }
    return all;
}

// Each byte with the two behind it.
__m256i AndThree(__m256i bytes, __m256i behind) noexcept {
    const __m256i two = _mm256_and_si256(bytes, _mm256_alignr_epi8(behind, bytes, 1));
    return _mm256_and_si256(two, _mm256_alignr_epi8(behind, bytes, 2));
}

__m256i BothHalves(__m128i bytes) noexcept { return _mm256_broadcastsi128_si256(bytes); }

// A bit for each pixel, set if it is white.
uint32_t WhitePixels(const Triple &all) noexcept {
    const __m256i fromFirst =
        BothHalves(_mm_setr_epi8(0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i fromSecond =
        BothHalves(_mm_setr_epi8(-1, -1, -1, -1, -1, -1, 2, 5, 8, 11, 14, -1, -1, -1, -1, -1));
    const __m256i fromThird =
        BothHalves(_mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 1, 4, 7, 10, 13));
    const __m256i first = _mm256_shuffle_epi8(AndThree(all.first, all.second), fromFirst);
    const __m256i second = _mm256_shuffle_epi8(AndThree(all.second, all.third), fromSecond);
    const __m256i third = _mm256_shuffle_epi8(AndThree(all.third, all.third), fromThird);
    const __m256i pixels = _mm256_or_si256(first, _mm256_or_si256(second, third));
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(pixels, _mm256_set1_epi8(-1))));
}

void Mark(uint32_t white, int64_t pixel, uint64_t *marks) noexcept {
    marks[pixel / 64] |= uint64_t{~white} << (pixel % 64);
}

void MarkPixels(const uint8_t *row, int64_t pitch, int64_t rows, int64_t pixels, uint64_t *marks) noexcept {
    int64_t p = 0;
    for (; p + kPixels <= pixels; p += kPixels)
        Mark(WhitePixels(AndRows(row + 3 * p, pitch, rows)), p, marks);
    if (p == pixels) return;
    uint8_t rest[kBytes];
    std::memset(rest, 255, sizeof rest);
    for (int64_t r = 0; r < rows; ++r)
        for (int64_t i = 0; i < 3 * (pixels - p); ++i) rest[i] &= row[3 * p + i - r * pitch];
    Mark(WhitePixels(AndRows(rest, 0, 1)), p, marks);
}

__m256i BytesOfBits(uint32_t bits) noexcept {
    const __m256i byteOf = _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
    const __m256i bitOf = _mm256_set1_epi64x(static_cast<int64_t>(0x8040201008040201));
    const __m256i spread = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int32_t>(bits)), byteOf);
    return _mm256_cmpeq_epi8(_mm256_and_si256(spread, bitOf), bitOf);
}

void WriteCells(const uint64_t *marks, int64_t cellSize, int64_t count, uint8_t *cells) noexcept {
    if (cellSize > 1) return kPlainMapKernels.writeCells(marks, cellSize, count, cells);
    for (int64_t c = 0; c < count; c += 32) {
        const auto bits = static_cast<uint32_t>(marks[c / 64] >> (c % 64));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(cells + c), BytesOfBits(bits));
    }
}

}  // namespace

const MapKernels kAvx2MapKernels{MarkPixels, WriteCells};

}  // namespace fenlight

#endif
