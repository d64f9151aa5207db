// SPDX-License-Identifier: Zlib
// 16 pixels at a time. Masked loads and stores end the rows and leave out key pixels, so that the target is
// never read.
#if defined(__x86_64__)
// GCC takes the intrinsics' undefined operands, which no result depends on, for forgotten initialisations.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

#include <algorithm>

#include "platform/raster/row_kernels.h"

namespace fenlight::platform {
namespace {

__m512i Load(const uint8_t *bytes) { return _mm512_loadu_si512(bytes); }
void Store(uint8_t *bytes, __m512i value) { _mm512_storeu_si512(bytes, value); }
__mmask64 FirstBytes(int64_t count) { return _bzhi_u64(~0ull, static_cast<unsigned>(count)); }
__mmask16 FirstPixels(int64_t count) {
    return static_cast<__mmask16>(_bzhi_u32(0xFFFF, static_cast<unsigned>(count)));
}

// Places of bytes for permutations.
struct alignas(64) Places {
    uint8_t bytes[64];
    template <typename PlaceOf>
    constexpr explicit Places(PlaceOf placeOf) : bytes{} {
        for (int i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(placeOf(i));
    }
    __m512i Load() const { return _mm512_load_si512(bytes); }
};

// Bytes 3i, 3i + 1, 3i + 2 and an empty one for each pixel, and back again.
constexpr Places kSpread{[](int i) { return i / 4 * 3 + i % 4; }};
constexpr Places kClose{[](int i) { return (i / 3 * 4 + i % 3) % 64; }};
// The same for 64 pixels at once, in three vectors of packed bytes and four of words: places count from the
// first of the two vectors that a result takes its bytes from.
constexpr Places kSpreadSecond{[](int i) { return 48 + i / 4 * 3 + i % 4; }};
constexpr Places kSpreadThird{[](int i) { return 32 + i / 4 * 3 + i % 4; }};
constexpr Places kSpreadFourth{[](int i) { return 16 + (i / 4 * 3 + i % 4) % 48; }};
constexpr Places kCloseFirst{[](int i) { return i / 3 * 4 + i % 3; }};
constexpr Places kCloseSecond{[](int i) { return (i + 64) / 3 * 4 + (i + 64) % 3 - 64; }};
constexpr Places kCloseThird{[](int i) { return (i + 128) / 3 * 4 + (i + 128) % 3 - 128; }};
constexpr Places kEveryFourth{[](int i) { return 4 * i % 128; }};
constexpr __mmask64 kColourBytes = 0x7777777777777777;

// A store of 64 bytes at a place that is no multiple of 64 always meets two cache lines, one of 32 bytes only
// every other time; for the short rows of sprites that counts more than the number of instructions.
constexpr int64_t kShortRow = 256;

void CopyShortRow(uint8_t *target, const uint8_t *source, int64_t bytes) {
    const auto copy = [=](int64_t at) {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(target + at),
                            _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source + at)));
    };
    for (int64_t i = 0; i + 32 < bytes; i += 32) copy(i);
    copy(bytes - 32);
}

void CopyRow(uint8_t *target, const uint8_t *source, int64_t bytes) {
    if (bytes >= 32 && bytes < kShortRow) return CopyShortRow(target, source, bytes);
    int64_t i = 0;
    for (; i + 256 <= bytes; i += 256) {
        const __m512i a = Load(source + i);
        const __m512i b = Load(source + i + 64);
        const __m512i c = Load(source + i + 128);
        const __m512i d = Load(source + i + 192);
        Store(target + i, a);
        Store(target + i + 64, b);
        Store(target + i + 128, c);
        Store(target + i + 192, d);
    }
    for (; i + 64 <= bytes; i += 64) Store(target + i, Load(source + i));
    if (i == bytes) return;
    const __mmask64 mask = FirstBytes(bytes - i);
    _mm512_mask_storeu_epi8(target + i, mask, _mm512_maskz_loadu_epi8(mask, source + i));
}

void CopyBytes(const RowBlock &block) {
    const bool isOneRun = block.targetPitch == block.width && block.sourcePitch == block.width;
    if (isOneRun) return CopyRow(block.target, block.source, block.width * block.rows);
    for (int64_t row = 0; row < block.rows; ++row) {
        CopyRow(block.target + row * block.targetPitch, block.source + row * block.sourcePitch, block.width);
    }
}

class KeyStore {
  public:
    explicit KeyStore(uint32_t key) : key_(_mm512_set1_epi32(static_cast<int>(key))) {}
    void operator()(uint8_t *target, __m512i pixels, __mmask16 inside) const {
        const __m512i colours = _mm512_and_si512(pixels, _mm512_set1_epi32(0xFFFFFF));
        const __mmask16 opaque = _mm512_mask_cmpneq_epi32_mask(inside, colours, key_);
        _mm512_mask_storeu_epi32(target, opaque, pixels);
    }

  private:
    __m512i key_;
};

// load(source, mask) gives the 16 pixels from there on, of which those of the mask may be read.
template <int kSourceBytes, typename LoadPixels>
void KeyRows(const RowBlock &block, uint32_t key, LoadPixels load) {
    const KeyStore store(key);
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + 16 <= block.width; i += 16)
            store(target + 4 * i, load(source + kSourceBytes * i, 16), 0xFFFF);
        if (i == block.width) continue;
        const int64_t rest = block.width - i;
        store(target + 4 * i, load(source + kSourceBytes * i, rest), FirstPixels(rest));
    }
}

void KeyFrom32(const RowBlock &block, uint32_t key) {
    KeyRows<4>(block, key, [](const uint8_t *source, int64_t count) {
        return count == 16 ? Load(source) : _mm512_maskz_loadu_epi32(FirstPixels(count), source);
    });
}

// All pixels of 24-bit rows, 64 at a time and without masks; gives the columns that are left over.
RowBlock SpreadRows(const RowBlock &block) {
    const __m512i first = kSpread.Load(), second = kSpreadSecond.Load();
    const __m512i third = kSpreadThird.Load(), fourth = kSpreadFourth.Load();
    const int64_t whole = block.width / 64 * 64;
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < whole; i += 64, target += 256, source += 192) {
            const __m512i a = Load(source), b = Load(source + 64), c = Load(source + 128);
            Store(target, _mm512_maskz_permutexvar_epi8(kColourBytes, first, a));
            Store(target + 64, _mm512_maskz_permutex2var_epi8(kColourBytes, a, second, b));
            Store(target + 128, _mm512_maskz_permutex2var_epi8(kColourBytes, b, third, c));
            Store(target + 192, _mm512_maskz_permutexvar_epi8(kColourBytes, fourth, c));
        }
    }
    return {block.target + 4 * whole, block.targetPitch,   block.source + 3 * whole,
            block.sourcePitch,        block.width - whole, block.rows};
}

void KeyFrom24(const RowBlock &whole, uint32_t key) {
    const bool isNobodysColour = key > 0xFFFFFF;
    const RowBlock block = isNobodysColour ? SpreadRows(whole) : whole;
    if (block.width == 0) return;
    const __m512i spread = kSpread.Load();
    KeyRows<3>(block, key, [spread](const uint8_t *source, int64_t count) {
        const __m512i packed = _mm512_maskz_loadu_epi8(FirstBytes(3 * count), source);
        return _mm512_maskz_permutexvar_epi8(kColourBytes, spread, packed);
    });
}

// Between 24-bit rows: the mask of pixels becomes one of bytes.
void Key24(const RowBlock &block, uint32_t key) {
    const __m512i spread = kSpread.Load();
    const __m512i close = kClose.Load();
    const __m512i keys = _mm512_set1_epi32(static_cast<int>(key));
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.width; i += 16) {
            const __mmask64 inside = FirstBytes(3 * std::min<int64_t>(block.width - i, 16));
            const __m512i packed = _mm512_maskz_loadu_epi8(inside, source + 3 * i);
            const __m512i words = _mm512_maskz_permutexvar_epi8(kColourBytes, spread, packed);
            const __m512i opaque = _mm512_movm_epi32(_mm512_cmpneq_epi32_mask(words, keys));
            const __mmask64 bytes = _mm512_movepi8_mask(_mm512_permutexvar_epi8(close, opaque));
            _mm512_mask_storeu_epi8(target + 3 * i, bytes & inside, packed);
        }
    }
}

// A palette as three tables of bytes in registers: looked up by permutations, 64 pixels at a time.
class PalettePlanes {
  public:
    explicit PalettePlanes(const uint32_t *palette) {
        const __m512i everyFourth = kEveryFourth.Load();
        for (int plane = 0; plane < 3; ++plane) {
            const __m512i bytes = _mm512_add_epi8(everyFourth, _mm512_set1_epi8(static_cast<char>(plane)));
            for (int part = 0; part < 4; ++part) planes_[plane][part] = BytesOf(palette + 64 * part, bytes);
        }
    }

    // pixels[q] becomes the words of the indices 16q to 16q + 15.
    void LookUp(__m512i indices, __m512i pixels[4]) const {
        // Interleaving works within 128-bit lanes, so the 4-byte groups are transposed before.
        const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        const __m512i turned = _mm512_permutexvar_epi32(order, indices);
        const __mmask64 upper = _mm512_movepi8_mask(turned);
        const __m512i blue = Byte(0, turned, upper);
        const __m512i green = Byte(1, turned, upper);
        const __m512i red = Byte(2, turned, upper);
        const __m512i zero = _mm512_setzero_si512();
        const __m512i lowBlueGreen = _mm512_unpacklo_epi8(blue, green);
        const __m512i highBlueGreen = _mm512_unpackhi_epi8(blue, green);
        const __m512i lowRed = _mm512_unpacklo_epi8(red, zero);
        const __m512i highRed = _mm512_unpackhi_epi8(red, zero);
        pixels[0] = _mm512_unpacklo_epi16(lowBlueGreen, lowRed);
        pixels[1] = _mm512_unpackhi_epi16(lowBlueGreen, lowRed);
        pixels[2] = _mm512_unpacklo_epi16(highBlueGreen, highRed);
        pixels[3] = _mm512_unpackhi_epi16(highBlueGreen, highRed);
    }

  private:
    // One byte of each of 64 words; `bytes` tells its place for 32 words, twice.
    static __m512i BytesOf(const uint32_t *words, __m512i bytes) {
        const __m512i low =
            _mm512_permutex2var_epi8(_mm512_loadu_si512(words), bytes, _mm512_loadu_si512(words + 16));
        const __m512i high =
            _mm512_permutex2var_epi8(_mm512_loadu_si512(words + 32), bytes, _mm512_loadu_si512(words + 48));
        return _mm512_inserti64x4(low, _mm512_castsi512_si256(high), 1);
    }
    __m512i Byte(int plane, __m512i indices, __mmask64 upper) const {
        const __m512i *parts = planes_[plane];
        const __m512i low = _mm512_permutex2var_epi8(parts[0], indices, parts[1]);
        const __m512i high = _mm512_permutex2var_epi8(parts[2], indices, parts[3]);
        return _mm512_mask_blend_epi8(upper, low, high);
    }

    __m512i planes_[3][4];
};

void KeyFrom8(const RowBlock &block, const uint32_t *palette, uint32_t key) {
    const PalettePlanes planes(palette);
    const KeyStore store(key);
    __m512i pixels[4];
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + 64 <= block.width; i += 64) {
            planes.LookUp(Load(source + i), pixels);
            for (int q = 0; q < 4; ++q) store(target + 4 * i + 64 * q, pixels[q], 0xFFFF);
        }
        if (i == block.width) continue;
        const __mmask64 rest = FirstBytes(block.width - i);
        planes.LookUp(_mm512_maskz_loadu_epi8(rest, source + i), pixels);
        for (int q = 0; q < 4; ++q) {
            store(target + 4 * i + 64 * q, pixels[q], static_cast<__mmask16>(rest >> (16 * q)));
        }
    }
}

// As SpreadRows, the other way.
RowBlock CloseRows(const RowBlock &block) {
    const __m512i first = kCloseFirst.Load(), second = kCloseSecond.Load(), third = kCloseThird.Load();
    const int64_t whole = block.width / 64 * 64;
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < whole; i += 64, target += 192, source += 256) {
            const __m512i a = Load(source), b = Load(source + 64), c = Load(source + 128);
            Store(target, _mm512_permutex2var_epi8(a, first, b));
            Store(target + 64, _mm512_permutex2var_epi8(b, second, c));
            Store(target + 128, _mm512_permutex2var_epi8(c, third, Load(source + 192)));
        }
    }
    return {block.target + 3 * whole, block.targetPitch,   block.source + 4 * whole,
            block.sourcePitch,        block.width - whole, block.rows};
}

void PackTo24(const RowBlock &whole) {
    const RowBlock block = CloseRows(whole);
    if (block.width == 0) return;
    const __m512i close = kClose.Load();
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.width; i += 16) {
            const int64_t count = std::min<int64_t>(block.width - i, 16);
            const __m512i words = _mm512_maskz_loadu_epi32(FirstPixels(count), source + 4 * i);
            _mm512_mask_storeu_epi8(target + 3 * i, FirstBytes(3 * count),
                                    _mm512_permutexvar_epi8(close, words));
        }
    }
}

struct ScaledRow {
    uint8_t *target;
    const uint8_t *source;
    const int32_t *columns;
    int64_t count;
    int64_t sourceWidth;
};

// The window of source pixels from `first` on, cut at the row's end.
__m512i LoadWindow(const ScaledRow &row, int64_t first) {
    const int64_t left = row.sourceWidth - first;
    const uint8_t *source = row.source + 4 * first;
    if (left >= 16) return Load(source);
    return left > 0 ? _mm512_maskz_loadu_epi32(FirstPixels(left), source) : _mm512_setzero_si512();
}

// The pixels i to i + count - 1 of the row, count being at most 16. kWindows: 1 if 16 target pixels lie
// within 16 of the source, 2 if within 32, 0 if farther apart.
template <int kWindows>
__m512i ScaledPixels(const ScaledRow &row, int64_t i, int64_t count) {
    const __mmask16 inside = FirstPixels(count);
    const __m512i columns = _mm512_maskz_loadu_epi32(inside, row.columns + i);
    if constexpr (kWindows == 0) {
        return _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), inside, columns, row.source, 4);
    }
    const int64_t first = std::min(row.columns[i], row.columns[i + count - 1]);
    const __m512i places = _mm512_sub_epi32(columns, _mm512_set1_epi32(static_cast<int>(first)));
    if constexpr (kWindows == 1) return _mm512_permutexvar_epi32(places, LoadWindow(row, first));
    return _mm512_permutex2var_epi32(LoadWindow(row, first), places, LoadWindow(row, first + 16));
}

// Stores the pixels up to the next whole cache line, or as many as there are; how many these were.
template <int kWindows>
int64_t ScaleToCacheLine(const ScaledRow &row) {
    const auto misplaced = static_cast<int64_t>(reinterpret_cast<uintptr_t>(row.target) % 64 / 4);
    const int64_t count = std::min<int64_t>((16 - misplaced) % 16, row.count);
    if (count == 0) return 0;
    _mm512_mask_storeu_epi32(row.target, FirstPixels(count), ScaledPixels<kWindows>(row, 0, count));
    return count;
}

template <int kWindows>
void ScaleRow(const ScaledRow &row, bool isStreamed) {
    int64_t i = 0;
    if (isStreamed) {
        i = ScaleToCacheLine<kWindows>(row);
        for (; i + 16 <= row.count; i += 16) {
            _mm512_stream_si512(reinterpret_cast<__m512i *>(row.target + 4 * i),
                                ScaledPixels<kWindows>(row, i, 16));
        }
    }
    for (; i + 16 <= row.count; i += 16) Store(row.target + 4 * i, ScaledPixels<kWindows>(row, i, 16));
    if (i == row.count) return;
    const int64_t rest = row.count - i;
    _mm512_mask_storeu_epi32(row.target + 4 * i, FirstPixels(rest), ScaledPixels<kWindows>(row, i, rest));
}

template <int kWindows>
void ScaleRows(const ScaledRows &rows) {
    // Streaming stores need whole cache lines, which pixels at odd addresses never fill.
    const bool isStreamed =
        rows.isStreamed && reinterpret_cast<uintptr_t>(rows.target) % 4 == 0 && rows.targetPitch % 4 == 0;
    ScaledRow row{rows.target, rows.source, rows.columns.data(), static_cast<int64_t>(rows.columns.size()),
                  rows.sourceWidth};
    for (const int32_t line : rows.lines) {
        row.source = rows.source + line * rows.sourcePitch;
        ScaleRow<kWindows>(row, isStreamed);
        row.target += rows.targetPitch;
    }
    if (isStreamed) _mm_sfence();
}

void Scale32(const ScaledRows &rows) {
    if (rows.reach16 <= 16) return ScaleRows<1>(rows);
    if (rows.reach16 <= 32) return ScaleRows<2>(rows);
    ScaleRows<0>(rows);
}

// The 64 pixels of one word. Masked stores of nothing are not free.
void CopyWord(uint8_t *target, const uint8_t *source, uint64_t word) {
    for (int q = 0; q < 4; ++q) {
        const auto mask = static_cast<__mmask16>(word >> (16 * q));
        if (mask == 0) continue;
        _mm512_mask_storeu_epi32(target + 64 * q, mask, _mm512_maskz_loadu_epi32(mask, source + 64 * q));
    }
}

void CopyMarked32(uint8_t *target, const uint8_t *source, std::span<const uint64_t> marks) {
    for (size_t i = 0; i < marks.size(); i += 8) {
        const auto inside = static_cast<__mmask8>(
            _bzhi_u32(0xFF, static_cast<unsigned>(std::min<size_t>(marks.size() - i, 8))));
        const __m512i words = _mm512_maskz_loadu_epi64(inside, marks.data() + i);
        for (unsigned open = _mm512_test_epi64_mask(words, words); open != 0; open = _blsr_u32(open)) {
            const size_t place = i + _tzcnt_u32(open);
            CopyWord(target + 256 * place, source + 256 * place, marks[place]);
        }
    }
}

}  // namespace

extern const RowKernels kAvx512Kernels{"avx512", 30,    CopyBytes, KeyFrom32, KeyFrom24,
                                       KeyFrom8, Key24, PackTo24,  Scale32,   CopyMarked32};

}  // namespace fenlight::platform
#endif
