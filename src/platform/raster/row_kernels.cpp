// SPDX-License-Identifier: Zlib
#include "platform/raster/row_kernels.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstring>

#include "platform/raster/colour_conversion.h"
#include "platform/raster/row_kernels_sse4.h"

namespace fenlight::platform {
namespace {

void CopyBytes(const RowBlock &block) {
    for (int64_t row = 0; row < block.rows; ++row) {
        std::memcpy(block.target + row * block.targetPitch, block.source + row * block.sourcePitch,
                    static_cast<size_t>(block.width));
    }
}

// load(sourceRow, i) gives the pixel i as a word.
template <typename Load>
void KeyRows(const RowBlock &block, uint32_t key, Load load) {
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.width; ++i) {
            const uint32_t word = load(source, i);
            if ((word & kColourBits) != key) std::memcpy(target + 4 * i, &word, sizeof word);
        }
    }
}

void KeyFrom32(const RowBlock &block, uint32_t key) {
    KeyRows(block, key, [](const uint8_t *row, int64_t i) {
        uint32_t word;
        std::memcpy(&word, row + 4 * i, sizeof word);
        return word;
    });
}

uint32_t LoadTriple(const uint8_t *row, int64_t i) {
    const uint8_t *pixel = row + 3 * i;
    return pixel[0] | static_cast<uint32_t>(pixel[1]) << 8 | static_cast<uint32_t>(pixel[2]) << 16;
}

void KeyFrom24(const RowBlock &block, uint32_t key) { KeyRows(block, key, LoadTriple); }

void KeyFrom8(const RowBlock &block, const uint32_t *palette, uint32_t key) {
    KeyRows(block, key, [palette](const uint8_t *row, int64_t i) { return palette[row[i]] & kColourBits; });
}

void Key24(const RowBlock &block, uint32_t key) {
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.width; ++i) {
            if (LoadTriple(source, i) != key) std::memcpy(target + 3 * i, source + 3 * i, 3);
        }
    }
}

void PackTo24(const RowBlock &block) {
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.width; ++i) {
            target[3 * i] = source[4 * i];
            target[3 * i + 1] = source[4 * i + 1];
            target[3 * i + 2] = source[4 * i + 2];
        }
    }
}

void Scale32(const ScaledRows &rows) {
    uint8_t *target = rows.target;
    for (const int32_t line : rows.lines) {
        const uint8_t *source = rows.source + line * rows.sourcePitch;
        for (size_t i = 0; i < rows.columns.size(); ++i) {
            std::memcpy(target + 4 * i, source + 4 * int64_t{rows.columns[i]}, 4);
        }
        target += rows.targetPitch;
    }
}

void CopyMarked32(uint8_t *target, const uint8_t *source, std::span<const uint64_t> marks) {
    for (size_t i = 0; i < marks.size(); ++i) {
        uint64_t word = marks[i];
        while (word != 0) {
            const int first = std::countr_zero(word);
            const int length = std::countr_one(word >> first);
            const size_t offset = 4 * (64 * i + static_cast<size_t>(first));
            std::memcpy(target + offset, source + offset, static_cast<size_t>(length) * 4);
            if (first + length == 64) break;
            word &= ~uint64_t{0} << (first + length);
        }
    }
}

#if defined(__x86_64__)
constexpr RowKernels kSse4Kernels{"sse4",   80,    CopyBytes, KeyFrom32Sse4, KeyFrom24Sse4,
                                  KeyFrom8, Key24, PackTo24,  Scale32,       CopyMarked32};
#endif

std::atomic<const RowKernels *> chosenKernels{nullptr};

// What this processor has, from the plainest to the best.
struct KernelList {
    std::array<const RowKernels *, 4> kernels{&kPlainKernels};
    size_t count = 1;
};

KernelList FindKernels() {
    KernelList list;
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt"))
        list.kernels[list.count++] = &kSse4Kernels;
    const bool hasAvx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
    if (hasAvx2) list.kernels[list.count++] = &kAvx2Kernels;
    if (hasAvx2 && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi")) {
        list.kernels[list.count++] = &kAvx512Kernels;
    }
#endif
    return list;
}

}  // namespace

const RowKernels kPlainKernels{"plain",  80,    CopyBytes, KeyFrom32, KeyFrom24,
                               KeyFrom8, Key24, PackTo24,  Scale32,   CopyMarked32};

std::span<const RowKernels *const> AvailableKernels() noexcept {
    static const KernelList list = FindKernels();
    return {list.kernels.data(), list.count};
}

// Two threads may both choose at first; they choose the same.
const RowKernels &Kernels() noexcept {
    const RowKernels *kernels = chosenKernels.load(std::memory_order_relaxed);
    if (kernels == nullptr) {
        kernels = AvailableKernels().back();
        chosenKernels.store(kernels, std::memory_order_relaxed);
    }
    return *kernels;
}

void ForceKernels(const RowKernels *kernels) noexcept {
    chosenKernels.store(kernels, std::memory_order_relaxed);
}

}  // namespace fenlight::platform
