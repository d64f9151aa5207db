// SPDX-License-Identifier: Zlib
// Blur in place. A byte takes the new value of its left neighbour and of the one above, so every row is one
// long chain of additions and shifts. Several rows run in step, each a pixel behind the one above: what the
// row above made one step before is then what the row below needs, and the chains hide each other's latency.
// All that is known beforehand is added by vectors.
#include <algorithm>
#include <cstring>

#include "fenlight/fx_smoothing.h"
#include "fx/pixel_walks.h"
#include "fx/smoothing/smoothing_kernels.h"

namespace fenlight {
namespace {

constexpr int kRowsInStep = 4;

// A pixel's bytes in the 16-bit lanes of a word. The fourth lane is the next pixel's first one, and never
// used.
using Lanes = uint64_t;
constexpr Lanes kByteOfEach = 0x00FF00FF00FF00FF;
constexpr int64_t kLanes = 4;

Lanes LoadLanes(const uint16_t *at) {
    Lanes lanes;
    std::memcpy(&lanes, at, sizeof lanes);
    return lanes;
}

Lanes LanesOfPixel(const uint8_t *pixel) {
    const uint16_t lanes[kLanes] = {pixel[0], pixel[1], pixel[2], 0};
    return LoadLanes(lanes);
}

// Sums of a few rows of `pixels` inner pixels, three lanes each. Behind them is a lane for the fourth; before
// them lies room for one pixel, since results are left one pixel to the left of their sums: there a fourth
// lane overwrites only what has been used.
struct SumBlock {
    uint16_t *lanes;
    int64_t pixels;

    static int64_t RowLanes(int64_t pixels) { return 3 + 3 * pixels + 1; }
    uint16_t *Results(int64_t row) const { return lanes + row * RowLanes(pixels); }
    uint16_t *Sums(int64_t row) const { return Results(row) + 3; }
};

template <int kRows>
struct Chains {
    SumBlock block;
    Lanes left[kRows];

    void Step(int64_t pixel, int row) {
        uint16_t *at = block.Sums(row) + 3 * pixel;
        const Lanes above = row > 0 ? left[row - 1] : 0;
        left[row] = (left[row] + above + LoadLanes(at)) >> 2 & kByteOfEach;
        std::memcpy(at - 3, &left[row], sizeof(Lanes));
    }
    // The lowest row first: it needs what the row above made one step ago.
    void StepAll(int64_t pixel) {
#pragma GCC unroll 8
        for (int row = kRows - 1; row >= 0; --row) Step(pixel - row, row);
    }
    void StepSome(int64_t pixel) {
        for (int row = kRows - 1; row >= 0; --row)
            if (pixel >= row && pixel - row < block.pixels) Step(pixel - row, row);
    }
};

template <int kRows>
void RunChains(Chains<kRows> chains) {
    const int64_t pixels = chains.block.pixels;
    int64_t pixel = 0;
    while (pixel < std::min<int64_t>(kRows - 1, pixels)) chains.StepSome(pixel++);
    while (pixel < pixels) chains.StepAll(pixel++);
    while (pixel < pixels + kRows - 1) chains.StepSome(pixel++);
}

// `inner` without the outermost ring, whose bytes are read.
template <int kRows>
void BlurRows(const BufferRows<1> &inner, int64_t first, uint16_t *lanes, const SmoothingKernels &kernels) {
    const int64_t count = 3 * inner.width;
    Chains<kRows> chains{{lanes, inner.width}, {}};
    for (int row = 0; row < kRows; ++row) {
        const uint8_t *bytes = inner.Row(first + row);
        const uint8_t *above = row == 0 ? bytes - inner.pitches[0] : nullptr;
        uint16_t *sums = chains.block.Sums(row);
        kernels.addBefore(sums, {above, bytes, bytes + inner.pitches[0]}, count);
        sums[count] = 0;
        chains.left[row] = LanesOfPixel(bytes - 3);
    }
    RunChains(chains);
    for (int row = 0; row < kRows; ++row)
        kernels.narrow(inner.Row(first + row), chains.block.Results(row), count);
}

// False without memory.
bool BlurPicture(const FXHeader &fx) {
    const BufferRows<1> inner = WalkRows(fx).Inner(1);
    if (inner.rows == 0) return true;
    const int64_t rowLanes = SumBlock::RowLanes(inner.width);
    const PixelBlock scratch(kRowsInStep * rowLanes * int64_t{sizeof(uint16_t)});
    if (!scratch) return false;
    auto *lanes = reinterpret_cast<uint16_t *>(scratch.Bytes());
    const SmoothingKernels &kernels = ChooseSmoothingKernels();
    int64_t row = 0;
    for (; row + kRowsInStep <= inner.rows; row += kRowsInStep)
        BlurRows<kRowsInStep>(inner, row, lanes, kernels);
    for (; row < inner.rows; ++row) BlurRows<1>(inner, row, lanes, kernels);
    return true;
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Blur(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    if (fx == 0) return 0;
    const FXHeader &picture = *FXFromHandle(fx);
    if (BlurPicture(picture)) PaintFX(dc, x, y, picture, picture.Pixels);
    return 0;
}
