// SPDX-License-Identifier: Zlib
#include <algorithm>

#include "fenlight/fx_blends.h"
#include "fx/fx_picture.h"
#include "fx/guarded_buffer.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

// The definitions, a byte or a pixel at a time. Blocks are those before the call.

int Loss(int percent) {
    int amount = 0;
    while (amount < 255 && (amount + 1) * 100 <= percent * 256) ++amount;
    return amount;
}

Bytes Faded(const Bytes &fx, const Bytes &other, int percent) {
    Bytes result(fx.size());
    for (size_t i = 0; i < std::min(fx.size(), other.size()); ++i)
        result[i] = static_cast<uint8_t>(std::max(other[i] - Loss(100 - percent), 0) +
                                         std::max(fx[i] - Loss(percent), 0));
    return result;
}

uint8_t MixedByte(int a, int b, int m) {
    const int q = m * 100 / 255;
    return static_cast<uint8_t>(m == 0 ? a : ((100 - q) * a + q * b) / 100);
}

Bytes Mixed(const Bytes &fx, const Bytes &other, const Bytes &mask) {
    Bytes result(fx.size());
    for (size_t i = 0; i < std::min({fx.size(), other.size(), mask.size()}); ++i)
        result[i] = MixedByte(fx[i], other[i], mask[i]);
    return result;
}

Bytes Merged(const GuardedBuffer &fx, const GuardedBuffer &other, int flags) {
    GuardedBuffer target = other;
    const int64_t size = fx.Size(), row = fx.Pitch();
    const uint8_t *const pixels = fx.header.Pixels;
    const auto isKey = [&](int64_t o) { return std::equal(pixels + o, pixels + o + 3, pixels + size - 3); };
    for (int64_t o = 0; o < 3 * std::min(fx.Pixels(), other.Pixels()); o += 3) {
        if (isKey(o)) continue;
        const bool isEdge = (o + row + 5 < size - 1 && isKey(o + 3)) || (o - row - 3 > 0 && isKey(o - 3)) ||
                            (o + row + 2 < size - 1 && isKey(o + row)) || (o - row > 0 && isKey(o - row));
        for (int64_t i = o; i < o + 3; ++i) {
            if ((flags & 1) == 0 || !isEdge)
                target[i] = pixels[i];
            else if ((flags & 3) == 1)
                target[i] = static_cast<uint8_t>((pixels[i] + target[i]) >> 1);
        }
    }
    return target.Block();
}

using Blends = FXLevels;

TEST_P(Blends, GiveTheBytesOfTheDefinitionAndTouchNoOthers) {
    for (int number = 0; number < 600; ++number) {
        std::vector<GuardedBuffer> buffers = dice.Roles(), expected = buffers;
        const size_t second = dice.Between(0, 9) == 0 ? 0 : 1;
        const GuardedBuffer &fx = buffers[0], &other = buffers[second], &mask = buffers[1 + dice() % 2];
        const Bytes a = fx.Block(), b = other.Block(), m = mask.Block();
        const int percent = number % 107 - 3, flags = number % 9 - 1;
        const Place place{kDepths[number % 9 < 6 ? 5 : number % 6], dice.Between(-40, 30),
                          dice.Between(-25, 20)};
        SCOPED_TRACE(testing::Message()
                     << "scene " << number << ", percent " << percent << ", flags " << flags);
        ASSERT_TRUE(Paints(fx.header, Faded(a, b, std::clamp(percent, 0, 100)), place, [&](HDC dc) {
            return SemiTrans(dc, place.x, place.y, fx.Handle(), other.Handle(), percent);
        }));
        ASSERT_TRUE(Paints(fx.header, Mixed(a, b, m), place, [&](HDC dc) {
            return AlphaTrans(dc, place.x, place.y, fx.Handle(), other.Handle(), mask.Handle());
        }));
        ASSERT_TRUE(SameBuffers(buffers, expected));

        if (number % 2 == 0) {
            expected[0].Set(Mixed(a, b, m));
            AlphaTrans(0, 0, 0, fx.Handle(), other.Handle(), mask.Handle());
        } else {
            expected[second].Set(Merged(fx, other, flags));
            Merge(fx.Handle(), other.Handle(), flags);
        }
        ASSERT_TRUE(SameBuffers(buffers, expected));
    }
}

TEST_P(Blends, MixEveryPairOfBytesUnderEveryMaskExactly) {
    GuardedBuffer fx(148, 148), other(148, 148), mask(148, 148);
    for (int m = 0; m < 256; ++m) {
        Bytes expected(fx.header.biSizeImage);
        for (size_t i = 0; i < expected.size(); ++i) {
            fx.header.Pixels[i] = static_cast<uint8_t>(i);
            other.header.Pixels[i] = static_cast<uint8_t>(i >> 8);
            expected[i] = MixedByte(static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), m);
        }
        AlphaTrans(0, 0, 0, fx.Handle(), other.Handle(), mask.Fill(static_cast<uint8_t>(m)));
        ASSERT_EQ(fx.Block(), expected) << m;
    }
}

TEST_P(Blends, GiveTheValuesWorkedOutByHand) {
    struct Fade {
        int32_t percent;
        uint8_t fx, other, expected;
    };
    constexpr Fade kFades[] = {{50, 255, 255, 254},  {50, 100, 100, 0},   {50, 200, 200, 144},
                               {30, 255, 255, 255},  {0, 9, 200, 9},      {100, 9, 200, 200},
                               {kMost, 9, 200, 200}, {kLeast, 9, 200, 9}, {1, 255, 0, 253},
                               {9, 255, 0, 232},     {1, 0, 255, 2},      {97, 0, 255, 248}};
    GuardedBuffer fx(4, 4), other(4, 4), mask(4, 4);
    for (const Fade &fade : kFades) {
        fx.Fill(fade.fx);
        other.Fill(fade.other);
        EXPECT_TRUE(Paints(fx.header, Bytes(48, fade.expected), {}, [&](HDC dc) {
            return SemiTrans(dc, 0, 0, fx.Handle(), other.Handle(), fade.percent);
        })) << fade.percent;
    }
    EXPECT_EQ(AlphaTrans(0, 0, 0, fx.Fill(0), other.Fill(255), mask.Fill(128)), 0);
    EXPECT_EQ(fx.Block(), Bytes(48, 127));

    // White (w) on key (k), which the last pixel is: copied (c), at the edge (e), key (-). To the left and
    // above a key does not count for the first row nor, at its very beginning, for the second; to the right
    // and below not for the last row nor for the end of the one before.
    constexpr std::pair<const char *, const char *> kEdges[] = {{"kwkwwwwwwwwwwwwk", "-e-cccecccccccc-"},
                                                                {"wwwwwwwwwkwwwwwk", "cccccecce-eccec-"},
                                                                {"kkkkkkkkkkkkkkkk", "----------------"}};
    for (const auto &[picture, outcome] : kEdges) {
        for (const int flags : {0, 1, 2, 3, 4, 5, -1}) {
            const uint8_t edge = (flags & 1) == 0 ? 255 : (flags & 3) == 1 ? 132 : 10;
            Bytes expected(48);
            for (size_t i = 0; i < 48; ++i) {
                fx.header.Pixels[i] = picture[i / 3] == 'w' ? 255 : 0;
                expected[i] = outcome[i / 3] == '-' ? 10 : outcome[i / 3] == 'c' ? 255 : edge;
            }
            Merge(fx.Handle(), other.Fill(10), flags);
            EXPECT_EQ(other.Block(), expected) << picture << ' ' << flags;
        }
    }
}

TEST_P(Blends, ChangeNothingWithoutABufferOrMemory) {
    for (const Rows rows : {Rows::Packed, Rows::Padded}) {
        GuardedBuffer fx(5, 3, rows), other(5, 3, rows);
        const GuardedBuffer before = fx;
        const uintptr_t a = fx.Handle(), b = other.Fill(200);
        EXPECT_TRUE(Paints(fx.header, {}, {}, [&](HDC dc) {
            int32_t sum = SemiTrans(dc, 0, 0, a, 0, 100) + SemiTrans(dc, 0, 0, 0, b, 100);
            for (const HDC context : {dc, HDC{0}})
                sum += AlphaTrans(context, 0, 0, 0, b, b) + AlphaTrans(context, 0, 0, a, 0, b) +
                       AlphaTrans(context, 0, 0, a, b, 0);
            platform::FailFrom(platform::Operation::Memory, 1);
            sum += SemiTrans(dc, 0, 0, a, b, 100) + AlphaTrans(dc, 0, 0, a, b, b);
            platform::ForgetFailures();
            Merge(b, 0, 0);
            Merge(0, a, 0);
            return sum + SemiTrans(0, 0, 0, a, b, 100) + SemiTrans(12345, 0, 0, a, b, 100);
        }));
        EXPECT_TRUE(SameBuffer(fx, before));
    }
}

// Wider than what is kept of the rows above and below.
TEST_P(Blends, FindTheEdgeInRowsOfAnyWidth) {
    for (const int32_t width : {14336, 14337, 16384, 20000}) {
        const GuardedBuffer fx = dice.Noise(width, 3, 2), target(width, 3);
        const Bytes expected = Merged(fx, target, 3);
        Merge(fx.Handle(), target.Handle(), 3);
        EXPECT_TRUE(target.Block() == expected) << width;
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, Blends, kEachLevel);

}  // namespace
}  // namespace fenlight::test
