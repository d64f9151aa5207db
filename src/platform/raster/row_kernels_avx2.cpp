// SPDX-License-Identifier: Zlib
// 8 pixels at a time; what is left of a row goes pixel by pixel.
#if defined(__x86_64__)
#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "platform/raster/row_kernels.h"

namespace fenlight::platform {
namespace {

constexpr uint32_t kColours = 0x00FFFFFF;

__m256i Load(const uint8_t *bytes) { return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes)); }
void Store(uint8_t *bytes, __m256i value) { _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes), value); }
void StoreHalf(uint8_t *bytes, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), value); }
__m128i LoadHalf(const uint8_t *bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)); }

void CopyRow(uint8_t *target, const uint8_t *source, int64_t bytes) {
    int64_t i = 0;
    for (; i + 128 <= bytes; i += 128) {
        const __m256i a = Load(source + i);
        const __m256i b = Load(source + i + 32);
        const __m256i c = Load(source + i + 64);
        const __m256i d = Load(source + i + 96);
        Store(target + i, a);
        Store(target + i + 32, b);
        Store(target + i + 64, c);
        Store(target + i + 96, d);
    }
    for (; i + 32 <= bytes; i += 32) Store(target + i, Load(source + i));
    for (; i + 4 <= bytes; i += 4) std::memcpy(target + i, source + i, 4);
    for (; i < bytes; ++i) target[i] = source[i];
}

void CopyBytes(const RowBlock &block) {
    const bool isOneRun = block.targetPitch == block.width && block.sourcePitch == block.width;
    if (isOneRun) return CopyRow(block.target, block.source, block.width * block.rows);
    for (int64_t row = 0; row < block.rows; ++row) {
        CopyRow(block.target + row * block.targetPitch, block.source + row * block.sourcePitch, block.width);
    }
}

__m256i Spread() {
    return _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                            0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
}

__m256i Close() {
    return _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                            0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
}

// 8 pixels of 24 bits as words. Two loads of 16 bytes, 12 bytes apart, end 4 bytes behind the pixels.
__m256i LoadTriples(const uint8_t *source) {
    return _mm256_shuffle_epi8(_mm256_set_m128i(LoadHalf(source + 12), LoadHalf(source)), Spread());
}

void Store12(uint8_t *bytes, __m128i value) {
    _mm_storel_epi64(reinterpret_cast<__m128i *>(bytes), value);
    const int last = _mm_extract_epi32(value, 2);
    std::memcpy(bytes + 8, &last, sizeof last);
}

// A source has Load8 for 8 pixels, which may read kSpare pixels more, and Load1.
template <bool kHasKey, typename Source>
void KeyRows(const RowBlock &block, uint32_t key, Source pixels) {
    const __m256i keys = _mm256_set1_epi32(static_cast<int>(key));
    const __m256i colourBits = _mm256_set1_epi32(static_cast<int>(kColours));
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + 8 + Source::kSpare <= block.width; i += 8) {
            __m256i words = pixels.Load8(source + Source::kBytes * i);
            if constexpr (kHasKey) {
                const __m256i isKey = _mm256_cmpeq_epi32(_mm256_and_si256(words, colourBits), keys);
                words = _mm256_blendv_epi8(words, Load(target + 4 * i), isKey);
            }
            Store(target + 4 * i, words);
        }
        for (; i < block.width; ++i) {
            const uint32_t word = pixels.Load1(source + Source::kBytes * i);
            if ((word & kColours) != key) std::memcpy(target + 4 * i, &word, sizeof word);
        }
    }
}

template <typename Source>
void KeyBlock(const RowBlock &block, uint32_t key, Source source) {
    if (key > kColours) return KeyRows<false>(block, key, source);
    KeyRows<true>(block, key, source);
}

struct Source32 {
    static constexpr int kBytes = 4;
    static constexpr int kSpare = 0;
    __m256i Load8(const uint8_t *source) const { return Load(source); }
    uint32_t Load1(const uint8_t *source) const {
        uint32_t word;
        std::memcpy(&word, source, sizeof word);
        return word;
    }
};

struct Source24 {
    static constexpr int kBytes = 3;
    static constexpr int kSpare = 2;
    __m256i Load8(const uint8_t *source) const { return LoadTriples(source); }
    uint32_t Load1(const uint8_t *source) const {
        return source[0] | static_cast<uint32_t>(source[1]) << 8 | static_cast<uint32_t>(source[2]) << 16;
    }
};

void KeyFrom32(const RowBlock &block, uint32_t key) { KeyBlock(block, key, Source32{}); }
void KeyFrom24(const RowBlock &block, uint32_t key) { KeyBlock(block, key, Source24{}); }
// Looking up pixel by pixel: gathering loads take twice the time on many processors.
void LookUp(uint8_t *target, const uint8_t *indices, int64_t count, const uint32_t *palette) {
    int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        uint64_t eight;
        std::memcpy(&eight, indices + i, sizeof eight);
        for (int64_t byte = 0; byte < 8; ++byte) {
            std::memcpy(target + 4 * (i + byte), palette + (eight >> (8 * byte) & 0xFF), 4);
        }
    }
    for (; i < count; ++i) std::memcpy(target + 4 * i, palette + indices[i], 4);
}

// Many pixels are looked up before the first is compared, several rows where they are short: what has just
// been stored word by word cannot be loaded as a vector yet.
void KeyFrom8(const RowBlock &block, const uint32_t *palette, uint32_t key) {
    constexpr int64_t kPiece = 512;
    alignas(32) uint8_t words[4 * kPiece];
    if (block.width <= 0) return;
    const int64_t width = std::min(block.width, kPiece);
    const int64_t rowsAtOnce = kPiece / width;
    for (int64_t row = 0; row < block.rows; row += rowsAtOnce) {
        const int64_t rows = std::min(rowsAtOnce, block.rows - row);
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.width; i += width) {
            const int64_t count = std::min(width, block.width - i);
            for (int64_t j = 0; j < rows; ++j) {
                LookUp(words + 4 * width * j, source + j * block.sourcePitch + i, count, palette);
            }
            KeyBlock({target + 4 * i, block.targetPitch, words, 4 * width, count, rows}, key, Source32{});
        }
    }
}

void Key24(const RowBlock &block, uint32_t key) {
    const __m256i keys = _mm256_set1_epi32(static_cast<int>(key));
    const Source24 pixels;
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        for (; i + 8 + Source24::kSpare <= block.width; i += 8) {
            const __m256i words = LoadTriples(source + 3 * i);
            const __m256i isKey = _mm256_cmpeq_epi32(words, keys);
            const __m256i mixed = _mm256_blendv_epi8(words, LoadTriples(target + 3 * i), isKey);
            const __m256i packed = _mm256_shuffle_epi8(mixed, Close());
            Store12(target + 3 * i, _mm256_castsi256_si128(packed));
            Store12(target + 3 * i + 12, _mm256_extracti128_si256(packed, 1));
        }
        for (; i < block.width; ++i) {
            if (pixels.Load1(source + 3 * i) != key) std::copy_n(source + 3 * i, 3, target + 3 * i);
        }
    }
}

void PackTo24(const RowBlock &block) {
    const __m256i close = Close();
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        int64_t i = 0;
        // The second store reaches 4 bytes into pixels that are stored after it.
        for (; i + 10 <= block.width; i += 8) {
            const __m256i packed = _mm256_shuffle_epi8(Load(source + 4 * i), close);
            StoreHalf(target + 3 * i, _mm256_castsi256_si128(packed));
            StoreHalf(target + 3 * i + 12, _mm256_extracti128_si256(packed, 1));
        }
        for (; i < block.width; ++i) {
            for (int64_t byte = 0; byte < 3; ++byte) target[3 * i + byte] = source[4 * i + byte];
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

// kWindows: 1 if 8 target pixels lie within 8 of the source, 2 if within 16, 0 if farther apart.
template <int kWindows>
__m256i Scaled8(const ScaledRow &row, int64_t i, int64_t first) {
    const __m256i columns = Load(reinterpret_cast<const uint8_t *>(row.columns + i));
    if constexpr (kWindows == 0) {
        return _mm256_i32gather_epi32(reinterpret_cast<const int *>(row.source), columns, 4);
    }
    const __m256i offsets = _mm256_sub_epi32(columns, _mm256_set1_epi32(static_cast<int>(first)));
    const __m256i low = _mm256_permutevar8x32_epi32(Load(row.source + 4 * first), offsets);
    if constexpr (kWindows == 1) return low;
    const __m256i high = _mm256_permutevar8x32_epi32(Load(row.source + 4 * first + 32), offsets);
    return _mm256_blendv_epi8(low, high, _mm256_cmpgt_epi32(offsets, _mm256_set1_epi32(7)));
}

template <int kWindows>
void ScaleRow(const ScaledRow &row, bool isStreamed) {
    for (int64_t i = 0; i < row.count;) {
        uint8_t *target = row.target + 4 * i;
        const int64_t last = i + 7;
        const bool isAligned = !isStreamed || reinterpret_cast<uintptr_t>(target) % 32 == 0;
        const int64_t first =
            last < row.count ? std::min(row.columns[i], row.columns[last]) : row.sourceWidth;
        if (!isAligned || last >= row.count || first + 8 * kWindows > row.sourceWidth) {
            std::memcpy(target, row.source + 4 * int64_t{row.columns[i]}, 4);
            ++i;
            continue;
        }
        const __m256i pixels = Scaled8<kWindows>(row, i, first);
        if (isStreamed) {
            _mm256_stream_si256(reinterpret_cast<__m256i *>(target), pixels);
        } else {
            Store(target, pixels);
        }
        i += 8;
    }
}

template <int kWindows>
void ScaleRows(const ScaledRows &rows) {
    // Streaming stores need their own alignment, which pixels at odd addresses never have.
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
    if (rows.reach8 <= 8) return ScaleRows<1>(rows);
    if (rows.reach8 <= 16) return ScaleRows<2>(rows);
    ScaleRows<0>(rows);
}

// One bit for each of 8 pixels.
void CopyMarked8(uint8_t *target, const uint8_t *source, unsigned marks) {
    const __m256i bits = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
    const __m256i isMarked =
        _mm256_cmpeq_epi32(_mm256_and_si256(_mm256_set1_epi32(static_cast<int>(marks)), bits), bits);
    Store(target, _mm256_blendv_epi8(Load(target), Load(source), isMarked));
}

void CopyMarkedWord(uint8_t *target, const uint8_t *source, uint64_t word) {
    for (; word != 0; word >>= 8, target += 32, source += 32) {
        if ((word & 0xFF) != 0) CopyMarked8(target, source, static_cast<unsigned>(word & 0xFF));
    }
}

// The bitmap may end within the 64 pixels of the last word.
void CopyMarkedEnd(uint8_t *target, const uint8_t *source, uint64_t word) {
    for (; word != 0; word = _blsr_u64(word)) {
        const size_t offset = 4 * _tzcnt_u64(word);
        std::memcpy(target + offset, source + offset, 4);
    }
}

void CopyMarked32(uint8_t *target, const uint8_t *source, std::span<const uint64_t> marks) {
    for (size_t i = 0; i < marks.size(); ++i) {
        if (i + 1 == marks.size()) {
            CopyMarkedEnd(target + 256 * i, source + 256 * i, marks[i]);
        } else if (marks[i] == ~0ull) {
            CopyRow(target + 256 * i, source + 256 * i, 256);
        } else {
            CopyMarkedWord(target + 256 * i, source + 256 * i, marks[i]);
        }
    }
}

}  // namespace

extern const RowKernels kAvx2Kernels{"avx2",   60,    CopyBytes, KeyFrom32, KeyFrom24,
                                     KeyFrom8, Key24, PackTo24,  Scale32,   CopyMarked32};

}  // namespace fenlight::platform
#endif
