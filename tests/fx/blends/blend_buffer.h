// SPDX-License-Identifier: Zlib
// FX buffers on memory of the test's own, and what a context shows of a block.
#pragma once

#include <random>
#include <vector>

#include "fx/fx_picture.h"

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

// Whether the context shows a block of the size of `fx`, rows taken as padded.
inline ::testing::AssertionResult Shows(HDC context, const FXHeader &fx, Bytes block) {
    FXHeader shown = fx;
    shown.Pixels = block.data();
    const auto pitch = static_cast<int64_t>(BlockPitch(fx.biWidth, true));
    return SamePicture("painted", PictureOf(context, fx.biWidth, fx.biHeight), PictureInBlock(shown, pitch));
}

}  // namespace fenlight::test
