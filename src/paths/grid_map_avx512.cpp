// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include <cstring>

#include "paths/grid_map.h"

namespace fenlight {
namespace {

constexpr int64_t kPixels = 64;

// Where 64 pixels have their first bytes in three words of a bit a byte.
constexpr uint64_t kFirstBytes[3] = {0x9249249249249249, 0x4924924924924924, 0x2492492492492492};

// Some of 64 bytes.
struct AllBytes {
    __m512i Load(const uint8_t *bytes) const noexcept { return _mm512_loadu_si512(bytes); }
};
struct FirstBytes {
    explicit FirstBytes(int64_t count) noexcept
        : inside(count <= 0 ? 0 : _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count < 64 ? count : 64))) {}
    __m512i Load(const uint8_t *bytes) const noexcept {
        return _mm512_mask_loadu_epi8(_mm512_set1_epi8(-1), inside, bytes);
    }
    __mmask64 inside;
};

// A bit for each byte of 192, set if it is not 255 in one of the rows.
struct ByteMarks {
    template <typename Bytes>
    ByteMarks(const uint8_t *bytes, const Bytes (&loaders)[3], int64_t pitch, int64_t rows) noexcept {
        const __m512i white = _mm512_set1_epi8(-1);
        __m512i all[3] = {white, white, white};
        for (; rows > 0; --rows, bytes -= pitch)
            for (int i = 0; i < 3; ++i) all[i] = _mm512_and_si512(all[i], loaders[i].Load(bytes + 64 * i));
        for (int i = 0; i < 3; ++i) words[i] = _mm512_cmpneq_epi8_mask(all[i], white);
    }

    // A bit for each of 64 pixels.
    uint64_t Pixels() const noexcept {
        const uint64_t first = words[0] | (words[0] >> 1 | words[1] << 63) | (words[0] >> 2 | words[1] << 62);
        const uint64_t second =
            words[1] | (words[1] >> 1 | words[2] << 63) | (words[1] >> 2 | words[2] << 62);
        const uint64_t third = words[2] | words[2] >> 1 | words[2] >> 2;
        return _pext_u64(first, kFirstBytes[0]) | _pext_u64(second, kFirstBytes[1]) << 22 |
               _pext_u64(third, kFirstBytes[2]) << 43;
    }

    uint64_t words[3];
};

void MarkPixels(const uint8_t *row, int64_t pitch, int64_t rows, int64_t pixels, uint64_t *marks) noexcept {
    for (; pixels >= kPixels; pixels -= kPixels, row += 3 * kPixels)
        *marks++ |= ByteMarks(row, {AllBytes{}, AllBytes{}, AllBytes{}}, pitch, rows).Pixels();
    if (pixels == 0) return;
    const FirstBytes rest[3] = {FirstBytes(3 * pixels), FirstBytes(3 * pixels - 64),
                                FirstBytes(3 * pixels - 128)};
    *marks |= ByteMarks(row, rest, pitch, rows).Pixels();
}

// The lowest bit of each cell becomes that of any pixel in it.
uint64_t AnyInCell(uint64_t bits, int64_t cellSize) noexcept {
    int64_t reach = 1;
    for (; 2 * reach <= cellSize; reach *= 2) bits |= bits >> reach;
    return bits | bits >> (cellSize - reach);
}

// The first bit of each of so many cells.
uint64_t LowestBits(int64_t cellSize, int64_t cells) noexcept {
    uint64_t lowest = 0;
    for (int64_t i = 0; i < cells; ++i) lowest |= uint64_t{1} << i * cellSize;
    return lowest;
}

void WriteSinglePixels(const uint64_t *marks, int64_t count, uint8_t *cells) noexcept {
    for (int64_t c = 0; c < count; c += 64) _mm512_storeu_si512(cells + c, _mm512_movm_epi8(*marks++));
}

void WriteCells(const uint64_t *marks, int64_t cellSize, int64_t count, uint8_t *cells) noexcept {
    if (cellSize == 1) return WriteSinglePixels(marks, count, cells);
    // From any bit of its first byte on, a word holds 57 bits.
    const int64_t cellsAtOnce = 57 / cellSize;
    if (cellsAtOnce < 2) return kPlainMapKernels.writeCells(marks, cellSize, count, cells);
    const uint64_t lowest = LowestBits(cellSize, cellsAtOnce);
    for (int64_t c = 0; c < count; c += cellsAtOnce) {
        uint64_t bits;
        const int64_t first = c * cellSize;
        std::memcpy(&bits, reinterpret_cast<const uint8_t *>(marks) + first / 8, sizeof bits);
        const uint64_t blocked = _pext_u64(AnyInCell(bits >> first % 8, cellSize), lowest);
        _mm512_storeu_si512(cells + c, _mm512_movm_epi8(blocked));
    }
}

}  // namespace

const MapKernels kAvx512MapKernels{MarkPixels, WriteCells};

}  // namespace fenlight

#endif
