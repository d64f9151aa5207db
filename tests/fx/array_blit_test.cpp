// SPDX-License-Identifier: Zlib
#include "fx/array_blit.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <ostream>
#include <random>
#include <vector>

namespace fenlight {
namespace {

constexpr VectorLevel kLevels[] = {VectorLevel::Plain, VectorLevel::Avx2, VectorLevel::Avx512};

// A buffer behind guard bytes, `slack` bytes longer than its packed rows. Behind an even number of bytes
// there are others; an odd one ends where its memory does, for the address sanitizer to see.
struct Buffer {
    Buffer(int32_t width, int32_t height, uint32_t slack = 0) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(3 * width * height) + slack;
        bytes.assign(kGuard + header.biSizeImage + (header.biSizeImage % 2 == 0 ? kGuard : 0), 0);
    }
    Buffer(const Buffer &other) : header(other.header), bytes(other.bytes) {}
    Buffer &operator=(const Buffer &) = delete;

    uintptr_t Handle() {
        header.Pixels = bytes.data() + kGuard;
        return reinterpret_cast<uintptr_t>(&header);
    }
    uint8_t *At(int64_t x, int64_t y) { return bytes.data() + kGuard + 3 * (header.biWidth * y + x); }
    bool Contains(int64_t x, int64_t y) const {
        return x >= 0 && y >= 0 && x < header.biWidth && y < header.biHeight;
    }
    // Few values, so that keys and equal pixels come up.
    void Fill(std::mt19937 &random, uint32_t values) {
        for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random() % values * 85);
    }

    static constexpr size_t kGuard = 96;
    FXHeader header{};
    std::vector<uint8_t> bytes;
};

struct Call {
    ArrayRectangle at;
    int32_t mode;
    uint32_t key;
};

// The definition, a pixel at a time, each one of the target tested against every edge.
void Walk(Buffer &dest, Buffer &source, const Buffer &mask, const Call &call) {
    const ArrayRectangle &at = call.at;
    for (int64_t destY = 0; destY < dest.header.biHeight; ++destY) {
        for (int64_t destX = 0; destX < dest.header.biWidth; ++destX) {
            const int64_t x = destX - at.destX, y = destY - at.destY;
            if (x < 0 || y < 0 || x >= at.width || y >= at.height) continue;
            if (!source.Contains(at.srcX + x, at.srcY + y)) continue;
            const uint8_t *from = source.At(at.srcX + x, at.srcY + y);
            uint8_t *to = dest.At(destX, destY);
            const std::array<uint8_t, 3> pixel{from[0], from[1], from[2]};
            const uint32_t colour = uint32_t{pixel[0]} << 16 | uint32_t{pixel[1]} << 8 | pixel[2];
            if (call.mode == 1 && colour == call.key) continue;
            // Below 2^64 for any rectangle.
            const uint64_t inMask =
                3 * (static_cast<uint64_t>(at.width) * static_cast<uint64_t>(y) + static_cast<uint64_t>(x));
            for (size_t i = 0; i < 3; ++i) {
                if (call.mode != 2) {
                    to[i] = pixel[i];
                } else if (inMask + i < mask.header.biSizeImage) {
                    const uint32_t m = mask.bytes[Buffer::kGuard + inMask + i];
                    to[i] = static_cast<uint8_t>((to[i] * m + pixel[i] * (255 - m)) / 255);
                }
            }
        }
    }
}

std::ostream &operator<<(std::ostream &out, const Call &call) {
    const ArrayRectangle &at = call.at;
    return out << "mode " << call.mode << ", " << at.width << " x " << at.height << " from (" << at.srcX
               << ", " << at.srcY << ") to (" << at.destX << ", " << at.destY << ")";
}

class ArrayBlit : public ::testing::TestWithParam<VectorLevel> {
  protected:
    void SetUp() override { ForceVectorLevel(GetParam()); }
    void TearDown() override { ReleaseVectorLevel(); }
};

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
// Nothing, all, and with a mask whose byte for the first pixel that is left would lie far behind its end.
constexpr ArrayRectangle kFar[] = {{0, 0, 4, kLeast, 0, 0},
                                   {kMost, 0, kMost, 4, 0, 0},
                                   {0, 0, kMost, kMost, kMost, kMost},
                                   {kLeast, kLeast, kMost, kMost, 0, 0},
                                   {0, 0, kMost, kMost, 0, kLeast},
                                   {0, 0, kMost, kMost, 0, 0},
                                   {2 - kMost, 2 - kMost, kMost, kMost, 2 - kMost, 2 - kMost}};

// Rectangles inside, across the edges and off the buffers, masks of every length, one buffer in two or three
// roles. Nothing but the target's bytes may differ from before.
TEST_P(ArrayBlit, DoesWhatTheWalkDoesAlsoWithinOneBuffer) {
    std::mt19937 random(20240607);
    const auto pick = [&](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    for (int scene = 0; scene < 6000; ++scene) {
        Buffer buffers[3] = {{pick(1, 90), pick(1, 9), static_cast<uint32_t>(pick(0, 12))},
                             {pick(1, 90), pick(1, 9)},
                             {pick(1, 90), pick(1, 9)}};
        for (Buffer &buffer : buffers) buffer.Fill(random, scene % 3 == 0 ? 2 : 256);
        const size_t source = scene % 2 == 0 ? 1 : 0;
        const size_t mask = scene % 5 == 0 ? 0 : scene % 7 == 0 ? source : 2;
        Call call{{pick(-9, 60), pick(-3, 6), pick(-1, 95), pick(-1, 10), pick(-9, 60), pick(-3, 6)},
                  scene % 11 == 0 ? pick(-9, 9) : pick(0, 2),
                  static_cast<uint32_t>(random() % 2 * 0x550000 | random() % 2 * 0x5500)};
        if (scene % 40 == 0) call.at = kFar[random() % std::size(kFar)];
        Buffer expected[3] = {buffers[0], buffers[1], buffers[2]};
        Walk(expected[0], expected[source], expected[mask], call);
        const auto &at = call.at;
        BitBltArray(buffers[0].Handle(), at.destX, at.destY, at.width, at.height, buffers[source].Handle(),
                    at.srcX, at.srcY, call.mode,
                    call.mode == 2 ? buffers[mask].Handle() : uintptr_t{call.key} | 0xAB000000);
        for (size_t i = 0; i < 3; ++i)
            ASSERT_EQ(buffers[i].bytes, expected[i].bytes)
                << "buffer " << i << " of scene " << scene << ": " << call;
    }
}

TEST_P(ArrayBlit, MixesEveryTargetSourceAndMaskByteExactly) {
    constexpr int32_t kPixels = 256 * 256 / 3 + 1;
    Buffer target(kPixels, 1), source(kPixels, 1), mask(kPixels, 1);
    const auto bytes = [](Buffer &buffer) { return buffer.bytes.data() + Buffer::kGuard; };
    for (uint32_t m = 0; m < 256; ++m) {
        for (size_t i = 0; i < target.header.biSizeImage; ++i) {
            bytes(target)[i] = static_cast<uint8_t>(i);
            bytes(source)[i] = static_cast<uint8_t>(i >> 8);
            bytes(mask)[i] = static_cast<uint8_t>(m);
        }
        BitBltArray(target.Handle(), 0, 0, kPixels, 1, source.Handle(), 0, 0, 2, mask.Handle());
        int wrong = 0;
        for (uint32_t i = 0; i < 256 * 256; ++i) {
            const uint32_t sum = (i & 255) * m + (i >> 8) * (255 - m), mixed = bytes(target)[i];
            wrong += mixed * 255 > sum || sum - mixed * 255 >= 255;
        }
        ASSERT_EQ(wrong, 0) << "mask byte " << m;
    }
}

TEST_P(ArrayBlit, DoesNothingWithoutOneOfItsBuffers) {
    Buffer target(40, 4), source(40, 4), noMask(0, 0);
    std::fill(source.bytes.begin(), source.bytes.end(), uint8_t{9});
    for (const int32_t mode : {0, 1, 2}) {
        const uintptr_t parameter = mode == 2 ? source.Handle() : 0;
        BitBltArray(0, 0, 0, 4, 4, source.Handle(), 0, 0, mode, parameter);
        BitBltArray(target.Handle(), 0, 0, 4, 4, 0, 0, 0, mode, parameter);
    }
    for (const uintptr_t mask : {uintptr_t{0}, noMask.Handle()})
        BitBltArray(target.Handle(), 0, 0, 4, 4, source.Handle(), 0, 0, 2, mask);
    EXPECT_EQ(target.bytes, std::vector<uint8_t>(target.bytes.size(), 0));
}

INSTANTIATE_TEST_SUITE_P(Levels, ArrayBlit, ::testing::ValuesIn(kLevels));

}  // namespace
}  // namespace fenlight
