// SPDX-License-Identifier: Zlib
#include "fenlight/fx_filters.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include "filter_buffer.h"
#include "platform/graphics/canvas.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

struct Call {
    HDC dc;
    uintptr_t fx, target;
    int32_t a, b, c;
    uint32_t from, to;
};

using ByteRule = std::function<int64_t(int64_t byte, int64_t target)>;
using PixelRule = std::function<void(std::array<int64_t, 3> &pixel)>;

void ForBytes(GuardedBuffer &buffer, GuardedBuffer &target, const ByteRule &rule) {
    for (int64_t i = 0; i < std::min(buffer.header.biSizeImage, target.header.biSizeImage); ++i)
        *buffer.At(i) = static_cast<uint8_t>(rule(*buffer.At(i), *target.At(i)));
}

void ForPixels(GuardedBuffer &buffer, const PixelRule &rule) {
    for (int64_t i = 0; i < buffer.Pixels(); ++i) {
        std::array<int64_t, 3> pixel{*buffer.At(3 * i), *buffer.At(3 * i + 1), *buffer.At(3 * i + 2)};
        rule(pixel);
        for (size_t k = 0; k < 3; ++k)
            *buffer.At(3 * i + static_cast<int64_t>(k)) = static_cast<uint8_t>(pixel[k]);
    }
}

struct Filter {
    const char *name;
    int32_t (*run)(const Call &);
    void (*define)(GuardedBuffer &, GuardedBuffer &target, const Call &);
};

const Filter kFilters[] = {
    {"Darken", [](const Call &call) { return Darken(call.dc, 2, 1, call.fx, call.a); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &call) {
         ForBytes(buffer, buffer,
                  [&](int64_t b, int64_t) { return std::max<int64_t>(b - (call.a & 255), 0); });
     }},
    {"Lighten", [](const Call &call) { return Lighten(call.dc, 2, 1, call.fx, call.a); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &call) {
         ForBytes(buffer, buffer,
                  [&](int64_t b, int64_t) { return std::min<int64_t>(b + (call.a & 255), 255); });
     }},
    {"Grey", [](const Call &call) { return Grey(call.dc, 2, 1, call.fx); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &) {
         ForPixels(buffer, [](auto &pixel) { pixel.fill((pixel[0] + pixel[1] + pixel[2]) / 3); });
     }},
    {"BlackWhite", [](const Call &call) { return BlackWhite(call.dc, 2, 1, call.fx, call.a); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &call) {
         ForPixels(buffer, [&](auto &pixel) {
             pixel.fill((pixel[0] + pixel[1] + pixel[2] + 127) >> 2 < call.a ? 0 : 255);
         });
     }},
    {"Sharpen", [](const Call &call) { return Sharpen(call.dc, 2, 1, call.fx); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &) {
         ForBytes(buffer, buffer, [](int64_t b, int64_t) {
             return b == 0 || b == 255 ? b : b < 127 ? b - 1 : b + 1;
         });
     }},
    {"ColorMove", [](const Call &call) { return ColorMove(call.dc, 2, 1, call.fx, call.target, call.a); },
     [](GuardedBuffer &buffer, GuardedBuffer &target, const Call &call) {
         const int64_t step = std::max(call.a, 0);
         ForBytes(buffer, target, [=](int64_t f, int64_t t) {
             if (f < t) return f + step >= t ? t : f + step;
             return f - step <= t ? t : f - step;
         });
     }},
    {"ExchangeColor",
     [](const Call &call) { return ExchangeColor(call.dc, 2, 1, call.fx, call.from, call.to); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &call) {
         ForPixels(buffer, [&](auto &pixel) {
             if ((pixel[0] << 16 | pixel[1] << 8 | pixel[2]) == call.from)
                 pixel = {call.to >> 16 & 255, call.to >> 8 & 255, call.to & 255};
         });
     }},
    {"ExchangeRgb",
     [](const Call &call) { return ExchangeRgb(call.dc, 2, 1, call.fx, call.a, call.b, call.c); },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &call) {
         ForPixels(buffer, [&](auto &pixel) {
             const int64_t steps[] = {call.c, call.b, call.a};
             for (size_t k = 0; k < 3; ++k) pixel[k] = std::clamp<int64_t>(pixel[k] + steps[k], 0, 255);
         });
     }},
    {"ColorFill", [](const Call &call) { return ColorFill(call.fx, call.to), 0; },
     [](GuardedBuffer &buffer, GuardedBuffer &, const Call &call) {
         ForPixels(buffer, [&](auto &pixel) {
             pixel = {call.to >> 16 & 255, call.to >> 8 & 255, call.to & 255};
         });
     }},
};

class Arguments {
  public:
    explicit Arguments(unsigned seed) : random(seed) {}
    int32_t Between(int32_t low, int32_t high) {
        return low + static_cast<int32_t>(random() % static_cast<unsigned>(high - low + 1));
    }
    // Near the range that has a meaning, or at the ends of all numbers.
    int32_t Number() {
        return random() % 20 == 0 ? (random() % 2 == 0 ? kLeast : kMost) : Between(-300, 300);
    }
    // Of the colours that pictures of few values have; now and then none at all.
    uint32_t Colour() {
        const uint32_t top = random() % 8 == 0 ? 0x5A000000 : 0;
        return top | random() % 2 * 0xFF0000 | random() % 2 * 0xFF00 | random() % 2 * 0xFF;
    }
    std::mt19937 random;
};

class FXFilters : public FilterLevels {};

// No byte but those of the filtered buffer may differ from before, nor any of the header.
TEST_P(FXFilters, DoWhatTheirDefinitionsSayToEveryByte) {
    Arguments arguments(20240719);
    for (const Filter &filter : kFilters) {
        for (int scene = 0; scene < 1500; ++scene) {
            const Rows rows = scene % 2 == 0 ? Rows::Packed : Rows::Padded;
            GuardedBuffer buffer(arguments.Between(1, 67), arguments.Between(1, 35), rows);
            const bool isSameSize = scene % 3 != 0;
            GuardedBuffer target(isSameSize ? buffer.header.biWidth : arguments.Between(1, 67),
                                 isSameSize ? buffer.header.biHeight : arguments.Between(1, 35), rows);
            buffer.Fill(arguments.random, scene % 4 == 0 ? 2 : 256);
            target.Fill(arguments.random, 256);
            const Call call{0,
                            buffer.Handle(),
                            scene % 16 == 0 ? buffer.Handle() : target.Handle(),
                            arguments.Number(),
                            arguments.Number(),
                            arguments.Number(),
                            arguments.Colour(),
                            arguments.Colour() + static_cast<uint32_t>(arguments.Between(0, 99))};
            GuardedBuffer expected(buffer), expectedTarget(target);
            filter.define(expected, scene % 16 == 0 ? expected : expectedTarget, call);
            ASSERT_EQ(filter.run(call), 0);
            ASSERT_EQ(buffer.bytes, expected.bytes)
                << filter.name << " scene " << scene << ", " << buffer.header.biWidth << " x "
                << buffer.header.biHeight << ", " << call.a << ' ' << call.b << ' ' << call.c << std::hex
                << ' ' << call.from << ' ' << call.to;
            ASSERT_EQ(target.bytes, expectedTarget.bytes) << filter.name << " scene " << scene;
            ASSERT_EQ(std::memcmp(&buffer.header, &expected.header, sizeof(BITMAPINFOHEADER)), 0);
        }
    }
}

TEST_P(FXFilters, MeetEveryByteWithEveryAmount) {
    Arguments arguments(5);
    GuardedBuffer all(256, 86), targets(256, 86);  // 66048 bytes: every pair of them
    for (uint32_t i = 0; i < all.header.biSizeImage; ++i) {
        *all.At(i) = static_cast<uint8_t>(i);
        *targets.At(i) = static_cast<uint8_t>(i >> 8);
    }
    for (const Filter &filter : kFilters) {
        for (int32_t amount = -2; amount < 258; ++amount) {
            GuardedBuffer buffer(all), expected(all);
            const Call call{0,       buffer.Handle(), targets.Handle(), amount,
                            -amount, amount - 128,    0x10203,          0x40506};
            filter.define(expected, targets, call);
            filter.run(call);
            ASSERT_EQ(buffer.bytes, expected.bytes) << filter.name << ' ' << amount;
        }
    }
}

// What each paints is its outcome; who paints without changing the buffer is BlackWhite alone.
TEST_P(FXFilters, PaintTheirOutcome) {
    Arguments arguments(77);
    for (const Filter &filter : kFilters) {
        for (const auto &[width, rows] :
             {std::pair(20, Rows::Padded), {21, Rows::Padded}, {23, Rows::Packed}}) {
            GuardedBuffer buffer(width, 9, rows), target(width, 9, rows);
            buffer.Fill(arguments.random, 256);
            target.Fill(arguments.random, 256);
            const Canvas canvas(30, 12), expectedCanvas(30, 12);
            const Call call{canvas.context, buffer.Handle(), target.Handle(), 120, -90, 50, 0xFFFFFF, 0x1234};
            GuardedBuffer kept(buffer), expected(buffer);
            filter.define(expected, target, call);
            const std::string name = filter.name;
            if (name != "ColorFill") CopyFX(expectedCanvas.context, 2, 1, expected.Handle());
            EXPECT_EQ(filter.run(call), 0);
            EXPECT_TRUE(SamePicture(name, PictureOf(canvas.context, 30, 12),
                                    PictureOf(expectedCanvas.context, 30, 12)));
            EXPECT_EQ(buffer.bytes, name == "BlackWhite" ? kept.bytes : expected.bytes) << name;
        }
    }
}

TEST_P(FXFilters, DoNothingWithoutBuffersOrMemory) {
    Arguments arguments(3);
    GuardedBuffer buffer(20, 9);
    buffer.Fill(arguments.random, 256);
    const GuardedBuffer kept(buffer);
    const Canvas canvas(30, 12);
    for (const Filter &filter : kFilters)
        EXPECT_EQ(filter.run({canvas.context, 0, buffer.Handle(), 99, 99, 99, 0, 0}), 0) << filter.name;
    EXPECT_EQ(ColorMove(canvas.context, 2, 1, buffer.Handle(), 0, 99), 0);
    platform::FailOnce(platform::Operation::Memory, 1);
    EXPECT_EQ(BlackWhite(canvas.context, 2, 1, buffer.Handle(), 99), 0);
    platform::ForgetFailures();
    EXPECT_EQ(buffer.bytes, kept.bytes);
    EXPECT_TRUE(SamePicture("canvas", PictureOf(canvas.context, 30, 12), Picture(30, 12)));
}

// Values worked out by hand.
TEST_P(FXFilters, KeepTheirCorners) {
    GuardedBuffer buffer(1, 1), target(1, 1);
    const auto becomes = [&](std::array<uint8_t, 3> before, auto filter) {
        std::copy(before.begin(), before.end(), buffer.At(0));
        filter(buffer.Handle());
        return std::array<uint8_t, 3>{*buffer.At(0), *buffer.At(1), *buffer.At(2)};
    };
    using Pixel = std::array<uint8_t, 3>;
    EXPECT_EQ(becomes({255, 254, 0}, [](auto fx) { Darken(0, 0, 0, fx, 0x1FF); }), (Pixel{0, 0, 0}));
    EXPECT_EQ(becomes({255, 7, 0}, [](auto fx) { Lighten(0, 0, 0, fx, 256); }), (Pixel{255, 7, 0}));
    EXPECT_EQ(becomes({1, 1, 0}, [](auto fx) { Grey(0, 0, 0, fx); }), (Pixel{0, 0, 0}));
    EXPECT_EQ(becomes({255, 255, 254}, [](auto fx) { Grey(0, 0, 0, fx); }), (Pixel{254, 254, 254}));
    EXPECT_EQ(becomes({0, 0, 0}, [](auto fx) { BlackWhite(0, 0, 0, fx, 31); }), (Pixel{255, 255, 255}));
    EXPECT_EQ(becomes({0, 0, 0}, [](auto fx) { BlackWhite(0, 0, 0, fx, 32); }), (Pixel{0, 0, 0}));
    EXPECT_EQ(becomes({255, 255, 255}, [](auto fx) { BlackWhite(0, 0, 0, fx, 224); }), (Pixel{0, 0, 0}));
    EXPECT_EQ(becomes({255, 255, 255}, [](auto fx) { BlackWhite(0, 0, 0, fx, 223); }),
              (Pixel{255, 255, 255}));
    EXPECT_EQ(becomes({126, 127, 255}, [](auto fx) { Sharpen(0, 0, 0, fx); }), (Pixel{125, 128, 255}));
    std::fill_n(target.At(0), 3, uint8_t{13});
    const auto move = [&](int32_t step) {
        return [&, step](auto fx) { ColorMove(0, 0, 0, fx, target.Handle(), step); };
    };
    EXPECT_EQ(becomes({10, 13, 20}, move(2)), (Pixel{12, 13, 18}));
    EXPECT_EQ(becomes({10, 13, 20}, move(3)), (Pixel{13, 13, 17}));
    EXPECT_EQ(becomes({10, 13, 20}, move(0)), (Pixel{10, 13, 20}));
    EXPECT_EQ(becomes({3, 2, 1}, [](auto fx) { ExchangeColor(0, 0, 0, fx, 0x030201, 0xFF0A0B0C); }),
              (Pixel{10, 11, 12}));
    EXPECT_EQ(becomes({3, 2, 1}, [](auto fx) { ExchangeColor(0, 0, 0, fx, 0xFF030201, 0); }),
              (Pixel{3, 2, 1}));
    EXPECT_EQ(becomes({3, 250, 99}, [](auto fx) { ExchangeRgb(0, 0, 0, fx, -300, 10, 0); }),
              (Pixel{3, 255, 0}));
    EXPECT_EQ(becomes({0, 0, 0}, [](auto fx) { ColorFill(fx, 0x112233); }), (Pixel{0x11, 0x22, 0x33}));
}

INSTANTIATE_TEST_SUITE_P(Levels, FXFilters, ::testing::ValuesIn(kLevels));

}  // namespace
}  // namespace fenlight::test
