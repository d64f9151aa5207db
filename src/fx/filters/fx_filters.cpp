// SPDX-License-Identifier: Zlib
#include "fenlight/fx_filters.h"

#include <algorithm>
#include <cstring>

#include "fx/filters/filter_kernels.h"
#include "fx/pixel_walks.h"

namespace fenlight {
namespace {

uint8_t ToByte(int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

// A colour's lowest byte is red, a pixel's first is blue; the highest byte of a colour plays no part.
PixelBytes PixelOfColour(COLORREF colour) {
    return {static_cast<uint8_t>(colour >> 16), static_cast<uint8_t>(colour >> 8),
            static_cast<uint8_t>(colour)};
}

// No step is longer than -255 to 255, and so its sign may be turned.
ColourShift ShiftOf(int32_t red, int32_t green, int32_t blue) {
    const auto lower = [](int32_t step) { return ToByte(-std::max(step, -255)); };
    return {{ToByte(blue), ToByte(green), ToByte(red)}, {lower(blue), lower(green), lower(red)}};
}

// A pixel of this sum is the darkest that turns white: (sum + 127) / 4 is told to reach the threshold.
int32_t LightSum(int32_t threshold) {
    return static_cast<int32_t>(std::clamp<int64_t>(4 * int64_t{threshold} - 127, 0, 766));
}

// What follows the last pixel of the walk is copied as it is.
void SplitToBlock(const FXHeader &fx, uint8_t *block, int32_t limit) {
    const auto [pixels, count] = WalkPixels(fx);
    ChooseFilters().split(block, pixels[0], count, limit);
    const int64_t walked = kFXPixelBytes * count;
    std::memcpy(block + walked, pixels[0] + walked, static_cast<size_t>(fx.biSizeImage - walked));
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Darken(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, int32_t amount) noexcept {
    return ChangeAndPaint(dc, x, y, fx, [=](const FXHeader &buffer) {
        const auto [bytes, count] = WalkBytes(buffer);
        ChooseFilters().darken(bytes[0], count, static_cast<uint8_t>(amount));
    });
}

int32_t Lighten(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, int32_t amount) noexcept {
    return ChangeAndPaint(dc, x, y, fx, [=](const FXHeader &buffer) {
        const auto [bytes, count] = WalkBytes(buffer);
        ChooseFilters().lighten(bytes[0], count, static_cast<uint8_t>(amount));
    });
}

int32_t Grey(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    return ChangeAndPaint(dc, x, y, fx, [](const FXHeader &buffer) {
        const auto [pixels, count] = WalkPixels(buffer);
        ChooseFilters().grey(pixels[0], count);
    });
}

// Without a context the pixels change in place and no block is needed.
int32_t BlackWhite(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, int32_t threshold) noexcept {
    if (fx == 0) return 0;
    const FXHeader &buffer = *FXFromHandle(fx);
    const int32_t limit = LightSum(threshold);
    if (dc == 0) {
        const auto [pixels, count] = WalkPixels(buffer);
        ChooseFilters().split(pixels[0], pixels[0], count, limit);
        return 0;
    }
    const PixelBlock block(buffer.biSizeImage);
    if (!block) return 0;
    SplitToBlock(buffer, block.Bytes(), limit);
    PaintFX(dc, x, y, buffer, block.Bytes());
    return 0;
}

int32_t Sharpen(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    return ChangeAndPaint(dc, x, y, fx, [](const FXHeader &buffer) {
        const auto [bytes, count] = WalkBytes(buffer);
        ChooseFilters().sharpen(bytes[0], count);
    });
}

int32_t ColorMove(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uintptr_t target, int32_t step) noexcept {
    if (target == 0) return 0;
    return ChangeAndPaint(dc, x, y, fx, [=](const FXHeader &buffer) {
        const auto [bytes, count] = WalkBytes(buffer, *FXFromHandle(target));
        ChooseFilters().approach(bytes[0], bytes[1], count, ToByte(step));
    });
}

int32_t ExchangeColor(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t oldColor,
                      uint32_t newColor) noexcept {
    return ChangeAndPaint(dc, x, y, fx, [=](const FXHeader &buffer) {
        if (oldColor > 0xFFFFFF) return;
        const auto [pixels, count] = WalkPixels(buffer);
        ChooseFilters().replace(pixels[0], count, PixelOfColour(oldColor), PixelOfColour(newColor));
    });
}

int32_t ExchangeRgb(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, int32_t red, int32_t green,
                    int32_t blue) noexcept {
    return ChangeAndPaint(dc, x, y, fx, [=](const FXHeader &buffer) {
        const auto [pixels, count] = WalkPixels(buffer);
        ChooseFilters().shift(pixels[0], count, ShiftOf(red, green, blue));
    });
}

void ColorFill(uintptr_t fx, uint32_t colour) noexcept {
    if (fx == 0) return;
    const auto [pixels, count] = WalkPixels(*FXFromHandle(fx));
    ChooseFilters().fill(pixels[0], count, PixelOfColour(colour));
}
