// SPDX-License-Identifier: Zlib
#include "fx/blends/water.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "fenlight/fx_blends.h"
#include "fx/blends/wave_tables.h"

namespace fenlight {
namespace {

// Of the whole process. Touched only by the two functions that take a start.
std::atomic<int32_t> wavePhase{0};
std::atomic<int32_t> rowStepPhase{0};

// Addresses below are no table but the number that asks for the default.
constexpr uintptr_t kFirstTableAddress = 16;

// So many pixels at both ends of a row keep to their places.
constexpr int64_t kEndPixels = 5;
constexpr int64_t kEndBytes = kFXPixelBytes * kEndPixels;

// Half a shift, towards the right: 5, 3, 2, 1 but -5, -2, 0.
constexpr int64_t Calm(int64_t shift) { return (shift + 1) / 2; }

constexpr int64_t ShiftOfRow(int64_t entry, int64_t row) {
    for (const int64_t calmEnd : {64, 32, 16})
        if (row < calmEnd) entry = Calm(entry);
    return entry;
}

void ClearBytes(uint8_t *bytes, int64_t count) { std::memset(bytes, 0, static_cast<size_t>(count)); }

void MoveBytes(uint8_t *target, const uint8_t *source, int64_t count) {
    std::memmove(target, source, static_cast<size_t>(count));
}

// Black where a shifted row leaves more room than the pixels at its ends fill.
void ClearGap(uint8_t *row, int64_t width, int64_t shift) {
    if (std::abs(shift) <= kEndPixels) return;
    const int64_t first = shift > 0 ? kEndPixels : std::max(kEndPixels, width + shift);
    const int64_t end = shift > 0 ? shift : width;
    ClearBytes(row + kFXPixelBytes * first, kFXPixelBytes * (end - first));
}

// `target` may be `source`. The ends of a row of less than ten pixels overlap: the right one wins.
void ShiftRow(uint8_t *target, const uint8_t *source, int64_t width, int64_t shift) {
    const int64_t bytes = kFXPixelBytes * width;
    if (width <= kEndPixels || shift == 0) {
        if (target != source) MoveBytes(target, source, bytes);
        return;
    }
    uint8_t rowEnd[kEndBytes];
    std::memcpy(rowEnd, source + bytes - kEndBytes, kEndBytes);
    if (target != source) std::memcpy(target, source, kEndBytes);
    const int64_t toRight = kFXPixelBytes * std::max(shift, int64_t{0});
    const int64_t toLeft = kFXPixelBytes * std::max(-shift, int64_t{0});
    MoveBytes(target + toRight, source + toLeft, bytes - toRight - toLeft);
    ClearGap(target, width, shift);
    std::memcpy(target + bytes - kEndBytes, rowEnd, kEndBytes);
}

// Makes row `row` of a frame in `target` out of a picture, which may be the frame.
void MakeRow(const BufferRows<2> &walk, const WaterPlan &plan, int64_t row) {
    uint8_t *target = walk.Row(row, 0);
    const int64_t source = plan.sources == nullptr ? row : plan.sources[row];
    if (source >= walk.rows) return ClearBytes(target, walk.pitches[0]);
    ShiftRow(target, walk.Row(source, 1), walk.width, plan.shifts[source]);
}

void ClearFrom(const BufferRows<2> &walk, const FXHeader &fx, int64_t row) {
    const int64_t done = row * walk.pitches[0];
    ClearBytes(walk.starts[0] + done, fx.biSizeImage - done);
}

BufferRows<2> WalkInto(uint8_t *frame, const FXHeader &fx) {
    BufferRows<2> walk = WalkRows(fx, fx);
    walk.starts[0] = frame;
    return walk;
}

}  // namespace

Wave WaveOf(const int32_t *table) noexcept {
    if (reinterpret_cast<uintptr_t>(table) < kFirstTableAddress) table = kDefaultWave.data();
    int32_t count = 0;
    while (count < kMostWaveEntries && table[count] != kWaveEnd) ++count;
    return {table, count};
}

int32_t TakeWaveStart(int32_t count) noexcept {
    int32_t before = wavePhase.load(std::memory_order_relaxed), phase = 0;
    do {
        // A table before may have been longer.
        phase = before > 0 ? std::min(before - 1, count) : count;
    } while (!wavePhase.compare_exchange_weak(before, phase, std::memory_order_relaxed));
    return phase == count ? 0 : phase + 1;
}

int32_t TakeRowStepStart() noexcept {
    int32_t before = rowStepPhase.load(std::memory_order_relaxed), start = 0;
    do {
        // The last entry is never the first of a frame.
        start = before + 1 < static_cast<int32_t>(kRowSteps) ? before : 0;
    } while (!rowStepPhase.compare_exchange_weak(before, start + 1, std::memory_order_relaxed));
    return start;
}

void PlanShifts(int32_t *shifts, int64_t rows, int64_t width, const Wave &wave, int32_t start) noexcept {
    int32_t at = start;
    for (int64_t row = 0; row < rows; ++row) {
        // The end of the table counts as a row without a shift.
        const bool isEnd = at == wave.count;
        const int64_t shift = isEnd ? 0 : ShiftOfRow(wave.entries[at], row);
        shifts[row] = static_cast<int32_t>(std::clamp(shift, -width, width));
        at = isEnd ? 0 : at + 1;
    }
}

int64_t PlanSources(int32_t *sources, const FXHeader &fx, int64_t rows, int32_t calmRows,
                    int32_t start) noexcept {
    const int64_t rowBytes = kFXPixelBytes * fx.biWidth;
    const int64_t lastSource = (fx.biSizeImage + rowBytes - 1) / rowBytes - 1;
    auto at = static_cast<size_t>(start);
    int64_t source = 0, filled = 0;
    while (filled < rows) {
        sources[filled++] = static_cast<int32_t>(source);
        // Behind its end the table goes on with the first entry, which then comes once more.
        const bool isEnd = at == kRowSteps;
        const uint8_t step = kRowStep[isEnd ? 0 : at];
        at = isEnd ? 0 : at + 1;
        source += filled < calmRows ? 1 : step;
        if (source >= lastSource) break;
    }
    return filled;
}

void MakeFrame(uint8_t *frame, const FXHeader &fx, const WaterPlan &plan) noexcept {
    const BufferRows<2> walk = WalkInto(frame, fx);
    for (int64_t row = 0; row < plan.filled; ++row) MakeRow(walk, plan, row);
    ClearFrom(walk, fx, plan.filled);
}

// Rows that come from below are made downwards, so that what they read still stands. The others are made
// upwards for the same reason, one stretch at a time: it begins with a row that comes from its own place, and
// none in it comes from above that, so nothing is read that has been made before.
void MoveWithin(const FXHeader &fx, const WaterPlan &plan) noexcept {
    const BufferRows<2> walk = WalkInto(fx.Pixels, fx);
    for (int64_t row = 0; row < plan.filled;) {
        int64_t end = row;
        while (end < plan.filled && plan.sources[end] <= end) ++end;
        for (int64_t upwards = end; upwards > row;) MakeRow(walk, plan, --upwards);
        if (end == row) MakeRow(walk, plan, end++);
        row = end;
    }
    ClearFrom(walk, fx, plan.filled);
}

namespace {

// Without memory for the sources of the rows the shifts alone are the frame, and it is only painted.
void MoveWater(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, const Wave &wave, int32_t calmRows) {
    const int64_t rows = WalkRows(fx).rows;
    const int64_t listBytes = rows * static_cast<int64_t>(sizeof(int32_t));
    const int32_t waveStart = TakeWaveStart(wave.count);
    const int64_t frameBytes = dc != 0 ? (int64_t{fx.biSizeImage} + 3) / 4 * 4 : 0;
    const PixelBlock frame(frameBytes + listBytes);
    if (!frame) return;
    auto *shifts = reinterpret_cast<int32_t *>(frame.Bytes() + frameBytes);
    PlanShifts(shifts, rows, fx.biWidth, wave, waveStart);

    const int32_t stepStart = TakeRowStepStart();
    const PixelBlock sourceList(listBytes);
    auto *sources = reinterpret_cast<int32_t *>(sourceList.Bytes());
    WaterPlan plan{shifts, sources, rows};
    if (sourceList) plan.filled = PlanSources(sources, fx, rows, calmRows, stepStart);

    if (dc == 0 && sourceList) MoveWithin(fx, plan);
    if (dc == 0) return;
    MakeFrame(frame.Bytes(), fx, plan);
    PaintFX(dc, x, y, fx, frame.Bytes());
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Water(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, const int32_t *waveTable,
              int32_t calmRows) noexcept {
    if (fx == 0 || WalkRows(*FXFromHandle(fx)).rows == 0) return 0;
    MoveWater(dc, x, y, *FXFromHandle(fx), WaveOf(waveTable), calmRows);
    return 0;
}
