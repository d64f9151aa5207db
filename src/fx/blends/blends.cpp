// SPDX-License-Identifier: Zlib
// Two pictures as one: by a percentage, under a mask, and laid over each other.
#include <algorithm>
#include <cstring>

#include "fenlight/fx_blends.h"
#include "fx/array_blit.h"
#include "fx/blends/blend_kernels.h"
#include "fx/pixel_walks.h"

namespace fenlight {
namespace {

// Percent of 256, but never 256 itself.
constexpr uint8_t AmountOfPercent(int32_t percent) {
    return static_cast<uint8_t>(std::min(256 * percent / 100, 255));
}

void ClearRest(uint8_t *pixels, const FXHeader &fx, int64_t done) {
    std::memset(pixels + done, 0, static_cast<size_t>(fx.biSizeImage - done));
}

void Fade(uint8_t *result, const FXHeader &fx, const FXHeader &other, int32_t percent) {
    const BufferRun<2> run = WalkBytes(fx, other);
    const FadeAmounts amounts{AmountOfPercent(percent), AmountOfPercent(100 - percent)};
    ChooseBlends().fade(result, run.starts[0], run.starts[1], run.count, amounts);
    ClearRest(result, fx, run.count);
}

void Mix(uint8_t *result, const FXHeader &fx, const FXHeader &other, const FXHeader &mask) {
    const BufferRun<3> run = WalkBytes(fx, other, mask);
    ChooseBlends().mix(result, run.starts[0], run.starts[1], run.starts[2], run.count);
    ClearRest(result, fx, run.count);
}

// blend(block), then the paint of that block. Nothing where there is no memory for it.
template <typename Blend>
void PaintResult(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, Blend blend) {
    const PixelBlock result(fx.biSizeImage);
    if (!result) return;
    blend(result.Bytes());
    PaintFX(dc, x, y, fx, result.Bytes());
}

// Which neighbours are looked at depends on how far a pixel lies from both ends of the block.
EdgeMerge PlanEdges(const FXHeader &fx, const FXHeader &target, uint32_t key) {
    const int64_t row = kFXPixelBytes * fx.biWidth, last = int64_t{fx.biSizeImage} - 1;
    // The first pixel that begins behind a byte, and the first that begins there or later.
    const auto behind = [](int64_t offset) { return offset / 3 + 1; };
    const auto from = [](int64_t offset) { return offset <= 0 ? 0 : (offset + 2) / 3; };
    EdgeMerge merge{target.Pixels,
                    fx.Pixels,
                    WalkPixels(fx, target).count,
                    fx.biSizeImage / 3,
                    fx.biWidth,
                    key,
                    0,
                    0,
                    0,
                    0};
    merge.leftFrom = behind(row + 3);
    merge.aboveFrom = behind(row);
    merge.rightEnd = from(last - row - 5);
    merge.belowEnd = from(last - row - 2);
    return merge;
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
    const FXHeader &first = *FXFromHandle(fx), &second = *FXFromHandle(other);
    const int32_t share = std::clamp(percent, 0, 100);
    PaintResult(dc, x, y, first, [&](uint8_t *result) { Fade(result, first, second, share); });
    return 0;
}

int32_t AlphaTrans(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t other,
                   uintptr_t mask) noexcept {
    if (fx == 0 || other == 0 || mask == 0) return 0;
    const FXHeader &first = *FXFromHandle(fx), &second = *FXFromHandle(other), &third = *FXFromHandle(mask);
    const auto mix = [&](uint8_t *result) { Mix(result, first, second, third); };
    if (dc == 0)
        mix(first.Pixels);
    else
        PaintResult(dc, x, y, first, mix);
    return 0;
}

void Merge(uintptr_t fx, uintptr_t target, int32_t flags) noexcept {
    if (fx == 0 || target == 0 || fx == target) return;
    MergePictures(*FXFromHandle(fx), *FXFromHandle(target), flags);
}
