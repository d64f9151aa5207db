// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <limits>
#include <memory>

#include "fenlight/fx_blends.h"
#include "fx/blends/blend_buffer.h"
#include "platform/system/failure_point.h"
#include "support/each_level.h"

namespace fenlight::test {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();

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

Bytes Merged(const FXHeader &header, const Bytes &fx, Bytes target, int flags) {
    const auto size = static_cast<int64_t>(fx.size()), row = int64_t{3} * header.biWidth;
    const auto isKey = [&](int64_t o) {
        return std::equal(&fx[static_cast<size_t>(o)], &fx[0] + o + 3, &fx[0] + size - 3);
    };
    for (int64_t o = 0; o < row * header.biHeight && o + 3 <= static_cast<int64_t>(target.size()); o += 3) {
        if (isKey(o)) continue;
        const bool isEdge = (o + row + 5 < size - 1 && isKey(o + 3)) || (o - row - 3 > 0 && isKey(o - 3)) ||
                            (o + row + 2 < size - 1 && isKey(o + row)) || (o - row > 0 && isKey(o - row));
        for (auto i = static_cast<size_t>(o); i < static_cast<size_t>(o) + 3; ++i) {
            if ((flags & 1) == 0 || !isEdge)
                target[i] = fx[i];
            else if ((flags & 3) == 1)
                target[i] = static_cast<uint8_t>((fx[i] + target[i]) >> 1);
        }
    }
    return target;
}

class Blends : public EachLevel {};

// Three buffers, mostly of one size, sometimes one of them in two roles.
struct Scene {
    explicit Scene(unsigned number) : random(number) {
        const int32_t width = Pick(1, 67), height = Pick(1, 35);
        for (auto &buffer : own) {
            const bool isAny = number % 4 == 0;
            buffer = std::make_unique<Buffer>(isAny ? Pick(1, 67) : width, isAny ? Pick(1, 35) : height,
                                              isAny ? Pick(0, 1) == 0 : number % 3 != 0, Pick(0, 1) == 0);
            buffer->Fill(random, number % 5 == 0 ? 256 : 2 + number % 2);
        }
    }
    int32_t Pick(int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    }
    // All of it, guards too, with `block` in the place of a buffer's pixels.
    std::vector<Bytes> Memory(const Buffer *changed = nullptr, const Bytes &block = {}) const {
        std::vector<Bytes> memory;
        for (const auto &buffer : own) {
            memory.push_back(buffer->bytes);
            if (buffer.get() == changed)
                std::copy(block.begin(), block.end(), memory.back().begin() + Buffer::kGuard);
        }
        return memory;
    }

    std::mt19937 random;
    std::unique_ptr<Buffer> own[3];
};

TEST_P(Blends, GiveTheBytesOfTheDefinitionAndTouchNoOthers) {
    for (unsigned number = 0; number < 600; ++number) {
        Scene scene(number);
        Buffer &fx = *scene.own[0];
        Buffer &other = *scene.own[scene.Pick(0, 9) == 0 ? 0 : 1], &mask = *scene.own[scene.Pick(1, 2)];
        const Bytes a = fx.Block(), b = other.Block(), m = mask.Block();
        const int percent = static_cast<int>(number % 107) - 3, flags = static_cast<int>(number % 9) - 1;
        const Place place{kDepths[number % 9 < 6 ? 5 : number % 6], scene.Pick(-40, 30), scene.Pick(-25, 20)};
        SCOPED_TRACE(testing::Message()
                     << "scene " << number << ": " << fx.header.biWidth << " x " << fx.header.biHeight
                     << ", percent " << percent << ", flags " << flags);
        const std::vector<Bytes> before = scene.Memory();
        ASSERT_TRUE(Paints(fx.header, Faded(a, b, std::clamp(percent, 0, 100)), place, [&](HDC dc) {
            return SemiTrans(dc, place.x, place.y, fx.Handle(), other.Handle(), percent);
        }));
        ASSERT_TRUE(Paints(fx.header, Mixed(a, b, m), place, [&](HDC dc) {
            return AlphaTrans(dc, place.x, place.y, fx.Handle(), other.Handle(), mask.Handle());
        }));
        ASSERT_EQ(scene.Memory(), before);

        if (number % 2 == 0) {
            const std::vector<Bytes> expected = scene.Memory(&fx, Mixed(a, b, m));
            AlphaTrans(0, 0, 0, fx.Handle(), other.Handle(), mask.Handle());
            ASSERT_EQ(scene.Memory(), expected);
        } else {
            const std::vector<Bytes> expected = scene.Memory(&other, Merged(fx.header, a, b, flags));
            Merge(fx.Handle(), other.Handle(), flags);
            ASSERT_EQ(scene.Memory(), expected);
        }
    }
}

TEST_P(Blends, MixEveryPairOfBytesUnderEveryMaskExactly) {
    Buffer fx(148, 148, true, false), other(148, 148, true, false), mask(148, 148, true, false);
    for (int m = 0; m < 256; ++m) {
        Bytes expected(fx.header.biSizeImage);
        for (size_t i = 0; i < expected.size(); ++i) {
            fx.header.Pixels[i] = static_cast<uint8_t>(i);
            other.header.Pixels[i] = static_cast<uint8_t>(i >> 8);
            expected[i] = MixedByte(static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), m);
        }
        std::fill(mask.bytes.begin(), mask.bytes.end(), static_cast<uint8_t>(m));
        AlphaTrans(0, 0, 0, fx.Handle(), other.Handle(), mask.Handle());
        ASSERT_EQ(fx.Block(), expected) << m;
    }
}

TEST_P(Blends, GiveTheValuesWorkedOutByHand) {
    struct Fade {
        uint8_t fx, other;
        int percent;
        uint8_t expected;
    };
    constexpr Fade kFades[] = {{255, 255, 50, 254},  {100, 100, 50, 0},   {200, 200, 50, 144},
                               {255, 255, 30, 255},  {9, 200, 0, 9},      {9, 200, 100, 200},
                               {9, 200, kMost, 200}, {9, 200, kLeast, 9}, {255, 0, 1, 253},
                               {255, 0, 9, 232},     {0, 255, 1, 2},      {0, 255, 97, 248}};
    const auto filled = [](Buffer &buffer, uint8_t value) {
        std::fill(buffer.bytes.begin(), buffer.bytes.end(), value);
        return buffer.Handle();
    };
    Buffer fx(4, 4, true, true), other(4, 4, true, true), mask(4, 4, true, true);
    for (const Fade &fade : kFades) {
        filled(fx, fade.fx);
        filled(other, fade.other);
        EXPECT_TRUE(Paints(fx.header, Bytes(48, fade.expected), {}, [&](HDC dc) {
            return SemiTrans(dc, 0, 0, fx.Handle(), other.Handle(), fade.percent);
        })) << fade.percent;
    }
    EXPECT_EQ(AlphaTrans(0, 0, 0, filled(fx, 0), filled(other, 255), filled(mask, 128)), 0);
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
            Merge(fx.Handle(), filled(other, 10), flags);
            EXPECT_EQ(other.Block(), expected) << picture << ' ' << flags;
        }
    }
}

TEST_P(Blends, ChangeNothingWithoutABufferOrMemory) {
    for (const bool isPadded : {false, true}) {
        Buffer fx(5, 3, isPadded, true), other(5, 3, isPadded, true);
        other.bytes.assign(other.bytes.size(), 200);
        const Bytes before = fx.bytes;
        const uintptr_t a = fx.Handle(), b = other.Handle();
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
        EXPECT_EQ(fx.bytes, before);
    }
}

// Wider than what is kept of the rows above and below.
TEST_P(Blends, FindTheEdgeInRowsOfAnyWidth) {
    std::mt19937 random(3);
    for (const int32_t width : {14336, 14337, 16384, 20000}) {
        Buffer fx(width, 3, true, false), target(width, 3, true, false);
        fx.Fill(random, 2);
        const Bytes expected = Merged(fx.header, fx.Block(), target.Block(), 3);
        Merge(fx.Handle(), target.Handle(), 3);
        EXPECT_TRUE(target.Block() == expected) << width;
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, Blends, kEachLevel);

}  // namespace
}  // namespace fenlight::test
