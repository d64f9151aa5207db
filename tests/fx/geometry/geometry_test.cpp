// SPDX-License-Identifier: Zlib
// Every effect against a slow loop that takes its definition word by word, at every vector level.
#include <cmath>
#include <cstring>
#include <numeric>

#include "fenlight/fx_geometry.h"
#include "fx/fx_picture.h"
#include "fx/geometry/angle_tables.h"
#include "fx/guarded_buffer.h"
#include "fx/pixel_walks.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

// Many pixels have the colour of the last one, the key.
GuardedBuffer KeyedNoise(Dice &dice, int32_t width, int32_t height, bool isPadded) {
    GuardedBuffer fx = dice.Noise(width, height, isPadded ? Rows::Padded : Rows::Packed, 256);
    for (int64_t i = 0; i < 3 * fx.Pixels(); i += 3)
        if (dice() % 4 == 0) std::copy_n(fx.At(3 * fx.Pixels() - 3), 3, fx.At(i));
    return fx;
}

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
    const Twins twins(67, 35);
    Dice dice(1);
    WithEachLevel([&] {
        for (int32_t i = 0; i < 67 * 12; ++i) {
            const int32_t width = i % 67 + 1, height = i % 35 + 1;
            for (const auto &mirror : kMirrors) {
                const GuardedBuffer actual = KeyedNoise(dice, width, height, i % 2 == 0), judged = actual;
                EXPECT_EQ(mirror.effect(i % 8 == 0 ? twins.dc : 0, 3, -2, actual.Handle()), 0);
                mirror.judge(judged.header);
                ASSERT_TRUE(SameBuffer(actual, judged)) << mirror.name;
                if (i % 8 != 0) continue;
                CopyFX(twins.expected, 3, -2, judged.Handle());
                ASSERT_TRUE(twins.Same(mirror.name));
            }
        }
        // Rows of more bytes than any version takes at once.
        const GuardedBuffer wide = KeyedNoise(dice, 1003, 3, true), judged = wide;
        for (const auto &mirror : kMirrors) {
            mirror.effect(0, 0, 0, wide.Handle());
            mirror.judge(judged.header);
            ASSERT_TRUE(SameBuffer(wide, judged)) << mirror.name;
            EXPECT_EQ(mirror.effect(twins.dc, 0, 0, 0), 0);
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
void ExpectRotated(const GuardedBuffer &background, const GuardedBuffer &fx, int32_t degrees, int32_t mode) {
    const Twins twins(background.header.biWidth + 1, background.header.biHeight + 1,
                      degrees % 5 == 1 ? 24 : 32);
    const int32_t y = degrees % 2 == 0 ? 1 : -1;
    const GuardedBuffer before = fx, behind = background;
    EXPECT_EQ(Rotate(twins.dc, 1, y, background.Handle(), fx.Handle(), degrees, mode), 0);
    ASSERT_TRUE(SameBuffer(fx, before) && SameBuffer(background, behind));
    const int32_t reduced = degrees % 360 < 0 ? degrees % 360 + 360 : degrees % 360;
    const Bytes result = RotateSlowly(background.header, fx.header, reduced, mode);
    PaintFX(twins.expected, 1, y, background.header, result.data());
    ASSERT_TRUE(twins.Same("rotated"))
        << twins.width - 1 << 'x' << twins.height - 1 << " by " << degrees << " in mode " << mode;
}

TEST(Rotate, DrawsWhatPixelAfterPixelGives) {
    Dice dice(4);
    const auto noise = [&](int32_t width, int32_t height, bool isPadded) {
        return KeyedNoise(dice, width, height, isPadded);
    };
    WithEachLevel([&] {
        for (int32_t i = 0; i < 1500; ++i) {
            const int32_t width = dice.Between(1, 67), height = dice.Between(1, 35);
            const GuardedBuffer background = noise(width, height, i % 3 != 0),
                                fx = noise(width, height, i % 5 != 0);
            ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, i % 401 - 20, i % 2 - 1));
        }
        for (const int32_t degrees : {INT32_MIN, -1000000000, 7, 90, 133, 180, 270, INT32_MAX}) {
            const GuardedBuffer background = noise(331, 190, true), fx = noise(331, 190, true);
            ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, degrees, degrees % 2 - 1));
        }
        // The smaller buffer ends it.
        for (int32_t i = 0; i < 100; ++i) {
            const GuardedBuffer background = noise(dice.Between(1, 20), dice.Between(1, 20), i % 2 == 0);
            const GuardedBuffer fx = noise(dice.Between(1, 20), dice.Between(1, 20), i % 3 == 0);
            ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, 17 * i, i % 2 - 1));
        }
    });
    // Coordinates beyond 32 bits come round again.
    const GuardedBuffer background = noise(2200000, 2, true), fx = noise(2200000, 2, true);
    for (const int32_t degrees : {0, 1, 180})
        ASSERT_NO_FATAL_FAILURE(ExpectRotated(background, fx, degrees, -1));
}

TEST(Rotate, ShowsTheScaleOfTheTablesAndLeavesItsTargetWithoutMemory) {
    Dice dice(5);
    const GuardedBuffer background = KeyedNoise(dice, 8, 8, false), fx = KeyedNoise(dice, 8, 8, false);
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

TEST(RotateImage, DrawsWhatGetPixelAndSetPixelGive) {
    Dice dice(9);
    const auto within = [&](int32_t from, int32_t to) { return dice.Between(from, to); };
    WithEachLevel([&] {
        for (int i = 0; i < 360; ++i) {
            const int sourceDepth = i % 3 == 0 ? kDepths[i / 3 % 6] : 32,
                      depth = i % 4 == 0 ? kDepths[i / 4 % 6] : 32;
            const Twins source(90, 60, sourceDepth), other(90, 60, depth);
            for (const HDC dc : {source.dc, source.expected}) DrawKeyedNoise(dc, 90, 60);
            const Twins &target = i % 5 == 0 ? source : other;
            Rectangle r{within(-20, 60), within(-20, 40), within(2, 110), within(2, 70), 0, 0};
            if (i % 2 == 0) r.sourceX = within(-40, 40), r.sourceY = within(-20, 20);
            const int32_t degrees = (i * 7) % 361, mode = within(-1, 1);
            ASSERT_EQ(RotateImage(target.dc, r.x, r.y, r.width, r.height, source.dc, r.sourceX, r.sourceY,
                                  i % 2 == 0 ? degrees : degrees - 3600, mode),
                      RotateImageSlowly(target.expected, source.expected, r, degrees, mode));
            ASSERT_TRUE(target.Same("turned"))
                << "picture " << i << ", " << sourceDepth << " to " << depth << " bits";
        }
    });
}

TEST(RotateImage, OfNothingOrTooMuchGivesTheKeyColourInTheEnd) {
    const Twins twins(90, 60);
    const HDC source = twins.expected;
    DrawKeyedNoise(source, 90, 60);
    const Canvas dead(4, 4);
    DeleteDC(dead.context);
    for (const int32_t size : {-1000000, -1, 0, 1}) {
        const int32_t edge = 1 - size;
        EXPECT_EQ(RotateImage(twins.dc, 0, 0, size, 9, source, edge, 2, 45, 0), GetPixel(source, 0, 2))
            << size;
        EXPECT_EQ(RotateImage(twins.dc, 0, 0, 9, size, source, 5, 2, 45, 0), GetPixel(source, 13, 2)) << size;
    }
    EXPECT_EQ(RotateImage(dead.context, 0, 0, 9, 9, source, 5, 2, 45, 0), GetPixel(source, 13, 2));
    EXPECT_EQ(RotateImage(twins.dc, 0, 0, 9, 9, dead.context, 5, 2, 45, -1), CLR_INVALID);
    EXPECT_TRUE(SamePicture("untouched", PictureOf(twins.dc, 90, 60), Picture(90, 60)));
    for (const int32_t corner : {INT32_MIN, 0, INT32_MAX})
        EXPECT_EQ(RotateImage(twins.dc, corner, corner, INT32_MAX, INT32_MAX, source, corner, corner, 77, -1),
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
