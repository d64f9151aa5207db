// SPDX-License-Identifier: Zlib
// Two pictures as one: by a percentage, under a mask, and laid over each other.
#include <algorithm>
#include <cstring>

#include "fenlight/fx_blends.h"
#include "fx/array_blit.h"
#include "fx/blends/band_paint.h"
#include "fx/blends/blend_kernels.h"
#include "fx/pixel_walks.h"

namespace fenlight {
namespace {

// Percent of 256, but never 256 itself.
constexpr uint8_t AmountOfPercent(int32_t percent) {
    return static_cast<uint8_t>(std::min(256 * percent / 100, 255));
}

// Bytes of an outcome from the `first` on, for as long as the walk over its pictures goes, and then black.
template <size_t Buffers, typename Blend>
void MakeBytes(uint8_t *result, BufferRun<Buffers> run, int64_t first, int64_t count, Blend blend) {
    const int64_t walked = std::clamp(run.count - first, int64_t{0}, count);
    for (uint8_t *&start : run.starts) start += walked > 0 ? first : 0;
    blend(result, run.starts, walked);
    std::memset(result + walked, 0, static_cast<size_t>(count - walked));
}

// make(bytes, first, count), then the paint of what was made. Nothing where there is no memory for it.
template <typename Make>
void PaintOutcome(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, Make make) {
    if (PaintInBands(dc, x, y, fx, make)) return;
    const PixelBlock outcome(fx.biSizeImage);
    if (!outcome) return;
    make(outcome.Bytes(), 0, fx.biSizeImage);
    PaintFX(dc, x, y, fx, outcome.Bytes());
}

// Which neighbours are looked at depends on how far a pixel lies from both ends of the block.
EdgeMerge PlanEdges(const FXHeader &fx, const FXHeader &target, uint32_t key) {
    const int64_t row = kFXPixelBytes * fx.biWidth, last = int64_t{fx.biSizeImage} - 1;
    // The first pixel that begins behind a byte, and the first that begins there or later.
    const auto behind = [](int64_t offset) { return offset / 3 + 1; };
    const auto from = [](int64_t offset) { return offset <= 0 ? 0 : (offset + 2) / 3; };
    return {.target = target.Pixels,
            .source = fx.Pixels,
            .count = WalkPixels(fx, target).count,
            .sourcePixels = fx.biSizeImage / 3,
            .width = fx.biWidth,
            .key = key,
            .leftFrom = behind(row + 3),
            .aboveFrom = behind(row),
            .rightEnd = from(last - row - 5),
            .belowEnd = from(last - row - 2)};
}

// All pixels as one row, so that the widths of the two buffers play no part.
FXHeader AsOneRow(const FXHeader &fx, int64_t pixels) {
    FXHeader row = fx;
    row.biWidth = static_cast<int32_t>(pixels);
    row.biHeight = 1;
    return row;
}

constexpr int32_t kTreatEdges = 1;
constexpr int32_t kLeaveEdgesOut = 2;  // else they are averaged

void MergePictures(const FXHeader &fx, const FXHeader &target, int32_t flags) {
    if (fx.biSizeImage < kFXPixelBytes) return;
    const uint8_t *key = fx.Pixels + fx.biSizeImage - kFXPixelBytes;
    if ((flags & kTreatEdges) == 0) {
        const int64_t count = WalkPixels(fx, target).count;
        const ArrayRectangle all{0, 0, static_cast<int32_t>(count), 1, 0, 0};
        return CopyArrayKeyed(AsOneRow(target, count), AsOneRow(fx, count), all, ColourOfPixel(key));
    }
    const uint32_t keyBytes = key[0] | uint32_t{key[1]} << 8 | uint32_t{key[2]} << 16;
    const EdgeRule rule = (flags & kLeaveEdgesOut) != 0 ? EdgeRule::Keep : EdgeRule::Average;
    ChooseBlends().mergeEdges(PlanEdges(fx, target, keyBytes), rule);
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t SemiTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                  int32_t percent) noexcept {
    if (dc == 0 || fx == 0 || other == 0) return 0;
    const FXHeader &first = *FXFromHandle(fx);
    const int32_t share = std::clamp(percent, 0, 100);
    const FadeAmounts amounts{AmountOfPercent(share), AmountOfPercent(100 - share)};
    const auto fade = [&](uint8_t *result, const auto &starts, int64_t count) {
        ChooseBlends().fade(result, starts[0], starts[1], count, amounts);
    };
    const BufferRun<2> run = WalkBytes(first, *FXFromHandle(other));
    PaintOutcome(dc, x, y, first, [&](uint8_t *result, int64_t from, int64_t count) {
        MakeBytes(result, run, from, count, fade);
    });
    return 0;
}

int32_t AlphaTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                   uintptr_t mask) noexcept {
    if (fx == 0 || other == 0 || mask == 0) return 0;
    const FXHeader &first = *FXFromHandle(fx);
    const BufferRun<3> run = WalkBytes(first, *FXFromHandle(other), *FXFromHandle(mask));
    const auto mix = [](uint8_t *result, const auto &starts, int64_t count) {
        ChooseBlends().mix(result, starts[0], starts[1], starts[2], count);
    };
    const auto make = [&](uint8_t *result, int64_t from, int64_t count) {
        MakeBytes(result, run, from, count, mix);
    };
    if (dc == 0)
        make(first.Pixels, 0, first.biSizeImage);
    else
        PaintOutcome(dc, x, y, first, make);
    return 0;
}

void Merge(uintptr_t fx, uintptr_t target, int32_t flags) noexcept {
    if (fx == 0 || target == 0 || fx == target) return;
    MergePictures(*FXFromHandle(fx), *FXFromHandle(target), flags);
}
