// SPDX-License-Identifier: Zlib
// Every effect against a slow loop that takes its definition word by word, at every vector level.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include "fenlight/fx_geometry.h"
#include "fx/fx_picture.h"
#include "fx/geometry/angle_tables.h"
#include "fx/pixel_walks.h"
#include "platform/system/failure_point.h"
#include "support/each_level.h"

namespace fenlight::test {
namespace {

using Bytes = std::vector<uint8_t>;

// A buffer whose block ends with its last byte. Few colours, so that many pixels have that of the last.
struct Buffer {
    Buffer(int32_t width, int32_t height, bool isPadded, uint64_t seed)
        : bytes(static_cast<size_t>((3 * width + (isPadded ? width % 4 : 0)) * height)) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(bytes.size());
        header.Pixels = bytes.data();
        std::mt19937 random(seed);
        for (size_t i = 0; i < bytes.size(); i += 3) {
            const uint32_t colour = random() % 4 == 0 ? 0x998877 : static_cast<uint32_t>(random());
            std::memcpy(&bytes[i], &colour, std::min<size_t>(3, bytes.size() - i));
        }
        const size_t last = static_cast<size_t>(3 * width * height - 3);
        bytes[last] = 0x77, bytes[last + 1] = 0x88, bytes[last + 2] = 0x99;
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(&header); }

    Bytes bytes;
    FXHeader header{};
};

void SwapThree(uint8_t *a, uint8_t *b) {
    for (int i = 0; i < 3; ++i) std::swap(a[i], b[i]);
}

void FlipXSlowly(const FXHeader &fx) {
    for (int32_t y = 0; y < fx.biHeight; ++y)
        for (int32_t k = 0; k < fx.biWidth / 2; ++k)
            SwapThree(fx.Pixels + 3 * (fx.biWidth * y + k),
                      fx.Pixels + 3 * (fx.biWidth * y + fx.biWidth - 1 - k));
}

void FlipYSlowly(const FXHeader &fx) {
    uint8_t *first = fx.Pixels, *second = fx.Pixels + fx.biSizeImage - 3 * fx.biWidth;
    for (int32_t pair = 0; pair < fx.biHeight / 2; ++pair, first += 3 * fx.biWidth, second -= 3 * fx.biWidth)
        for (int32_t k = 0; k < fx.biWidth; ++k) SwapThree(first + 3 * k, second + 3 * k);
}

void Rotate180Slowly(const FXHeader &fx) {
    uint8_t *a = fx.Pixels, *e = a + fx.biSizeImage - 3;
    for (int64_t c = fx.biSizeImage / 2; c > 0; c -= 3, a += 3, e -= 3) SwapThree(a, e);
}

TEST(Mirrors, SwapThePixelsThatTheirDefinitionSwaps) {
    const struct {
        const char *name;
        int32_t (*effect)(uintptr_t, int32_t, int32_t, uintptr_t) noexcept;
        void (*judge)(const FXHeader &);
    } kMirrors[] = {{"FlipX", FlipX, FlipXSlowly},
                    {"FlipY", FlipY, FlipYSlowly},
                    {"Rotate180", Rotate180, Rotate180Slowly}};
    const Canvas canvas(67, 35), expected(67, 35);
    WithEachLevel([&] {
        for (int32_t i = 0; i < 67 * 12; ++i) {
            const int32_t width = i % 67 + 1, height = i % 35 + 1;
            for (const auto &mirror : kMirrors) {
                const auto seed = static_cast<unsigned>(i);
                Buffer actual(width, height, i % 2 == 0, seed), judged(width, height, i % 2 == 0, seed);
                EXPECT_EQ(mirror.effect(i % 8 == 0 ? canvas.context : 0, 3, -2, actual.Handle()), 0);
                mirror.judge(judged.header);
                ASSERT_EQ(actual.bytes, judged.bytes) << mirror.name << ' ' << width << 'x' << height;
                if (i % 8 != 0) continue;
                CopyFX(expected.context, 3, -2, judged.Handle());
                ASSERT_TRUE(SamePicture(mirror.name, PictureOf(canvas.context, 67, 35),
                                        PictureOf(expected.context, 67, 35)));
            }
        }
        // Rows of more bytes than any version takes at once.
        Buffer wide(1003, 3, true, 1), judged(1003, 3, true, 1);
        for (const auto &mirror : kMirrors) {
            mirror.effect(0, 0, 0, wide.Handle());
            mirror.judge(judged.header);
            ASSERT_EQ(wide.bytes, judged.bytes) << mirror.name;
            EXPECT_EQ(mirror.effect(canvas.context, 0, 0, 0), 0);
        }
    });
}

TEST(AngleTables, HoldWhatTheRuleGivesForAnyNumberOfDegrees) {
    for (int32_t a = 1; a <= 360; ++a) {
        for (const int32_t turns : {0, 1, -1, 5964000, -5965000}) {
            const Direction direction = DirectionOf(a + 360 * turns);
            ASSERT_EQ(direction.sine, static_cast<int32_t>(1024 * std::sin(a * 0.017456)))
                << a << ' ' << turns;
            ASSERT_EQ(direction.cosine, static_cast<int32_t>(1024 * std::cos(a * 0.017456))) << a;
        }
    }
    EXPECT_EQ(DirectionOf(0).cosine, 1023);
    EXPECT_EQ(DirectionOf(INT32_MIN).sine, DirectionOf(360 - 128).sine);
}

// The low 32 bits of a sum, as a number with a sign.
int32_t Wrap(int64_t sum) { return static_cast<int32_t>(static_cast<uint32_t>(sum)); }

struct Origin {
    Origin(Direction d, int32_t width, int32_t height) {
        const int64_t cx = width >> 1, cy = height >> 1;
        x = Wrap(cx - ((Wrap(d.cosine * cx) >> 10) - (Wrap(d.sine * cy) >> 10)));
        y = Wrap(cy - ((Wrap(d.sine * cx) >> 10) + (Wrap(d.cosine * cy) >> 10)));
    }
    int32_t x, y;
};

Bytes RotateSlowly(const FXHeader &background, const FXHeader &fx, int32_t degrees, int32_t mode) {
    Bytes result(background.Pixels, background.Pixels + background.biSizeImage);
    const int32_t width = background.biWidth, height = background.biHeight;
    const COLORREF key = ColourOfPixel(fx.Pixels + 3 * fx.biWidth * fx.biHeight - 3);
    const Direction d = DirectionOf(360 - degrees);
    const Origin origin(d, width, height);
    const uint8_t *pixel = fx.Pixels;
    int64_t left = int64_t{fx.biWidth} * fx.biHeight;
    for (int64_t yi = 0; yi < height; ++yi) {
        for (int64_t xi = 0; xi < width && left > 0; ++xi, --left, pixel += 3) {
            if (mode == -1 && ColourOfPixel(pixel) == key) continue;
            const int64_t x = Wrap((Wrap(d.cosine * xi - d.sine * yi) >> 10) + origin.x);
            const int64_t y = Wrap((Wrap(d.sine * xi + d.cosine * yi) >> 10) + origin.y);
            if (x < 0 || x + 1 >= width || y < 0 || y >= height) continue;
            std::memcpy(&result[static_cast<size_t>(3 * (y * width + x))], pixel, 3);
            std::memcpy(&result[static_cast<size_t>(3 * (y * width + x) + 3)], pixel, 3);
        }
    }
    return result;
}

// Painted where it lies inside the target and, every second time, where it does not; on 24 bits at times.
void ExpectRotated(const Buffer &background, const Buffer &fx, int32_t degrees, int32_t mode) {
    const int32_t width = background.header.biWidth + 1, height = background.header.biHeight + 1;
    const int32_t y = degrees % 2 == 0 ? 1 : -1;
    const int depth = degrees % 5 == 1 ? 24 : 32;
    const Canvas actual(BitmapOfDepth(width, height, depth)), expected(BitmapOfDepth(width, height, depth));
    const Bytes before = fx.bytes, behind = background.bytes;
    EXPECT_EQ(Rotate(actual.context, 1, y, background.Handle(), fx.Handle(), degrees, mode), 0);
    ASSERT_TRUE(before == fx.bytes && behind == background.bytes);
    const int32_t reduced = degrees % 360 < 0 ? degrees % 360 + 360 : degrees % 360;
    const Bytes result = RotateSlowly(background.header, fx.header, reduced, mode);
    PaintFX(expected.context, 1, y, background.header, result.data());
    ASSERT_TRUE(SamePicture("rotated", PictureOf(actual.context, width, height),
                            PictureOf(expected.context, width, height)))
        << width - 1 << 'x' << height - 1 << " by " << degrees << " in mode " << mode;
}

TEST(Rotate, DrawsWhatPixelAfterPixelGives) {
    std::mt19937 random(4);
    const auto below = [&](uint32_t range) { return static_cast<int32_t>(random() % range); };
    WithEachLevel([&] {
        for (int32_t i = 0; i < 1500; ++i) {
            const int32_t width = below(67) + 1, height = below(35) + 1;
            const Buffer background(width, height, i % 3 != 0, random()),
                fx(width, height, i % 5 != 0, random());
            ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, i % 401 - 20, i % 2 - 1));
        }
        for (const int32_t degrees : {INT32_MIN, -1000000000, 7, 90, 133, 180, 270, INT32_MAX}) {
            const Buffer background(331, 190, true, random()), fx(331, 190, true, random());
            ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, degrees, degrees % 2 - 1));
        }
        // The smaller buffer ends it.
        for (int32_t i = 0; i < 100; ++i) {
            const Buffer background(below(20) + 1, below(20) + 1, i % 2 == 0, random());
            const Buffer fx(below(20) + 1, below(20) + 1, i % 3 == 0, random());
            ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, 17 * i, i % 2 - 1));
        }
    });
    // Coordinates beyond 32 bits come round again.
    const Buffer background(2200000, 2, true, 1), fx(2200000, 2, true, 2);
    for (const int32_t degrees : {0, 1, 180})
        ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, degrees, -1));
}

TEST(Rotate, ShowsTheScaleOfTheTablesAndLeavesItsTargetWithoutMemory) {
    const Buffer background(8, 8, false, 1), fx(8, 8, false, 2);
    const Picture behind = PictureInBlock(background.header, 24), front = PictureInBlock(fx.header, 24);
    Picture expected = behind;
    for (int y = 1; y < 8; ++y)
        for (int x = 1; x < 8; ++x) expected.At(x, y) = front.At(std::min(x, 6), y);
    const Canvas canvas(8, 8);
    for (const uintptr_t missing : {background.Handle(), uintptr_t{0}})
        EXPECT_EQ(Rotate(missing != 0 ? 0 : canvas.context, 0, 0, missing, fx.Handle(), 0, 0), 0);
    EXPECT_EQ(Rotate(canvas.context, 0, 0, background.Handle(), 0, 0, 0), 0);
    platform::FailFrom(platform::Operation::Memory, 1);
    EXPECT_EQ(Rotate(canvas.context, 1, 0, background.Handle(), fx.Handle(), 0, 0), 0);
    platform::ForgetFailures();
    EXPECT_TRUE(SamePicture("untouched", PictureOf(canvas.context, 8, 8), Picture(8, 8)));
    EXPECT_EQ(Rotate(canvas.context, 0, 0, background.Handle(), fx.Handle(), 0, 0), 0);
    EXPECT_TRUE(SamePicture("scaled", PictureOf(canvas.context, 8, 8), expected));
}

struct Rectangle {
    int32_t x, y, width, height, sourceX, sourceY;
};

COLORREF RotateImageSlowly(HDC dc, HDC sourceDC, const Rectangle &r, int32_t degrees, int32_t mode) {
    const Direction d = DirectionOf(degrees);
    const COLORREF key = GetPixel(sourceDC, r.sourceX + r.width - 1, r.sourceY);
    const Origin origin(d, r.width, r.height);
    for (int32_t yi = r.height - 1; yi >= 1; --yi) {
        for (int32_t xi = r.width - 1; xi >= 1; --xi) {
            const int32_t x = (d.cosine * xi >> 10) - (d.sine * yi >> 10) + origin.x + r.x;
            const int32_t y = (d.sine * xi >> 10) + (d.cosine * yi >> 10) + origin.y + r.y;
            const COLORREF colour = GetPixel(sourceDC, xi + r.sourceX, yi + r.sourceY);
            if (mode == -1 && colour == key) continue;
            SetPixel(dc, x, y, colour);
            SetPixel(dc, x - 1, y, colour);
        }
    }
    return key;
}

// Noise of which a third has the colour of the top right pixel.
void DrawKeyedNoise(HDC context, int32_t width, int32_t height) {
    DrawNoise(context, width, height);
    for (int32_t i = 0; i < width * height; i += i % 7 == 0 ? 1 : 5)
        SetPixel(context, i % width, i / width, 0x336699);
    SetPixel(context, width - 1, 0, 0x336699);
}

// One canvas as the source and one as the target, or one for both.
struct Stage {
    Stage(int sourceDepth, int targetDepth, bool isOne)
        : source(BitmapOfDepth(kWidth, kHeight, sourceDepth)),
          target(BitmapOfDepth(kWidth, kHeight, targetDepth)),
          dc(isOne ? source.context : target.context) {
        DrawKeyedNoise(source.context, kWidth, kHeight);
    }
    static constexpr int32_t kWidth = 90, kHeight = 60;
    const Canvas source, target;
    const HDC dc;
};

TEST(RotateImage, DrawsWhatGetPixelAndSetPixelGive) {
    std::mt19937 random(9);
    const auto within = [&](int32_t from, int32_t to) {
        return from + static_cast<int32_t>(random() % static_cast<unsigned>(to - from + 1));
    };
    WithEachLevel([&] {
        for (int i = 0; i < 360; ++i) {
            const int sourceDepth = i % 3 == 0 ? kDepths[i / 3 % 6] : 32,
                      depth = i % 4 == 0 ? kDepths[i / 4 % 6] : 32;
            const bool isOne = i % 5 == 0;
            const Stage actual(sourceDepth, depth, isOne), expected(sourceDepth, depth, isOne);
            Rectangle r{within(-20, 60), within(-20, 40), within(2, 110), within(2, 70), 0, 0};
            if (i % 2 == 0) r.sourceX = within(-40, 40), r.sourceY = within(-20, 20);
            const int32_t degrees = (i * 7) % 361, mode = within(-1, 1);
            ASSERT_EQ(RotateImage(actual.dc, r.x, r.y, r.width, r.height, actual.source.context, r.sourceX,
                                  r.sourceY, i % 2 == 0 ? degrees : degrees - 3600, mode),
                      RotateImageSlowly(expected.dc, expected.source.context, r, degrees, mode));
            ASSERT_TRUE(SamePicture("turned", PictureOf(actual.dc, 90, 60), PictureOf(expected.dc, 90, 60)))
                << "picture " << i << ", " << sourceDepth << " to " << depth << " bits";
        }
    });
}

TEST(RotateImage, OfNothingOrTooMuchGivesTheKeyColourInTheEnd) {
    const Stage stage(32, 32, false);
    const HDC source = stage.source.context;
    const Canvas dead(4, 4);
    DeleteDC(dead.context);
    for (const int32_t size : {-1000000, -1, 0, 1}) {
        const int32_t edge = 1 - size;
        EXPECT_EQ(RotateImage(stage.dc, 0, 0, size, 9, source, edge, 2, 45, 0), GetPixel(source, 0, 2))
            << size;
        EXPECT_EQ(RotateImage(stage.dc, 0, 0, 9, size, source, 5, 2, 45, 0), GetPixel(source, 13, 2)) << size;
    }
    EXPECT_EQ(RotateImage(dead.context, 0, 0, 9, 9, source, 5, 2, 45, 0), GetPixel(source, 13, 2));
    EXPECT_EQ(RotateImage(stage.dc, 0, 0, 9, 9, dead.context, 5, 2, 45, -1), CLR_INVALID);
    EXPECT_TRUE(SamePicture("untouched", PictureOf(stage.dc, 90, 60), Picture(90, 60)));
    for (const int32_t corner : {INT32_MIN, 0, INT32_MAX})
        EXPECT_EQ(RotateImage(stage.dc, corner, corner, INT32_MAX, INT32_MAX, source, corner, corner, 77, -1),
                  CLR_INVALID);
}

// Through a block T, byte after byte.
Bytes RolledSlowly(const Bytes &bytes, int32_t amount, int32_t direction) {
    const auto length = static_cast<int32_t>(bytes.size());
    Bytes t(bytes.size());
    int32_t to = direction == 0 ? amount : length - 1 - amount;
    for (int32_t i = 0; i < length; ++i) {
        if (to < 0) to = length - 1;
        if (to >= length) to = 0;
        t[static_cast<size_t>(to)] = bytes[static_cast<size_t>(direction == 0 ? i : length - 1 - i)];
        to += direction == 0 ? 1 : -1;
    }
    return t;
}

TEST(RotateMem, RollsAsThroughABlockAndLeavesWhatIsAround) {
    const auto check = [](int32_t length, int32_t amount, int32_t direction) {
        Bytes memory(static_cast<size_t>(length) + 10);
        std::iota(memory.begin(), memory.end(), uint8_t{1});
        for (size_t i = 0; i < memory.size(); i += 257) memory[i] = static_cast<uint8_t>(i / 257);
        Bytes expected = memory;
        // Amounts below 0 have no definition through a block: they roll the other way.
        const bool isTurned = amount < 0;
        const Bytes rolled = RolledSlowly({memory.begin() + 5, memory.end() - 5}, isTurned ? -amount : amount,
                                          isTurned ? direction == 0 : direction);
        std::copy(rolled.begin(), rolled.end(), expected.begin() + 5);
        RotateMem(memory.data() + 9, -4, length, amount, direction);
        ASSERT_EQ(memory, expected) << length << " by " << amount << " in direction " << direction;
    };
    for (const int32_t direction : {0, 1, -7})
        for (int32_t length = 1; length <= 12; ++length)
            for (int32_t amount = -14; amount <= 14; ++amount) check(length, amount, direction);
    WithEachLevel([&] {
        for (const int32_t length : {16384, 32770, 100003, 262144})
            for (const int32_t amount :
                 {1, 16383, 16385, 32769, 50001, 61803, 100002, 131072, 200001, -70000})
                check(length, amount, amount % 2);
    });
    check(100, INT32_MAX, 1);
    uint8_t four[]{1, 2, 3, 4};
    RotateMem(four, 0, 4, INT32_MIN, 0);
    for (const int32_t length : {0, -1, INT32_MIN}) RotateMem(four, 0, length, 1, 0);
    RotateMem(nullptr, 0, 4, 1, 0);
    RotateMem(four, 0, 4, 1, 0);
    EXPECT_EQ(Bytes(four, four + 4), (Bytes{4, 1, 2, 3}));
}

}  // namespace
}  // namespace fenlight::test
