// SPDX-License-Identifier: Zlib
// How effects reach the pixels of FX buffers. An effect works on one of three views and knows nothing of
// padding:
//
//   WalkBytes   every byte of the block, padding included, as one run;
//   WalkPixels  the first width * height groups of three bytes, as one run;
//   WalkRows    rows that begin every 3 * width bytes.
//
// At widths that are multiples of 4 the three agree. At others the last two drift across the rows of a padded
// buffer; that is part of what the effects are defined to do, and they stay inside the block.
//
// Several buffers are walked side by side, as far as the smallest of them goes. A run is what vector code
// wants: a few addresses and one count. Nothing here owns anything or takes a lock.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fx/fx_buffer.h"

namespace fenlight {

// `count` bytes or pixels of each buffer, from starts[i] on.
template <size_t Buffers>
struct BufferRun {
    std::array<uint8_t *, Buffers> starts;
    int64_t count;
};

// `rows` rows of `width` pixels of each buffer. Each keeps the pitch of its own width.
template <size_t Buffers>
struct BufferRows {
    std::array<uint8_t *, Buffers> starts;
    std::array<int64_t, Buffers> pitches;  // bytes
    int64_t width;
    int64_t rows;

    uint8_t *Row(int64_t row, size_t buffer = 0) const { return starts[buffer] + row * pitches[buffer]; }

    // Without the outermost `ring` pixels on all four sides, for filters that look that far: the pixels
    // around may be read. Empty where nothing is left.
    BufferRows Inner(int64_t ring) const {
        BufferRows inner = *this;
        const bool isEmpty = width <= 2 * ring || rows <= 2 * ring;
        inner.width = isEmpty ? 0 : width - 2 * ring;
        inner.rows = isEmpty ? 0 : rows - 2 * ring;
        for (size_t i = 0; i < Buffers && !isEmpty; ++i)
            inner.starts[i] += ring * (pitches[i] + kFXPixelBytes);
        return inner;
    }
};

namespace detail {

inline int64_t PixelsOf(const FXHeader &fx) {
    const int64_t pixels = fx.biWidth > 0 && fx.biHeight > 0 ? int64_t{fx.biWidth} * fx.biHeight : 0;
    return std::min(pixels, fx.biSizeImage / kFXPixelBytes);
}

}  // namespace detail

template <std::same_as<FXHeader>... Headers>
BufferRun<sizeof...(Headers)> WalkBytes(const Headers &...fx) {
    return {{fx.Pixels...}, std::min({int64_t{fx.biSizeImage}...})};
}

// The count is one of pixels.
template <std::same_as<FXHeader>... Headers>
BufferRun<sizeof...(Headers)> WalkPixels(const Headers &...fx) {
    return {{fx.Pixels...}, std::min({detail::PixelsOf(fx)...})};
}

template <std::same_as<FXHeader>... Headers>
BufferRows<sizeof...(Headers)> WalkRows(const Headers &...fx) {
    const int64_t width = std::min({int64_t{std::max(fx.biWidth, 0)}...});
    const int64_t rows = width > 0 ? std::min({detail::PixelsOf(fx) / fx.biWidth...}) : 0;
    return {{fx.Pixels...}, {kFXPixelBytes * fx.biWidth...}, width, rows};
}

// The same rows in a block of the effect's own that holds what the buffer `fx` holds.
inline BufferRows<1> WalkRowsIn(const FXHeader &fx, uint8_t *block) {
    BufferRows<1> rows = WalkRows(fx);
    rows.starts[0] = block;
    return rows;
}

// action(first row, ..., width) for each row from the first to the last; one row of each buffer.
template <size_t Buffers, typename Action>
void ForEachRow(const BufferRows<Buffers> &walk, Action action) {
    for (int64_t row = 0; row < walk.rows; ++row) {
        [&]<size_t... I>(std::index_sequence<I...>) { action(walk.Row(row, I)..., walk.width); }
        (std::make_index_sequence<Buffers>());
    }
}

// A pixel as the platform writes a colour: 0x00BBGGRR.
constexpr COLORREF ColourOfPixel(const uint8_t *pixel) {
    return COLORREF{pixel[0]} << 16 | COLORREF{pixel[1]} << 8 | pixel[2];
}

// The frame of an effect that works in place: change(header), then the closing paint. The result of the
// exported call, 0, also for the handle 0, which changes nothing.
template <typename Change>
int32_t ChangeAndPaint(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, Change change) {
    if (fx == 0) return 0;
    const FXHeader &header = *FXFromHandle(fx);
    change(header);
    PaintFX(dc, x, y, header, header.Pixels);
    return 0;
}

}  // namespace fenlight
