// SPDX-License-Identifier: Zlib
// A memory context with a bitmap of its own, for as long as it stands, and pictures of what contexts hold.
#pragma once

#include "fenlight/platform/graphics.h"
#include "platform/graphics/screen_context.h"
#include "support/picture_check.h"

namespace fenlight::test {

// The header of a DIB of that depth with room for all its colours.
struct DibHeader {
    BITMAPINFOHEADER header{};
    RGBQUAD colours[256]{};

    DibHeader(int32_t width, int32_t height, int bits) {
        header.biSize = sizeof(header);
        header.biWidth = width;
        header.biHeight = height;
        header.biPlanes = 1;
        header.biBitCount = static_cast<WORD>(bits);
    }
    BITMAPINFO *Info() { return reinterpret_cast<BITMAPINFO *>(this); }
};

class Canvas {
  public:
    Canvas(int32_t width, int32_t height)
        : Canvas(CreateCompatibleBitmap(platform::ScreenContext(), width, height)) {}
    explicit Canvas(HBITMAP canvasBitmap) : bitmap(canvasBitmap), before(SelectObject(context, bitmap)) {}
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;
    ~Canvas() {
        DeleteDC(context);
        DeleteObject(bitmap);
    }

    const HDC context = CreateCompatibleDC(platform::ScreenContext());
    const HBITMAP bitmap;
    const HGDIOBJ before;
};

// A COLORREF as the pictures hold it.
constexpr uint32_t Word(COLORREF colour) {
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

inline Picture PictureOf(HDC context, int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) picture.At(x, y) = Word(GetPixel(context, x, y));
    return picture;
}

}  // namespace fenlight::test
