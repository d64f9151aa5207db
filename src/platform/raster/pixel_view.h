// SPDX-License-Identifier: Zlib
// What the raster code sees of a bitmap: memory, size, layout. No handles, no contexts, no locks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fenlight::platform {

enum class PixelFormat : uint8_t {
    Mono,      // 1 bit, no palette: converts through the contexts' text and background colours
    Indexed1,  // 1 bit with palette; the leftmost pixel is the highest bit
    Indexed4,  // the left pixel is the high half
    Indexed8,
    Bgr24,   // blue, green, red
    Bgrx32,  // blue, green, red, unused; a little-endian word 0x??RRGGBB. Copies keep the unused byte.
};

struct PixelView {
    uint8_t *topRow = nullptr;  // first byte of the top row of the picture
    ptrdiff_t pitch = 0;        // bytes from a row to the one below it; negative in a bottom-up bitmap
    int32_t width = 0;
    int32_t height = 0;
    PixelFormat format = PixelFormat::Bgrx32;
    const uint32_t *palette = nullptr;  // 256 words 0x00RRGGBB for the indexed formats, unused ones 0
    int32_t paletteCount = 0;           // colours to be searched when a colour is matched

    uint8_t *Row(int32_t y) const { return topRow + y * pitch; }
};

constexpr int BitsPerPixel(PixelFormat format) {
    switch (format) {
        case PixelFormat::Mono:
        case PixelFormat::Indexed1:
            return 1;
        case PixelFormat::Indexed4:
            return 4;
        case PixelFormat::Indexed8:
            return 8;
        case PixelFormat::Bgr24:
            return 24;
        default:
            return 32;
    }
}

// A COLORREF 0x00BBGGRR as a pixel word 0x00RRGGBB, and back.
constexpr uint32_t SwapRedBlue(uint32_t colour) {
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

}  // namespace fenlight::platform
