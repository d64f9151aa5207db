// SPDX-License-Identifier: Zlib
// What an image shows, and what contexts and bitmaps are alive.
#pragma once

#include "platform/pictures/picture_drawing.h"
#include "platform/raster/pixel_view.h"

namespace fenlight::test {

inline Picture ShownBy(HDC context, int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) picture.At(x, y) = platform::SwapRedBlue(GetPixel(context, x, y));
    }
    return picture;
}

}  // namespace fenlight::test
