// SPDX-License-Identifier: Zlib
#include "fx/geometry/mirrors.h"

#include "fenlight/fx_geometry.h"
#include "fx/geometry/geometry_kernels.h"
#include "fx/pixel_walks.h"

namespace fenlight {

void MirrorRows(const FXHeader &fx) noexcept {
    const auto turnPixels = CurrentGeometryKernels().turnPixels;
    ForEachRow(WalkRows(fx),
               [=](uint8_t *row, int64_t width) { turnPixels(row, row + kFXPixelBytes * width); });
}

void MirrorColumns(const FXHeader &fx) noexcept {
    const auto swapBytes = CurrentGeometryKernels().swapBytes;
    const BufferRows<1> rows = WalkRows(fx);
    const int64_t rowBytes = kFXPixelBytes * rows.width;
    for (int64_t row = 0; row < rows.rows / 2; ++row)
        swapBytes(rows.Row(row), fx.Pixels + fx.biSizeImage - (row + 1) * rowBytes, rowBytes);
}

void TurnHalf(const FXHeader &fx) noexcept {
    if (fx.biSizeImage < kFXPixelBytes) return;
    CurrentGeometryKernels().turnPixels(fx.Pixels, fx.Pixels + fx.biSizeImage);
}

}  // namespace fenlight

using namespace fenlight;

int32_t FlipX(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    return ChangeAndPaint(dc, x, y, fx, MirrorRows);
}

int32_t FlipY(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    return ChangeAndPaint(dc, x, y, fx, MirrorColumns);
}

int32_t Rotate180(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    return ChangeAndPaint(dc, x, y, fx, TurnHalf);
}
