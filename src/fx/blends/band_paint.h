// SPDX-License-Identifier: Zlib
// The closing paint of an effect whose outcome nobody else needs: made band by band in memory that stays in
// the cache, and painted from there, all in one transfer under the lock of the context's picture.
#pragma once

#include <algorithm>
#include <cstdint>

#include "fx/fx_buffer.h"
#include "platform/graphics/surface_access.h"
#include "platform/graphics/surface_painting.h"

namespace fenlight {

// A stretch of a picture's columns or rows.
struct PaintSpan {
    int64_t first, end;
};

// The part of `size` pixels, painted from `start` on, that lies on a target of `targetSize`.
constexpr PaintSpan ClipPaint(int64_t start, int64_t size, int64_t targetSize) {
    return {std::max(-start, int64_t{0}), std::min(size, targetSize - start)};
}

// A few rows and what they are made of fit the nearest caches.
inline constexpr int64_t kBandBytes = 16384;

// make(bytes, first, count) puts `count` bytes of the outcome, from the `first` on, into `bytes`. False where
// this way is closed, and nothing has been done: only contexts of 32 bits and blocks of whole padded rows
// have it. Without memory nothing is painted.
template <typename Make>
bool PaintInBands(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, Make make) {
    const int64_t pitch = PaddedRowBytes(fx.biWidth);
    if (fx.biWidth < 1 || fx.biSizeImage < pitch * fx.biHeight) return false;
    const int64_t bandRows = std::max(kBandBytes / pitch, int64_t{1});
    const PixelBlock band(bandRows * pitch);
    if (!band) return true;
    platform::SurfaceAccess surface(dc);
    if (!surface) return true;
    const platform::PixelView &view = surface.View();
    if (view.format != platform::PixelFormat::Bgrx32) return false;

    const PaintSpan columns = ClipPaint(x, fx.biWidth, view.width);
    const PaintSpan rows = ClipPaint(y, fx.biHeight, view.height);
    if (columns.first >= columns.end) return true;
    for (int64_t row = rows.first; row < rows.end; row += bandRows) {
        const int64_t height = std::min(bandRows, rows.end - row);
        make(band.Bytes(), row * pitch, height * pitch);
        platform::PixelView pixels;
        pixels.topRow = band.Bytes();
        pixels.pitch = static_cast<ptrdiff_t>(pitch);
        pixels.width = fx.biWidth;
        pixels.height = static_cast<int32_t>(height);
        pixels.format = platform::PixelFormat::Bgr24;
        platform::PaintOnSurface(view, x, static_cast<int32_t>(y + row), pixels);
    }
    surface.MarkChanged();
    return true;
}

}  // namespace fenlight
