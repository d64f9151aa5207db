// SPDX-License-Identifier: Zlib
// The filters in vectors. Up and None work on 16 bytes at a time. The others depend on the pixel to the left,
// so the time of a row is the length of that chain: Sub becomes a prefix sum, Average two operations a pixel,
// Paeth four. All else (loads, swaps, packing) is done for four pixels at once beside the chain.
#if defined(__x86_64__)
#include <immintrin.h>

#include <cstring>

#include "images/png/png_filters.h"
#include "images/png/png_filters_plain.h"

namespace fenlight {

namespace {

using enum PixelLayout;
using enum PngFilter;

constexpr size_t kVector = 16;

__m128i Load(const uint8_t *bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)); }
void Store(uint8_t *bytes, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), v); }

// Eight bytes as 16-bit samples.
__m128i LoadWide(const uint8_t *bytes) {
    return _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(bytes)));
}

// One pixel as 16-bit samples in the low half, zeros above it.
template <PixelLayout layout>
__m128i LoadFirstPixel(const uint8_t *bytes) {
    uint32_t pixel = 0;
    std::memcpy(&pixel, bytes, PixelBytes(layout));
    return _mm_cvtepu8_epi16(_mm_cvtsi32_si128(static_cast<int>(pixel)));
}

// Four pixels of three or four bytes, one in each 32-bit lane.
template <PixelLayout layout>
struct Quad {
    static constexpr size_t kBytes = 4 * PixelBytes(layout);

    // Both read 16 bytes.
    static __m128i LoadRow(const uint8_t *bytes) {
        if constexpr (layout != SwappedRgb) return Load(bytes);
        return _mm_shuffle_epi8(Load(bytes),
                                _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
    }
    static __m128i LoadFiltered(const uint8_t *bytes) {
        const __m128i v = Load(bytes);
        if constexpr (layout == SwappedRgb)
            return _mm_shuffle_epi8(v, _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1));
        if constexpr (layout == SwappedRgba)
            return _mm_shuffle_epi8(v, _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15));
        return v;
    }
    // Writes kBytes.
    static void StoreRow(uint8_t *bytes, __m128i v) {
        if constexpr (layout != SwappedRgb) {
            Store(bytes, v);
        } else {
            v = _mm_shuffle_epi8(v, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
            _mm_storel_epi64(reinterpret_cast<__m128i *>(bytes), v);
            const int last = _mm_extract_epi32(v, 2);
            std::memcpy(bytes + 8, &last, sizeof last);
        }
    }
};

template <PixelLayout layout>
void SubRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    using Pixels = Quad<layout>;
    __m128i left = _mm_setzero_si128();
    size_t i = 0;
    for (; i + kVector <= rowBytes; i += Pixels::kBytes) {
        __m128i v = Pixels::LoadFiltered(filtered + i);
        v = _mm_add_epi8(v, _mm_slli_si128(v, 4));
        v = _mm_add_epi8(v, _mm_slli_si128(v, 8));
        v = _mm_add_epi8(v, left);
        Pixels::StoreRow(row + i, v);
        left = _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 3, 3, 3));
    }
    UnfilterFrom<layout, Sub>(i, row, previous, filtered, rowBytes);
}

// The chain runs on complements: with n = 255 - left and m = 255 - up, the rounding-up average of n and m is
// 255 - (left + up) / 2, so that 255 - result = average(n, m) - filtered.
template <PixelLayout layout>
void AverageRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    using Pixels = Quad<layout>;
    const __m128i ones = _mm_set1_epi8(-1);
    __m128i left = ones;
    size_t i = 0;
    for (; i + kVector <= rowBytes; i += Pixels::kBytes) {
        const __m128i v = Pixels::LoadFiltered(filtered + i);
        const __m128i up = _mm_xor_si128(Pixels::LoadRow(previous + i), ones);
        const __m128i first = _mm_sub_epi8(_mm_avg_epu8(left, up), v);
        const __m128i second = _mm_sub_epi8(_mm_avg_epu8(first, _mm_srli_si128(up, 4)), _mm_srli_si128(v, 4));
        const __m128i third = _mm_sub_epi8(_mm_avg_epu8(second, _mm_srli_si128(up, 8)), _mm_srli_si128(v, 8));
        left = _mm_sub_epi8(_mm_avg_epu8(third, _mm_srli_si128(up, 12)), _mm_srli_si128(v, 12));
        const __m128i all =
            _mm_unpacklo_epi64(_mm_unpacklo_epi32(first, second), _mm_unpacklo_epi32(third, left));
        Pixels::StoreRow(row + i, _mm_xor_si128(all, ones));
    }
    UnfilterFrom<layout, Average>(i, row, previous, filtered, rowBytes);
}

// Two neighbouring pixels as 16-bit samples, and what Paeth needs of them that doesn't depend on the left
// one.
struct PaethPair {
    __m128i up, filtered, threshold, corner;

    PaethPair(__m128i upPixels, __m128i cornerPixels, __m128i filteredPixels)
        : up(upPixels), filtered(filteredPixels) {
        const __m128i twice = _mm_add_epi16(cornerPixels, cornerPixels);
        threshold = _mm_sub_epi16(_mm_add_epi16(twice, cornerPixels), upPixels);
        corner = _mm_add_epi8(cornerPixels, filteredPixels);
    }
    PaethPair Second() const { return PaethPair(*this, 8); }

  private:
    PaethPair(const PaethPair &pair, int)
        : up(_mm_srli_si128(pair.up, 8)),
          filtered(_mm_srli_si128(pair.filtered, 8)),
          threshold(_mm_srli_si128(pair.threshold, 8)),
          corner(_mm_srli_si128(pair.corner, 8)) {}
};

// The choice of PredictPaeth among three finished results: adding the filtered byte beforehand keeps it out
// of the chain. Bytes wrap inside their 16-bit lanes.
inline __m128i PaethChoice(__m128i left, __m128i up, __m128i threshold, __m128i corner, __m128i filtered) {
    const __m128i low = _mm_min_epi16(left, up);
    const __m128i high = _mm_max_epi16(left, up);
    const __m128i lowOrCorner =
        _mm_blendv_epi8(_mm_add_epi8(low, filtered), corner, _mm_cmpgt_epi16(high, threshold));
    return _mm_blendv_epi8(_mm_add_epi8(high, filtered), lowOrCorner, _mm_cmpgt_epi16(threshold, low));
}

inline __m128i PaethStep(__m128i left, const PaethPair &pixel) {
    return PaethChoice(left, pixel.up, _mm_sub_epi16(pixel.threshold, left), pixel.corner, pixel.filtered);
}

template <PixelLayout layout>
void PaethRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    using Pixels = Quad<layout>;
    const __m128i zero = _mm_setzero_si128();
    __m128i left = zero;
    __m128i upBefore = zero;  // its high half is the pixel up and left
    size_t i = 0;
    for (; i + kVector <= rowBytes; i += Pixels::kBytes) {
        const __m128i v = Pixels::LoadFiltered(filtered + i);
        const __m128i up = Pixels::LoadRow(previous + i);
        const __m128i upLow = _mm_unpacklo_epi8(up, zero);
        const __m128i upHigh = _mm_unpackhi_epi8(up, zero);
        const PaethPair front(upLow, _mm_alignr_epi8(upLow, upBefore, 8), _mm_unpacklo_epi8(v, zero));
        const PaethPair back(upHigh, _mm_alignr_epi8(upHigh, upLow, 8), _mm_unpackhi_epi8(v, zero));
        upBefore = upHigh;
        const __m128i first = PaethStep(left, front);
        const __m128i second = PaethStep(first, front.Second());
        const __m128i third = PaethStep(second, back);
        left = PaethStep(third, back.Second());
        Pixels::StoreRow(
            row + i, _mm_packus_epi16(_mm_unpacklo_epi64(first, second), _mm_unpacklo_epi64(third, left)));
    }
    UnfilterFrom<layout, Paeth>(i, row, previous, filtered, rowBytes);
}

// Half a register each for two rows that lie under one another: while the upper row is at one pixel, the
// lower is at the pixel before, whose upper neighbour is just finished. Two rows take little longer than one.
struct PaethWave {
    __m128i left;  // low half: the upper row's last pixel, high half: the lower row's
    __m128i up;    // of the step before, so the corners of the next

    __m128i Step(__m128i upPixels, __m128i filteredPixels) {
        const __m128i thrice = _mm_add_epi16(_mm_add_epi16(up, up), up);
        const __m128i corner = _mm_add_epi8(up, filteredPixels);
        left = PaethChoice(left, upPixels, _mm_sub_epi16(_mm_sub_epi16(thrice, left), upPixels), corner,
                           filteredPixels);
        up = upPixels;
        return left;
    }
};

// Two Paeth rows, four steps of the wave at a time.
template <PixelLayout layout>
class PaethPairRun {
  public:
    using Pixels = Quad<layout>;
    static constexpr size_t kAhead = PixelBytes(layout);  // of the upper row before the lower

    PaethPairRun(const PaethRows &rows, size_t first)
        : row_(rows.row + first * rows.pitch),
          lowerRow_(row_ + rows.pitch),
          previous_(first == 0 ? rows.previous : row_ - rows.pitch),
          filtered_(rows.filtered + first * (rows.rowBytes + 1)),
          lowerFiltered_(filtered_ + rows.rowBytes + 1),
          rowBytes_(rows.rowBytes) {}

    void Start() {
        UnfilterFrom<layout, Paeth>(0, row_, previous_, filtered_, kAhead);
        wave_ = {LoadFirstPixel<layout>(row_), LoadFirstPixel<layout>(previous_)};
    }

    bool HasBlock(size_t i) const { return i + kAhead + kVector <= rowBytes_; }

    void DoBlock(size_t i) {
        const __m128i zero = _mm_setzero_si128();
        const __m128i above = Pixels::LoadRow(previous_ + i + kAhead);
        const __m128i upper = Pixels::LoadFiltered(filtered_ + i + kAhead);
        const __m128i lower = Pixels::LoadFiltered(lowerFiltered_ + i);
        const __m128i aboveFront = _mm_unpacklo_epi8(above, zero), aboveBack = _mm_unpackhi_epi8(above, zero);
        const __m128i upperFront = _mm_unpacklo_epi8(upper, zero), upperBack = _mm_unpackhi_epi8(upper, zero);
        const __m128i lowerFront = _mm_unpacklo_epi8(lower, zero), lowerBack = _mm_unpackhi_epi8(lower, zero);
        const __m128i first = wave_.Step(_mm_unpacklo_epi64(aboveFront, wave_.left),
                                         _mm_unpacklo_epi64(upperFront, lowerFront));
        const __m128i second =
            wave_.Step(_mm_alignr_epi8(first, aboveFront, 8), _mm_unpackhi_epi64(upperFront, lowerFront));
        const __m128i third =
            wave_.Step(_mm_unpacklo_epi64(aboveBack, second), _mm_unpacklo_epi64(upperBack, lowerBack));
        const __m128i fourth =
            wave_.Step(_mm_alignr_epi8(third, aboveBack, 8), _mm_unpackhi_epi64(upperBack, lowerBack));
        Pixels::StoreRow(row_ + i + kAhead, _mm_packus_epi16(_mm_unpacklo_epi64(first, second),
                                                             _mm_unpacklo_epi64(third, fourth)));
        Pixels::StoreRow(lowerRow_ + i, _mm_packus_epi16(_mm_unpackhi_epi64(first, second),
                                                         _mm_unpackhi_epi64(third, fourth)));
    }

    void Finish(size_t i) {
        for (; HasBlock(i); i += Pixels::kBytes) DoBlock(i);
        UnfilterFrom<layout, Paeth>(i + kAhead, row_, previous_, filtered_, rowBytes_);
        UnfilterFrom<layout, Paeth>(i, lowerRow_, row_, lowerFiltered_, rowBytes_);
    }

  private:
    uint8_t *row_;
    uint8_t *lowerRow_;
    const uint8_t *previous_;
    const uint8_t *filtered_;
    const uint8_t *lowerFiltered_;
    size_t rowBytes_;
    PaethWave wave_;
};

template <PixelLayout layout>
void PaethTwoRows(const PaethRows &rows) {
    PaethPairRun<layout> pair(rows, 0);
    pair.Start();
    pair.Finish(0);
}

// Two pairs, the second so far behind the first that it never waits for a store of it: the processor works on
// both chains at once.
template <PixelLayout layout>
void PaethFourRows(const PaethRows &rows) {
    constexpr size_t step = Quad<layout>::kBytes;
    constexpr size_t lag = 8 * step;
    PaethPairRun<layout> upper(rows, 0);
    PaethPairRun<layout> lower(rows, 2);
    upper.Start();
    size_t i = 0;
    for (; i < lag && upper.HasBlock(i); i += step) upper.DoBlock(i);
    if (i < lag) {
        upper.Finish(i);
        lower.Start();
        lower.Finish(0);
        return;
    }
    lower.Start();
    for (; upper.HasBlock(i); i += step) {
        upper.DoBlock(i);
        lower.DoBlock(i - lag);
    }
    upper.Finish(i);
    lower.Finish(i - lag);
}

// Pixels of six and eight bytes, one at a time. A vector of eight bytes may reach into the next pixel, which
// the next step writes again.
template <PixelLayout layout, PngFilter filter>
void WideRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    constexpr size_t bytes = PixelBytes(layout);
    __m128i left = _mm_setzero_si128();
    __m128i corner = left;
    size_t i = 0;
    for (; i + 8 <= rowBytes; i += bytes) {
        const __m128i v = LoadWide(filtered + i);
        const __m128i up = LoadWide(previous + i);
        if constexpr (filter == Sub) left = _mm_add_epi8(left, v);
        if constexpr (filter == Average) left = _mm_add_epi8(_mm_srli_epi16(_mm_add_epi16(left, up), 1), v);
        if constexpr (filter == Paeth) left = PaethStep(left, PaethPair(up, corner, v));
        corner = up;
        _mm_storel_epi64(reinterpret_cast<__m128i *>(row + i), _mm_packus_epi16(left, left));
    }
    UnfilterFrom<layout, filter>(i, row, previous, filtered, rowBytes);
}

// Swaps red and blue of five or four whole pixels; the last byte of five belongs to the next.
template <PixelLayout layout>
__m128i SwapPacked(__m128i v) {
    if constexpr (layout == SwappedRgb)
        return _mm_shuffle_epi8(v, _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, -1));
    if constexpr (layout == SwappedRgba)
        return _mm_shuffle_epi8(v, _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15));
    return v;
}

// Vectors may reach one byte into the next pixel: the next step writes that byte again.
template <PixelLayout layout>
void UpRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    constexpr size_t step = layout == SwappedRgb ? 15 : kVector;
    size_t i = 0;
    for (; i + kVector <= rowBytes; i += step)
        Store(row + i, _mm_add_epi8(SwapPacked<layout>(Load(filtered + i)), Load(previous + i)));
    // A vector may end inside a pixel, which only a swap would mind.
    UnfilterFrom<IsSwapped(layout) ? layout : Bytes1, Up>(i, row, previous, filtered, rowBytes);
}

template <PixelLayout layout>
void NoneRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    if constexpr (!IsSwapped(layout)) {
        std::memcpy(row, filtered, rowBytes);
    } else {
        constexpr size_t step = layout == SwappedRgb ? 15 : kVector;
        size_t i = 0;
        for (; i + kVector <= rowBytes; i += step) Store(row + i, SwapPacked<layout>(Load(filtered + i)));
        UnfilterFrom<layout, None>(i, row, previous, filtered, rowBytes);
    }
}

// Sums over the bytes of a vector, the last of the vector before carried over.
template <PixelLayout layout>
void SubBytesRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    static_assert(layout == Bytes1 || layout == Bytes2);
    const __m128i lastPixel = layout == Bytes1 ? _mm_set1_epi8(15) : _mm_set1_epi16(0x0F0E);
    __m128i left = _mm_setzero_si128();
    size_t i = 0;
    for (; i + kVector <= rowBytes; i += kVector) {
        __m128i v = Load(filtered + i);
        if constexpr (layout == Bytes1) v = _mm_add_epi8(v, _mm_slli_si128(v, 1));
        v = _mm_add_epi8(v, _mm_slli_si128(v, 2));
        v = _mm_add_epi8(v, _mm_slli_si128(v, 4));
        v = _mm_add_epi8(v, _mm_slli_si128(v, 8));
        v = _mm_add_epi8(v, left);
        Store(row + i, v);
        left = _mm_shuffle_epi8(v, lastPixel);
    }
    UnfilterFrom<layout, Sub>(i, row, previous, filtered, rowBytes);
}

template <PixelLayout layout, PngFilter filter>
void PlainRow(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    UnfilterFrom<layout, filter>(0, row, previous, filtered, rowBytes);
}

// Pixels of one and two bytes: Average and Paeth gain nothing from vectors.
template <PixelLayout layout>
constexpr LayoutKernels NarrowKernels() {
    return {{NoneRow<layout>, SubBytesRow<layout>, UpRow<layout>, PlainRow<layout, Average>,
             PlainRow<layout, Paeth>},
            nullptr,
            nullptr};
}

// Three and four bytes.
template <PixelLayout layout>
constexpr LayoutKernels QuadKernels() {
    return {{NoneRow<layout>, SubRow<layout>, UpRow<layout>, AverageRow<layout>, PaethRow<layout>},
            PaethTwoRows<layout>,
            PaethFourRows<layout>};
}

template <PixelLayout layout>
constexpr LayoutKernels WideKernels() {
    return {{NoneRow<layout>, WideRow<layout, Sub>, UpRow<layout>, WideRow<layout, Average>,
             WideRow<layout, Paeth>},
            nullptr,
            nullptr};
}

}  // namespace

constexpr FilterKernels kSse4Filters = {
    "sse4",
    {NarrowKernels<Bytes1>(), NarrowKernels<Bytes2>(), QuadKernels<Bytes4>(), WideKernels<Bytes6>(),
     WideKernels<Bytes8>(), QuadKernels<SwappedRgb>(), QuadKernels<SwappedRgba>()}};

}  // namespace fenlight
#endif
