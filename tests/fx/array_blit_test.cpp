// SPDX-License-Identifier: Zlib
#include "fx/array_blit.h"

#include <array>
#include <ostream>

#include "fx/guarded_buffer.h"

namespace fenlight::test {
namespace {

bool Contains(const GuardedBuffer &buffer, int64_t x, int64_t y) {
    return x >= 0 && y >= 0 && x < buffer.header.biWidth && y < buffer.header.biHeight;
}

uint8_t *PixelAt(GuardedBuffer &buffer, int64_t x, int64_t y) {
    return buffer.At(buffer.Pitch() * y + 3 * x);
}

struct Call {
    ArrayRectangle at;
    int32_t mode;
    uint32_t key;
};

// The definition, a pixel at a time, each one of the target tested against every edge.
void Walk(GuardedBuffer &dest, GuardedBuffer &source, GuardedBuffer &mask, const Call &call) {
    const ArrayRectangle &at = call.at;
    for (int64_t destY = 0; destY < dest.header.biHeight; ++destY) {
        for (int64_t destX = 0; destX < dest.header.biWidth; ++destX) {
            const int64_t x = destX - at.destX, y = destY - at.destY;
            if (x < 0 || y < 0 || x >= at.width || y >= at.height) continue;
            if (!Contains(source, at.srcX + x, at.srcY + y)) continue;
            const uint8_t *from = PixelAt(source, at.srcX + x, at.srcY + y);
            uint8_t *to = PixelAt(dest, destX, destY);
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
                    const uint32_t m = *mask.At(static_cast<int64_t>(inMask + i));
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

using ArrayBlit = FXLevels;

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
    for (int scene = 0; scene < 6000; ++scene) {
        const auto between = [&](int32_t low, int32_t high) { return dice.Between(low, high); };
        const auto noise = [&] {
            return dice.Noise(between(1, 90), between(1, 9), scene % 3 == 0 ? 2 : 256);
        };
        std::vector<GuardedBuffer> buffers{noise(), noise(), noise()};
        const size_t source = scene % 2 == 0 ? 1 : 0;
        const size_t mask = scene % 5 == 0 ? 0 : scene % 7 == 0 ? source : 2;
        Call call{{between(-9, 60), between(-3, 6), between(-1, 95), between(-1, 10), between(-9, 60),
                   between(-3, 6)},
                  scene % 11 == 0 ? between(-9, 9) : between(0, 2),
                  dice() % 2 * 0xFF0000 | dice() % 2 * 0xFF00 | dice() % 2 * 0xFF};
        if (scene % 40 == 0) call.at = kFar[dice() % std::size(kFar)];
        std::vector<GuardedBuffer> expected = buffers;
        Walk(expected[0], expected[source], expected[mask], call);
        const auto &at = call.at;
        BitBltArray(buffers[0].Handle(), at.destX, at.destY, at.width, at.height, buffers[source].Handle(),
                    at.srcX, at.srcY, call.mode,
                    call.mode == 2 ? buffers[mask].Handle() : uintptr_t{call.key} | 0xAB000000);
        ASSERT_TRUE(SameBuffers(buffers, expected)) << "scene " << scene << ": " << call;
    }
}

TEST_P(ArrayBlit, MixesEveryTargetSourceAndMaskByteExactly) {
    constexpr int32_t kPixels = 256 * 256 / 3 + 1;
    GuardedBuffer target(kPixels, 1), source(kPixels, 1), mask(kPixels, 1);
    for (uint32_t m = 0; m < 256; ++m) {
        mask.Fill(static_cast<uint8_t>(m));
        for (int64_t i = 0; i < target.Size(); ++i) {
            *target.At(i) = static_cast<uint8_t>(i);
            *source.At(i) = static_cast<uint8_t>(i >> 8);
        }
        BitBltArray(target.Handle(), 0, 0, kPixels, 1, source.Handle(), 0, 0, 2, mask.Handle());
        int wrong = 0;
        for (uint32_t i = 0; i < 256 * 256; ++i) {
            const uint32_t sum = (i & 255) * m + (i >> 8) * (255 - m), mixed = *target.At(i);
            wrong += mixed * 255 > sum || sum - mixed * 255 >= 255;
        }
        ASSERT_EQ(wrong, 0) << "mask byte " << m;
    }
}

TEST_P(ArrayBlit, DoesNothingWithoutOneOfItsBuffers) {
    GuardedBuffer target(40, 4), source = dice.Noise(40, 4), noMask(0, 0);
    const Bytes before = target.bytes;
    for (const int32_t mode : {0, 1, 2}) {
        const uintptr_t parameter = mode == 2 ? source.Handle() : 0;
        BitBltArray(0, 0, 0, 4, 4, source.Handle(), 0, 0, mode, parameter);
        BitBltArray(target.Handle(), 0, 0, 4, 4, 0, 0, 0, mode, parameter);
    }
    for (const uintptr_t mask : {uintptr_t{0}, noMask.Handle()})
        BitBltArray(target.Handle(), 0, 0, 4, 4, source.Handle(), 0, 0, 2, mask);
    EXPECT_EQ(target.bytes, before);
}

INSTANTIATE_TEST_SUITE_P(Levels, ArrayBlit, kEachLevel);

}  // namespace
}  // namespace fenlight::test
