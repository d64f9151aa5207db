// SPDX-License-Identifier: Zlib
#include <cstring>

#include "fenlight/fx_smoothing.h"
#include "fx/smoothing/masked_walk.h"

namespace fenlight {

void ClearMaskBorder(const FXHeader &mask) noexcept {
    const BufferRows<1> rows = WalkRows(mask);
    const auto pitch = static_cast<size_t>(rows.pitches[0]);
    for (int64_t row = 0; row < rows.rows; ++row) {
        if (row == 0 || row == rows.rows - 1) {
            std::memset(rows.Row(row), 0, pitch);
        } else {
            std::memset(rows.Row(row), 0, kFXPixelBytes);
            std::memset(rows.Row(row) + pitch - kFXPixelBytes, 0, kFXPixelBytes);
        }
    }
}

namespace {

// False without memory.
bool SmoothPicture(const FXHeader &fx, const FXHeader &mask) {
    const MaskedWalk walk(fx, WalkBytes(fx, mask).count);
    if (!walk) return false;
    ClearMaskBorder(mask);
    const SmoothingKernels &kernels = ChooseSmoothingKernels();
    walk.ForEachPiece(kernels, [&](int64_t first, const SumRows &sums, int64_t count) {
        kernels.smoothMasked(fx.Pixels + first, mask.Pixels + first, sums, count);
    });
    return true;
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Smooth(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t mask) noexcept {
    if (fx == 0 || mask == 0) return 0;
    const FXHeader &picture = *FXFromHandle(fx);
    if (SmoothPicture(picture, *FXFromHandle(mask))) PaintFX(dc, x, y, picture, picture.Pixels);
    return 0;
}
