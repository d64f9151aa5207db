// SPDX-License-Identifier: Zlib
// The row loops that matter for speed, in one version for every machine and others for what a processor may
// have. The table is chosen once, at the first transfer; only tests choose another. A kernel sees memory and
// sizes, nothing else: the blocks have been clipped and do not overlap within a row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fenlight::platform {

// `rows` rows of `width` pixels; for CopyBytes the width is in bytes. A walk from the bottom up has both
// pointers at the last row and both pitches negated.
struct RowBlock {
    uint8_t *target;
    ptrdiff_t targetPitch;
    const uint8_t *source;
    ptrdiff_t sourcePitch;
    int64_t width;
    int64_t rows;
};

// Scaled rows of 32-bit pixels: target pixel i takes source pixel columns[i] of its row, target row j takes
// source row lines[j]. Columns rise, or fall where the picture is mirrored.
struct ScaledRows {
    uint8_t *target;
    ptrdiff_t targetPitch;
    const uint8_t *source;
    ptrdiff_t sourcePitch;
    std::span<const int32_t> columns;
    std::span<const int32_t> lines;
    int32_t sourceWidth;  // pixels of a source row; nothing behind them is read
    int64_t reach8;       // the most source pixels that 8 neighbours of the target span
    int64_t reach16;      // the same for 16
    bool isStreamed;      // the target is too big for the caches
};

struct RowKernels {
    const char *name;
    // From this share of their bounds on, rectangles are copied faster as a union of marked pixels than each
    // for itself: below it they hardly meet, and what is copied twice is still in the cache then. Measured
    // with random 32x32 rectangles on 1024x768.
    int64_t unionPercent;
    void (*copyBytes)(const RowBlock &block);
    // To 32-bit rows, but for the pixels whose low 24 bits are `key`; kNoColour as the key copies all. The
    // unused byte of a 32-bit source goes along, from other formats it becomes 0.
    void (*keyFrom32)(const RowBlock &block, uint32_t key);
    void (*keyFrom24)(const RowBlock &block, uint32_t key);
    void (*keyFrom8)(const RowBlock &block, const uint32_t *palette, uint32_t key);
    // Between 24-bit rows.
    void (*key24)(const RowBlock &block, uint32_t key);
    // From 32-bit rows to 24-bit ones.
    void (*packTo24)(const RowBlock &block);
    void (*scale32)(const ScaledRows &rows);
    // The 32-bit pixels whose bit is set; bit 0 of the first word is the first pixel.
    void (*copyMarked32)(uint8_t *target, const uint8_t *source, std::span<const uint64_t> marks);
};

const RowKernels &Kernels() noexcept;
// Every version that this processor can run, the plain one first.
std::span<const RowKernels *const> AvailableKernels() noexcept;
// For tests and benchmarks; null returns to the choice by processor.
void ForceKernels(const RowKernels *kernels) noexcept;

extern const RowKernels kPlainKernels;
#if defined(__x86_64__)
extern const RowKernels kAvx2Kernels;
extern const RowKernels kAvx512Kernels;
#endif

}  // namespace fenlight::platform
