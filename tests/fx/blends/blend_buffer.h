// SPDX-License-Identifier: Zlib
// FX buffers on memory of the test's own, and what effects paint.
#pragma once

#include <cstring>
#include <random>
#include <vector>

#include "fx/fx_picture.h"
#include "platform/graphics/surface_access.h"

namespace fenlight::test {

using Bytes = std::vector<uint8_t>;

// Bytes of a row as the block has them.
inline size_t BlockPitch(int32_t width, bool isPadded) {
    return static_cast<size_t>(3 * width + (isPadded ? width % 4 : 0));
}

// The pixels stand between guard bytes, or end where their memory does, for the address sanitizer to see.
struct Buffer {
    Buffer(int32_t width, int32_t height, bool isPadded, bool hasGuard)
        : bytes(kGuard + BlockPitch(width, isPadded) * static_cast<size_t>(height) +
                (hasGuard ? kGuard : 0)) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(bytes.size() - kGuard - (hasGuard ? kGuard : 0));
        header.Pixels = bytes.data() + kGuard;
    }
    Buffer(const Buffer &) = delete;
    uintptr_t Handle() { return reinterpret_cast<uintptr_t>(&header); }
    Bytes Block() const { return {header.Pixels, header.Pixels + header.biSizeImage}; }
    // Few values make keys and equal neighbours.
    void Fill(std::mt19937 &random, unsigned values) {
        for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random() % values * 255 / (values - 1));
    }

    static constexpr size_t kGuard = 96;
    FXHeader header{};
    Bytes bytes;
};

// A context of that depth, and where on it a picture comes to lie.
struct Place {
    int depth = 32;
    int32_t x = 0, y = 0;
};

// Whether paint(context) shows what painting `block`, of the size of `fx`, does; an empty one shows nothing.
template <typename Paint>
::testing::AssertionResult Paints(const FXHeader &fx, Bytes block, const Place &place, Paint paint) {
    constexpr int kWidth = 50, kHeight = 40;
    const Canvas actual(BitmapOfDepth(kWidth, kHeight, place.depth)),
        expected(BitmapOfDepth(kWidth, kHeight, place.depth));
    EXPECT_EQ(paint(actual.context), 0);
    if (!block.empty()) PaintFX(expected.context, place.x, place.y, fx, block.data());
    const auto same = SamePicture("painted", PictureOf(actual.context, kWidth, kHeight),
                                  PictureOf(expected.context, kWidth, kHeight));
    const platform::SurfacePairAccess views(actual.context, expected.context);
    for (int y = 0; y < kHeight && place.depth == 32; ++y)  // the unused bytes too
        EXPECT_EQ(std::memcmp(views.TargetView().Row(y), views.SourceView().Row(y), 4 * kWidth), 0) << y;
    return same;
}

}  // namespace fenlight::test
