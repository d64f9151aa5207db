// SPDX-License-Identifier: Zlib
#include "fenlight/fx_filters.h"

#include <array>
#include <string>

#include "fx/fx_picture.h"
#include "fx/guarded_buffer.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using Pixel = std::array<int64_t, 3>;  // blue, green, red

struct Call {
    HDC dc;
    uintptr_t fx, target;
    int32_t a, b, c;
    uint32_t from, to;
};

Pixel Filled(int64_t grey) { return {grey, grey, grey}; }
int64_t Sum(const Pixel &p) { return p[0] + p[1] + p[2]; }
Pixel Of(uint32_t colour) { return {colour >> 16 & 255, colour >> 8 & 255, colour & 255}; }
int64_t Kept(int64_t value) { return std::clamp<int64_t>(value, 0, 255); }

// What becomes of each byte beside the target's, or of each pixel.
struct Filter {
    const char *name;
    int32_t (*run)(const Call &);
    int64_t (*byteRule)(int64_t byte, int64_t target, const Call &);
    Pixel (*pixelRule)(const Pixel &pixel, const Call &) = nullptr;
};

const Filter kFilters[] = {
    {"Darken", [](const Call &o) { return Darken(o.dc, 2, 1, o.fx, o.a); },
     [](int64_t b, int64_t, const Call &o) { return Kept(b - (o.a & 255)); }},
    {"Lighten", [](const Call &o) { return Lighten(o.dc, 2, 1, o.fx, o.a); },
     [](int64_t b, int64_t, const Call &o) { return Kept(b + (o.a & 255)); }},
    {"Sharpen", [](const Call &o) { return Sharpen(o.dc, 2, 1, o.fx); },
     [](int64_t b, int64_t, const Call &) { return b == 0 || b == 255 ? b
                                                   : b < 127          ? b - 1
                                                                      : b + 1; }},
    {"ColorMove", [](const Call &o) { return ColorMove(o.dc, 2, 1, o.fx, o.target, o.a); },
     [](int64_t f, int64_t t, const Call &o) {
         const int64_t step = std::max(o.a, 0);
         if (f < t) return f + step >= t ? t : f + step;
         return f - step <= t ? t : f - step;
     }},
    {"Grey", [](const Call &o) { return Grey(o.dc, 2, 1, o.fx); }, nullptr,
     [](const Pixel &p, const Call &) { return Filled(Sum(p) / 3); }},
    {"BlackWhite", [](const Call &o) { return BlackWhite(o.dc, 2, 1, o.fx, o.a); }, nullptr,
     [](const Pixel &p, const Call &o) { return Filled((Sum(p) + 127) >> 2 < o.a ? 0 : 255); }},
    {"ExchangeColor", [](const Call &o) { return ExchangeColor(o.dc, 2, 1, o.fx, o.from, o.to); }, nullptr,
     [](const Pixel &p, const Call &o) { return (p[0] << 16 | p[1] << 8 | p[2]) == o.from ? Of(o.to) : p; }},
    {"ExchangeRgb", [](const Call &o) { return ExchangeRgb(o.dc, 2, 1, o.fx, o.a, o.b, o.c); }, nullptr,
     [](const Pixel &p, const Call &o) {
         return Pixel{Kept(p[0] + o.c), Kept(p[1] + o.b), Kept(p[2] + o.a)};
     }},
    {"ColorFill", [](const Call &o) { return ColorFill(o.fx, o.to), 0; }, nullptr,
     [](const Pixel &, const Call &o) { return Of(o.to); }},
};

void Define(const Filter &filter, GuardedBuffer &buffer, GuardedBuffer &otherBuffer, const Call &call) {
    GuardedBuffer &target = std::string(filter.name) == "ColorMove" ? otherBuffer : buffer;
    if (filter.byteRule != nullptr)
        for (int64_t i = 0; i < std::min(buffer.Size(), target.Size()); ++i)
            *buffer.At(i) = static_cast<uint8_t>(filter.byteRule(*buffer.At(i), *target.At(i), call));
    else
        for (uint8_t *at = buffer.At(0); at != buffer.At(3 * buffer.Pixels()); at += 3)
            for (size_t k = 0; const int64_t byte : filter.pixelRule({at[0], at[1], at[2]}, call))
                at[k++] = static_cast<uint8_t>(byte);
}

class FXFilters : public FXLevels {
  protected:
    // Near the range that has a meaning, or at the ends of all numbers.
    int32_t Number() { return dice() % 20 != 0 ? dice.Between(-300, 300) : dice.Toss() ? kLeast : kMost; }
};

// Each is run on pictures that now and then have the searched colour and near ones, against a target of the
// same or another size. No other byte may change, nor the header.
TEST_P(FXFilters, DoWhatTheirDefinitionsSayToEveryByte) {
    for (int scene = 0; scene < 18000; ++scene) {
        const Filter &filter = kFilters[scene % 9];
        GuardedBuffer buffer = dice.AnyNoise();
        const bool isSame = dice.Toss();
        GuardedBuffer target = isSame ? buffer : dice.AnyNoise();
        for (int64_t i = 0; isSame && i < target.Size(); ++i) target[i] ^= static_cast<uint8_t>(dice() & 7);
        // The top byte is part of the colour that is searched, not of the other.
        const uint32_t from = dice() & (dice() % 8 == 0 ? 0x1FFFFFF : 0xFFFFFF), to = dice();
        for (int64_t i = 0; i < buffer.Pixels(); ++i)
            for (size_t k = 0; k < 3 && dice() % 4 != 0; ++k)
                buffer.At(3 * i)[k] = static_cast<uint8_t>(Of(from)[k]);
        const Call call{0, buffer.Handle(), target.Handle(), Number(), Number(), Number(), from, to};
        GuardedBuffer expected(buffer);
        const GuardedBuffer keptTarget(target);
        Define(filter, expected, target, call);
        ASSERT_EQ(filter.run(call), 0);
        ASSERT_TRUE(SameBuffer(buffer, expected))
            << filter.name << " scene " << scene << ", " << call.a << ' ' << call.b << ' ' << call.c;
        ASSERT_TRUE(SameBuffer(target, keptTarget)) << filter.name << " scene " << scene;
    }
}

// BlackWhite alone paints without changing the buffer; ColorFill changes without painting.
TEST_P(FXFilters, PaintTheirOutcomeUnlessABufferOrMemoryIsMissing) {
    for (int scene = 0; scene < 90; ++scene) {
        const Filter &filter = kFilters[scene % 9];
        const std::string name = filter.name;
        GuardedBuffer buffer = dice.Noise(20 + scene % 4, 9), target = dice.Noise(20 + scene % 4, 9);
        const Twins twins(30, 12);
        const Call call{twins.dc, buffer.Handle(), target.Handle(), 120, -90, 50, 0xFFFFFF, 0x1234};
        const GuardedBuffer kept(buffer);
        GuardedBuffer expected(buffer);

        Call nothing = call;
        (name == "ColorMove" && scene % 2 == 0 ? nothing.target : nothing.fx) = 0;
        EXPECT_EQ(filter.run(nothing), 0);
        platform::FailOnce(platform::Operation::Memory, 1);
        EXPECT_EQ(name == "BlackWhite" ? filter.run(call) : 0, 0);
        platform::ForgetFailures();
        EXPECT_TRUE(SameBuffer(buffer, kept)) << name;
        EXPECT_TRUE(twins.Same(name)) << "painted nothing";

        Define(filter, expected, target, call);
        if (name != "ColorFill") CopyFX(twins.expected, 2, 1, expected.Handle());
        EXPECT_EQ(filter.run(call), 0);
        EXPECT_TRUE(twins.Same(name));
        EXPECT_TRUE(SameBuffer(buffer, name == "BlackWhite" ? kept : expected)) << name;
    }
}

// Worked out by hand.
TEST_P(FXFilters, KeepTheirCorners) {
    static GuardedBuffer target(1, 1);
    target.Fill(13);
    const struct {
        Bytes before, after;
        void (*run)(uintptr_t fx);
    } corners[] = {
        {{255, 254, 0}, {0, 0, 0}, [](uintptr_t fx) { Darken(0, 0, 0, fx, 0x1FF); }},
        {{1, 1, 0}, {0, 0, 0}, [](uintptr_t fx) { Grey(0, 0, 0, fx); }},
        {{0, 0, 0}, {0, 0, 0}, [](uintptr_t fx) { BlackWhite(0, 0, 0, fx, 32); }},
        {{255, 255, 255}, {255, 255, 255}, [](uintptr_t fx) { BlackWhite(0, 0, 0, fx, 223); }},
        {{255, 255, 255}, {0, 0, 0}, [](uintptr_t fx) { BlackWhite(0, 0, 0, fx, 224); }},
        {{126, 127, 255}, {125, 128, 255}, [](uintptr_t fx) { Sharpen(0, 0, 0, fx); }},
        {{10, 13, 20}, {12, 13, 18}, [](uintptr_t fx) { ColorMove(0, 0, 0, fx, target.Handle(), 2); }},
        {{3, 2, 1}, {9, 8, 7}, [](uintptr_t fx) { ExchangeColor(0, 0, 0, fx, 0x030201, 0xFF090807); }},
        {{3, 250, 99}, {3, 255, 0}, [](uintptr_t fx) { ExchangeRgb(0, 0, 0, fx, -300, 10, 0); }},
        {{0, 0, 0}, {0x11, 0x22, 0x33}, [](uintptr_t fx) { ColorFill(fx, 0x112233); }},
    };
    for (const auto &[before, after, run] : corners) {
        GuardedBuffer buffer(1, 1);
        buffer.Set(before);
        run(buffer.Handle());
        EXPECT_EQ(buffer.Block(), after) << testing::PrintToString(before);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, FXFilters, kEachLevel);

}  // namespace
}  // namespace fenlight::test
