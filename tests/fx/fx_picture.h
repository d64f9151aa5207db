// SPDX-License-Identifier: Zlib
// Images with noise on them, contexts to compare, and what FX buffers and effects show.
#pragma once

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "fenlight/images.h"
#include "fx/fx_buffer.h"
#include "platform/graphics/canvas.h"
#include "platform/graphics/surface_access.h"

namespace fenlight::test {

// A context of each format: 0 stands for monochrome.
inline constexpr int kDepths[] = {0, 1, 4, 8, 24, 32};

inline HBITMAP BitmapOfDepth(int32_t width, int32_t height, int depth) {
    if (depth == 0) return CreateBitmap(width, height, 1, 1, nullptr);
    DibHeader dib(width, height, depth);
    for (int i = 0; i < 256; ++i)
        dib.colours[i] = {static_cast<BYTE>(255 - i), static_cast<BYTE>(i * 37), static_cast<BYTE>(i * 91),
                          0};
    return CreateDIBSection(0, dib.Info(), DIB_RGB_COLORS, nullptr, 0, 0);
}

inline void DrawNoise(HDC context, int32_t width, int32_t height) {
    std::mt19937 random(static_cast<unsigned>(width * 100 + height));
    for (int32_t i = 0; i < width * height; ++i) SetPixel(context, i % width, i / width, random() & 0xFFFFFF);
}

// An image of the store with noise.
inline uintptr_t NoisyImage(int32_t width, int32_t height, int depth = 32) {
    const Canvas model(BitmapOfDepth(1, 1, depth));
    const uintptr_t image = CreateImage(model.context, width, height);
    DrawNoise(image, width, height);
    return image;
}

// Two contexts alike: one for the call, one for what it should show.
struct Twins {
    Twins(int32_t pairWidth, int32_t pairHeight, int pairDepth = 32)
        : width(pairWidth), height(pairHeight), depth(pairDepth) {}
    // The unused bytes too.
    ::testing::AssertionResult Same(const std::string &name) const {
        const auto same = SamePicture(name, PictureOf(dc, width, height), PictureOf(expected, width, height));
        const auto rowBytes = 4 * static_cast<size_t>(width);
        const platform::SurfacePairAccess views(dc, expected);
        for (int y = 0; y < height && depth == 32; ++y)
            EXPECT_EQ(std::memcmp(views.TargetView().Row(y), views.SourceView().Row(y), rowBytes), 0) << y;
        return same;
    }

    const int32_t width, height;
    const int depth;
    const Canvas canvas{BitmapOfDepth(width, height, depth)},
        expectedCanvas{BitmapOfDepth(width, height, depth)};
    const HDC dc = canvas.context, expected = expectedCanvas.context;
};

// A context of that depth, and where on it a picture comes to lie.
struct Place {
    int depth = 32;
    int32_t x = 0, y = 0;
};

// Whether paint(context) shows what painting `block`, of the size of `fx`, does; an empty one shows nothing.
template <typename Paint>
::testing::AssertionResult Paints(const FXHeader &fx, const std::vector<uint8_t> &block, const Place &place,
                                  Paint paint) {
    const Twins twins(50, 40, place.depth);
    EXPECT_EQ(paint(twins.dc), 0);
    if (!block.empty()) PaintFX(twins.expected, place.x, place.y, fx, block.data());
    return twins.Same("painted");
}

// Rows taken as `pitch` bytes long; what lies behind the block is black.
inline Picture PictureInBlock(const FXHeader &fx, int64_t pitch) {
    Picture picture(fx.biWidth, fx.biHeight);
    const auto byteAt = [&](int64_t at) { return at < fx.biSizeImage ? uint32_t{fx.Pixels[at]} : 0; };
    for (int y = 0; y < fx.biHeight; ++y)
        for (int x = 0; x < fx.biWidth; ++x) {
            const int64_t at = y * pitch + 3 * x;
            picture.At(x, y) = byteAt(at + 2) << 16 | byteAt(at + 1) << 8 | byteAt(at);
        }
    return picture;
}

}  // namespace fenlight::test
