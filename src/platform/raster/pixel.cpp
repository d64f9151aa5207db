// SPDX-License-Identifier: Zlib
#include "platform/raster/colour_conversion.h"
#include "platform/raster/raster.h"
#include "platform/raster/row_values.h"

namespace fenlight::platform {

COLORREF ReadPixel(const PixelView &view, int32_t x, int32_t y) noexcept {
    return SwapRedBlue(ColourOfValue(view, LoadValue(view.format, view.Row(y), x)));
}

void WritePixel(const PixelView &view, int32_t x, int32_t y, COLORREF colour) noexcept {
    StoreValue(view.format, view.Row(y), x, MatchColour(view, SwapRedBlue(colour)));
}

COLORREF NearestColour(const PixelView &view, COLORREF colour) noexcept {
    return SwapRedBlue(ColourOfValue(view, MatchColour(view, SwapRedBlue(colour))));
}

}  // namespace fenlight::platform
