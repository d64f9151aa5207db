// SPDX-License-Identifier: Zlib
#include <cstring>

#include "fx/fx_buffer.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

// A header of the caller's is never turned over to say "from the top": another thread may be reading it.
void DrawPaddedRows(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, const uint8_t *pixels) {
    platform::PixelView view;
    view.topRow = const_cast<uint8_t *>(pixels);
    view.pitch = static_cast<ptrdiff_t>(PaddedRowBytes(fx.biWidth));
    view.width = fx.biWidth;
    view.height = fx.biHeight;
    view.format = platform::PixelFormat::Bgr24;
    platform::DrawPixels(dc, x, y, view);
}

// Packed rows at a width that is no multiple of 4 end before padded ones would.
void DrawShortBlock(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, const uint8_t *pixels) {
    const int64_t wanted = PaddedRowBytes(fx.biWidth) * fx.biHeight;
    const PixelBlock whole(wanted);
    if (!whole) return;
    std::memcpy(whole.Bytes(), pixels, fx.biSizeImage);
    std::memset(whole.Bytes() + fx.biSizeImage, 0, static_cast<size_t>(wanted - fx.biSizeImage));
    DrawPaddedRows(dc, x, y, fx, whole.Bytes());
}

}  // namespace

void PaintFX(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, const uint8_t *pixels) noexcept {
    if (dc == 0 || fx.biWidth < 1 || fx.biHeight < 1) return;
    const int64_t lastRow = PaddedRowBytes(fx.biWidth) * (fx.biHeight - 1);
    const bool isWhole = fx.biSizeImage >= lastRow + kFXPixelBytes * fx.biWidth;
    (isWhole ? DrawPaddedRows : DrawShortBlock)(dc, x, y, fx, pixels);
}

}  // namespace fenlight

using namespace fenlight;

int32_t CopyFX(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    if (fx != 0) PaintFX(dc, x, y, *FXFromHandle(fx), FXFromHandle(fx)->Pixels);
    return 0;
}
