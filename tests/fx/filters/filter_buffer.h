// SPDX-License-Identifier: Zlib
// FX buffers between guard bytes, and the levels that every filter runs at.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "fx/fx_buffer.h"
#include "support/each_level.h"

namespace fenlight::test {

enum class Rows { Packed, Padded };

// Behind an even number of bytes there are guards; an odd one ends where its memory does, for the address
// sanitizer to see.
struct GuardedBuffer {
    GuardedBuffer(int32_t width, int32_t height, Rows rows = Rows::Packed) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(
            (rows == Rows::Packed ? kFXPixelBytes * width : PaddedRowBytes(width)) * height);
        bytes.assign(kGuard + header.biSizeImage + (header.biSizeImage % 2 == 0 ? kGuard : 0), 0xC3);
        header.Pixels = At(0);
    }
    GuardedBuffer(const GuardedBuffer &other) : header(other.header), bytes(other.bytes) {
        header.Pixels = At(0);
    }
    GuardedBuffer &operator=(const GuardedBuffer &) = delete;

    uintptr_t Handle() { return reinterpret_cast<uintptr_t>(&header); }
    uint8_t *At(int64_t at) { return bytes.data() + kGuard + at; }
    int64_t Pixels() const { return int64_t{header.biWidth} * header.biHeight; }

    static constexpr int64_t kGuard = 96;
    FXHeader header{};
    std::vector<uint8_t> bytes;
};

class FilterLevels : public EachLevel {
  protected:
    int32_t Between(int32_t low, int32_t high) {
        return low + static_cast<int32_t>(random() % static_cast<unsigned>(high - low + 1));
    }
    // Packed or padded rows of any bytes.
    GuardedBuffer Noise(int32_t width, int32_t height) {
        GuardedBuffer buffer(width, height, random() % 2 == 0 ? Rows::Packed : Rows::Padded);
        for (uint32_t i = 0; i < buffer.header.biSizeImage; ++i)
            *buffer.At(i) = static_cast<uint8_t>(random());
        return buffer;
    }

    std::mt19937 random{20240719};
};

}  // namespace fenlight::test
