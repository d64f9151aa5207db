// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "platform/raster/model.h"
#include "platform/raster/row_kernels.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using platform::Block;
using platform::ScaledBlock;
using platform::TransferColours;

constexpr TransferColours kColours{0x302010, 0x0000FF, 0x302010, 0x01FF00};

ScaledBlock Scaled(const Block &b) {
    return {b.targetX, b.targetY, b.width, b.height, b.sourceX, b.sourceY, b.width, b.height};
}

std::string Describe(const PixelView &target, const PixelView &source, const ScaledBlock &b, DWORD code) {
    std::string text = "formats " + std::to_string(static_cast<int>(source.format)) + " to " +
                       std::to_string(static_cast<int>(target.format)) + ", code " +
                       std::to_string(code >> 16);
    for (const int32_t number : {b.targetX, b.targetY, b.targetWidth, b.targetHeight, b.sourceX, b.sourceY,
                                 b.sourceWidth, b.sourceHeight}) {
        text += ' ' + std::to_string(number);
    }
    return text;
}

// Runs the transfer and the model on equal bitmaps and compares all bytes, those around the rows too.
template <typename Transfer>
void ExpectLikeModel(Bitmap &target, const PixelView &source, const ScaledBlock &block, DWORD code,
                     const TransferColours &colours, Key key, Transfer transfer) {
    const std::vector<uint8_t> before = target.Bytes();
    ASSERT_TRUE(transfer());
    const std::vector<uint8_t> actual = target.Bytes();
    target.Bytes() = before;
    ModelTransfer(target.View(), &source, block, code, colours, key);
    ASSERT_EQ(actual, target.Bytes()) << Describe(target.View(), source, block, code);
}

void CheckBlit(Bitmap &target, const PixelView &source, const Block &block, DWORD code) {
    ExpectLikeModel(target, source, Scaled(block), code, kColours, {},
                    [&] { return BlitBlock(target.View(), &source, block, code, kColours); });
}

void CheckStretch(Bitmap &target, const PixelView &source, const ScaledBlock &block, DWORD code) {
    ExpectLikeModel(target, source, block, code, kColours, {},
                    [&] { return StretchBlock(target.View(), &source, block, code, kColours); });
}

void CheckKeyed(Bitmap &target, const PixelView &source, const ScaledBlock &block, COLORREF key) {
    TransferColours own;
    own.sourceBackground = kColours.sourceBackground;
    ExpectLikeModel(target, source, block, SRCCOPY, own, {true, key},
                    [&] { return KeyedBlock(target.View(), source, block, key, kColours); });
}

template <typename Action>
void ForEachPairOfFormats(Action action) {
    for (const PixelFormat from : kAllFormats)
        for (const PixelFormat to : kAllFormats)
            if (!::testing::Test::HasFatalFailure()) action(from, to);
}

int32_t Between(std::mt19937 &random, int low, int high) {
    return low + static_cast<int32_t>(random() % static_cast<unsigned>(high - low + 1));
}

// Positions and sizes that stick out now and then.
Block RandomBlock(std::mt19937 &random) {
    return {Between(random, -5, 30), Between(random, -3, 5),  Between(random, 0, 50),
            Between(random, 0, 9),   Between(random, -5, 30), Between(random, -3, 5)};
}

ScaledBlock RandomScaledBlock(std::mt19937 &random) {
    const auto size = [&](int high) { return Between(random, -high, high); };
    return {Between(random, -20, 50), Between(random, -9, 15), size(90), size(20),
            Between(random, -5, 40),  Between(random, -3, 9),  size(50), size(12)};
}

TEST(BlitBlock, GivesWhatTheTruthTableSaysForEveryCodeAndPairOfFormats) {
    std::mt19937 random(11);
    ForEachPairOfFormats([&](PixelFormat from, PixelFormat to) {
        Bitmap source(from, 37, 7, random, true);
        Bitmap target(to, 41, 7, random);
        for (DWORD table = 0; table < 256 && !HasFatalFailure(); ++table) {
            if (table % 8 == 0) target.Palette() = table % 16 == 0 ? source.Palette() : target.Palette();
            CheckBlit(target, source.View(), RandomBlock(random), table << 16);
        }
    });
}

TEST(BlitBlock, CrossesThePiecesOfLongRows) {
    std::mt19937 random(12);
    ForEachPairOfFormats([&](PixelFormat from, PixelFormat to) {
        Bitmap source(from, 1203, 2, random);
        Bitmap target(to, 1201, 2, random);
        for (const DWORD code : {SRCCOPY, SRCPAINT, PATINVERT, DSTINVERT, WHITENESS})
            CheckBlit(target, source.View(), {1, 0, 1300, 2, 3, 0}, code);
    });
}

// The row loops, at widths around those of their vectors.
class EachVersion : public ::testing::TestWithParam<const platform::RowKernels *> {
  protected:
    void SetUp() override { platform::ForceKernels(GetParam()); }
    void TearDown() override { platform::ForceKernels(nullptr); }
};
INSTANTIATE_TEST_SUITE_P(, EachVersion, ::testing::ValuesIn(platform::AvailableKernels()),
                         [](const auto &version) { return version.param->name; });

TEST_P(EachVersion, CopiesAndKeysRowsOfAnyWidth) {
    std::mt19937 random(17);
    ForEachPairOfFormats([&](PixelFormat from, PixelFormat to) {
        for (int width = 1; width <= 140 && !HasFatalFailure(); ++width) {
            const Block block{width % 5, 0, width, 3, width % 4, 0};
            Bitmap source(from, width + block.sourceX, 3, random);
            Bitmap target(to, width + 2 * block.targetX, 3, random, true);
            CheckKeyed(target, source.View(), Scaled(block),
                       width % 9 == 0 ? CLR_INVALID : Bitmap::kColours[random() % 7]);
            CheckBlit(target, source.View(), block, SRCCOPY);
        }
    });
}

TEST(BlitBlock, NeedsNoSourceWhereTheCodeHasNoneAndFailsWhereItHas) {
    std::mt19937 random(13);
    for (const PixelFormat format : kAllFormats) {
        Bitmap target(format, 40, 9, random);
        for (const DWORD code : {PATCOPY, PATINVERT, DSTINVERT, BLACKNESS, WHITENESS, DWORD{0x0F0000}}) {
            const Block block{3, 2, 30, 20, -1000, 1000};
            ExpectLikeModel(target, target.View(), Scaled(block), code, kColours, {},
                            [&] { return BlitBlock(target.View(), nullptr, block, code, kColours); });
        }
        const std::vector<uint8_t> before = target.Bytes();
        EXPECT_FALSE(BlitBlock(target.View(), nullptr, {0, 0, 5, 5, 0, 0}, SRCCOPY, kColours));
        EXPECT_FALSE(StretchBlock(target.View(), nullptr, {0, 0, 5, 5, 0, 0, 2, 2}, PATPAINT, kColours));
        EXPECT_EQ(before, target.Bytes());
    }
}

TEST(Transfers, ClipAtTheEndsOfTheNumbers) {
    constexpr int32_t kMin = INT32_MIN;
    constexpr int32_t kMax = INT32_MAX;
    std::mt19937 random(14);
    Bitmap source(PixelFormat::Bgr24, 9, 8, random);
    Bitmap target(PixelFormat::Bgrx32, 8, 9, random);
    const std::vector<Block> blocks{
        {kMin, kMin, kMax, kMax, 0, 0},       {kMax, 0, kMax, kMax, kMax, 0}, {-5, -5, kMax, kMax, -4, -6},
        {kMin + 1, 0, kMax, 4, kMin + 1, 0},  {2, 1, kMax, kMax, 3, 2},       {0, 0, -4, 5, 0, 0},
        {-kMax, -kMax, kMax, kMax, 0, 0},     {4, 4, kMin, kMin, 4, 4},       {0, 0, 3, 0, 0, 0},
        {kMin, kMin, kMax, kMax, kMin, kMin}, {0, 0, kMax, kMax, kMin, 0},    {7, 8, kMax, kMax, 8, 7}};
    for (const Block &block : blocks) {
        ScaledBlock plain = Scaled(block);
        if (block.width < 0) plain.targetWidth = plain.sourceWidth = 0;
        ExpectLikeModel(target, source.View(), plain, SRCCOPY, kColours, {},
                        [&] { return BlitBlock(target.View(), &source.View(), block, SRCCOPY, kColours); });
        CheckKeyed(target, source.View(), Scaled(block), 0xFF);
    }
    const std::vector<ScaledBlock> scaled{{kMin, kMin, kMax, kMax, 0, 0, 9, 8},
                                          {kMax, kMax, kMin, kMin, kMax, kMax, kMin, kMin},
                                          {kMax, 0, kMin, 9, 0, 0, kMax, 8},
                                          {0, 0, kMax, kMax, 8, 7, kMin, kMin},
                                          {-kMax / 2, -kMax / 2, kMax, kMax, 0, 0, 9, 8},
                                          {0, 0, 8, 9, kMin, kMin, kMax, kMax},
                                          {7, 8, kMin, kMin, 8, 7, -9, -8},
                                          {0, 0, 8, 9, -kMax / 2, -kMax / 2, kMax, kMax},
                                          {0, 0, 0, 5, 0, 0, 3, 3},
                                          {0, 0, 5, 5, 0, 0, 3, 0}};
    for (const ScaledBlock &block : scaled)
        for (const DWORD code : {SRCCOPY, DSTINVERT}) CheckStretch(target, source.View(), block, code);
}

TEST(StretchBlock, TakesTheSampleOfTheDefinitionForEveryPairOfFormats) {
    std::mt19937 random(15);
    ForEachPairOfFormats([&](PixelFormat from, PixelFormat to) {
        Bitmap source(from, 37, 9, random);
        Bitmap target(to, 61, 13, random, true);
        for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
            const DWORD code = round % 2 == 0 ? SRCCOPY : static_cast<DWORD>(random() % 256) << 16;
            const ScaledBlock block = RandomScaledBlock(random);
            CheckStretch(target, source.View(), block, code);
            CheckKeyed(target, source.View(), block,
                       round % 5 == 0 ? CLR_INVALID : Bitmap::kColours[random() % 7]);
        }
    });
}

// The ways of the row loops change with the ratio, each at its own.
TEST_P(EachVersion, TakesTheSampleOfTheDefinitionAtEveryRatio) {
    std::mt19937 random(24);
    for (const PixelFormat to : {PixelFormat::Bgr24, PixelFormat::Bgrx32}) {
        Bitmap source(to, 261, 2, random);
        Bitmap target(to, 72, 3, random);
        for (int32_t width = 1; width <= 261 && !HasFatalFailure(); ++width) {
            for (const int32_t size : {64, Between(random, 1, 70), -Between(random, 1, 70)}) {
                const int32_t first = width % 3 == 0 ? 0 : 261 - width;
                CheckStretch(target, source.View(), {size < 0 ? 70 : 1, 0, size, 3, first, 0, width, 2},
                             SRCCOPY);
            }
        }
    }
}

// Targets too big for the caches are written past them. Their halves are not.
TEST_P(EachVersion, ScalesToABigPictureAsToItsHalves) {
    constexpr int32_t kWidth = 2051, kHeight = 1600, kHalf = kHeight / 2;
    std::mt19937 random(22);
    for (const int32_t columns : {901, 2900, 5000}) {
        std::vector<uint32_t> from(static_cast<size_t>(columns * 9)), whole(kWidth * kHeight), halves = whole;
        for (uint32_t &pixel : from) pixel = static_cast<uint32_t>(random());
        const auto view = [](std::vector<uint32_t> &pixels, int32_t width, int32_t height, int32_t top = 0) {
            auto *bytes = reinterpret_cast<uint8_t *>(pixels.data());
            return PixelView{bytes + 4 * width * top, 4 * width, width, height, PixelFormat::Bgrx32, {}, 0};
        };
        const PixelView source = view(from, columns, 9);
        const int32_t sign = columns == 2900 ? -1 : 1;
        ScaledBlock block{0, 0, kWidth, kHeight, sign < 0 ? columns - 1 : 0, 0, sign * columns, 9};
        StretchBlock(view(whole, kWidth, kHeight), &source, block, SRCCOPY, {});
        StretchBlock(view(halves, kWidth, kHalf), &source, block, SRCCOPY, {});
        block.targetY = -kHalf;
        StretchBlock(view(halves, kWidth, kHalf, kHalf), &source, block, SRCCOPY, {});
        ASSERT_TRUE(whole == halves) << columns;
        ASSERT_EQ(whole.front(), from[static_cast<size_t>(block.sourceX)]);
    }
}

// Rows worked out by hand.
TEST(StretchBlock, DropsRepeatsAndMirrorsPixels) {
    struct Case {
        ScaledBlock block;
        std::vector<uint8_t> row;
    };
    const std::vector<uint8_t> pixels{1, 2, 3, 4, 5};
    for (const Case &c : std::vector<Case>{{{0, 0, 8, 1, 1, 0, 4, 1}, {2, 2, 3, 3, 4, 4, 5, 5}},
                                           {{0, 0, 3, 1, 0, 0, 5, 1}, {1, 2, 4, 0, 0, 0, 0, 0}},
                                           {{1, 0, 7, 1, 0, 0, 5, 1}, {0, 1, 1, 2, 3, 3, 4, 5}},
                                           {{4, 0, -5, 1, 0, 0, 5, 1}, {5, 4, 3, 2, 1, 0, 0, 0}},
                                           {{0, 0, 5, 1, 4, 0, -5, 1}, {5, 4, 3, 2, 1, 0, 0, 0}},
                                           {{-2, 0, 10, 1, 0, 0, 5, 1}, {2, 2, 3, 3, 4, 4, 5, 5}}}) {
        std::vector<uint8_t> from = pixels;
        std::vector<uint8_t> to(8, 0);
        const std::vector<uint32_t> palette(256, 0);
        const PixelView source{from.data(), 5, 5, 1, PixelFormat::Indexed8, palette.data(), 256};
        const PixelView target{to.data(), 8, 8, 1, PixelFormat::Indexed8, palette.data(), 256};
        ASSERT_TRUE(StretchBlock(target, &source, c.block, SRCCOPY, {}));
        EXPECT_EQ(to, c.row) << Describe(target, source, c.block, SRCCOPY);
    }
}

TEST(Transfers, ReadEverythingBeforeItIsOverwritten) {
    std::mt19937 random(16);
    const auto check = [&](Bitmap &bitmap, const PixelView &source, int rounds) {
        for (int round = 0; round < rounds; ++round) {
            Block block = RandomBlock(random);
            block.width += round % 3 == 0 ? 600 : 0;
            if (round % 4 == 0) block.targetY = block.sourceY;
            const DWORD code = round % 2 == 0 ? SRCCOPY : static_cast<DWORD>(random() % 256) << 16;
            const ScaledBlock scaled = round % 3 == 0 ? Scaled(block) : RandomScaledBlock(random);
            CheckBlit(bitmap, source, block, code);
            CheckStretch(bitmap, source, scaled, code);
            CheckKeyed(bitmap, source, scaled, Bitmap::kColours[random() % 7]);
            if (::testing::Test::HasFatalFailure()) return;
        }
    };
    for (const PixelFormat format : kAllFormats) {
        Bitmap bitmap(format, 700, 9, random, format == PixelFormat::Bgr24);
        check(bitmap, bitmap.View(), 40);
        // Another layout over the same bytes: upside down, one row less, then as pixels of half the size.
        PixelView other = bitmap.View();
        other.topRow = other.Row(other.height - 1);
        other.pitch = -other.pitch;
        other.height -= 1;
        check(bitmap, other, 12);
        if (HasFatalFailure()) return;
        other.format = PixelFormat::Mono;
        check(bitmap, other, 12);
        if (HasFatalFailure()) return;
    }
}

TEST_P(EachVersion, CopiesEachPixelOfAUnionAndNoOther) {
    std::mt19937 random(18);
    ForEachPairOfFormats([&](PixelFormat from, PixelFormat to) {
        Bitmap source(from, 331, 60, random);
        Bitmap target(to, 340, 55, random, true);
        for (const int count : {0, 1, 3, 40, 1500}) {
            std::vector<RECT> rectangles{{INT32_MIN, INT32_MIN, 2, 1},
                                         {330, 50, INT32_MAX, INT32_MAX},
                                         {9, 9, 9, 20},
                                         {20, 9, 10, 20},
                                         {INT32_MIN, 3, INT32_MIN, 9},
                                         {INT32_MAX, INT32_MAX, INT32_MIN, 0}};
            rectangles.resize(std::min<size_t>(rectangles.size(), static_cast<size_t>(count)));
            while (rectangles.size() < static_cast<size_t>(count)) {
                const LONG x = Between(random, -20, 340);
                const LONG y = Between(random, -20, 60);
                rectangles.push_back({x, y, x + Between(random, -1, random() % 8 == 0 ? 250 : 30),
                                      y + Between(random, -1, 9)});
            }
            const std::vector<uint8_t> before = target.Bytes();
            ASSERT_TRUE(CopyUnion(target.View(), source.View(), rectangles, kColours));
            const std::vector<uint8_t> actual = target.Bytes();
            target.Bytes() = before;
            for (int y = 0; y < 55; ++y) {
                for (int x = 0; x < 331; ++x) {
                    const bool isCovered =
                        std::any_of(rectangles.begin(), rectangles.end(), [=](const RECT &r) {
                            return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
                        });
                    if (!isCovered) continue;
                    const uint32_t raw = RawPixel(source.View(), x, y);
                    SetRawPixel(target.View(), x, y,
                                ModelConvert(source.View(), target.View(), raw, kColours));
                }
            }
            ASSERT_EQ(actual, target.Bytes()) << count << " rectangles, formats " << static_cast<int>(from)
                                              << " to " << static_cast<int>(to);
        }
    });
}

TEST(Transfers, WithoutMemoryEitherDoWithoutItOrFailAndChangeNothing) {
    std::mt19937 random(20);
    Bitmap bitmap(PixelFormat::Bgrx32, 40, 9, random);
    PixelView mirrored = bitmap.View();
    mirrored.topRow = mirrored.Row(8);
    mirrored.pitch = -mirrored.pitch;
    Bitmap target(PixelFormat::Bgrx32, 40, 9, random);
    const std::vector<uint8_t> before = bitmap.Bytes();
    const std::vector<RECT> rectangles(5, RECT{3, 1, 33, 8});
    platform::FailFrom(platform::Operation::Memory, 1);
    EXPECT_FALSE(BlitBlock(bitmap.View(), &mirrored, {0, 0, 40, 9, 1, 0}, SRCCOPY, {}));
    EXPECT_FALSE(StretchBlock(bitmap.View(), &mirrored, {0, 0, 40, 9, 0, 0, 30, 5}, SRCCOPY, {}));
    EXPECT_FALSE(KeyedBlock(bitmap.View(), mirrored, {0, 0, 40, 9, 0, 0, 30, 5}, 0, {}));
    EXPECT_EQ(bitmap.Bytes(), before);
    ExpectLikeModel(target, bitmap.View(), {3, 1, 30, 7, 3, 1, 30, 7}, SRCCOPY, {}, {},
                    [&] { return CopyUnion(target.View(), bitmap.View(), rectangles, {}); });
    EXPECT_EQ(platform::CountOperations(platform::Operation::Memory), 4);
    platform::ForgetFailures();
}

TEST(Pixels, ReadWriteAndMatchInEveryFormat) {
    std::mt19937 random(19);
    for (const PixelFormat format : kAllFormats) {
        Bitmap bitmap(format, 19, 3, random, true);
        const PixelView &view = bitmap.View();
        for (int x = 0; x < 19; ++x) {
            const COLORREF colour = random() & 0xFFFFFF;
            const std::vector<uint32_t> before = TakePixels(view);
            const uint32_t expected = ModelMatch(view, platform::SwapRedBlue(colour));
            WritePixel(view, x, 1, colour | 0x7F000000);
            std::vector<uint32_t> after = TakePixels(view);
            EXPECT_EQ(after[static_cast<size_t>(19 + x)], expected);
            EXPECT_EQ(ReadPixel(view, x, 1), platform::SwapRedBlue(ModelColour(view, expected)));
            EXPECT_EQ(NearestColour(view, colour), ReadPixel(view, x, 1));
            after[static_cast<size_t>(19 + x)] = before[static_cast<size_t>(19 + x)];
            EXPECT_EQ(after, before) << "a neighbour changed, format " << static_cast<int>(format);
        }
    }
}

}  // namespace
}  // namespace fenlight::test
