// SPDX-License-Identifier: Zlib
#include <vector>

#include "fx/fx_picture.h"
#include "fx/pixel_walks.h"

namespace fenlight::test {
namespace {

// A buffer whose bytes count how often a walk came by.
struct Counted {
    Counted(int32_t width, int32_t height, bool isPadded)
        : bytes(static_cast<size_t>((isPadded ? (3 * width + 3) / 4 * 4 : 3 * width) * height)) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(bytes.size());
        header.Pixels = bytes.data();
    }
    Counted(const Counted &) = delete;
    std::vector<uint8_t> bytes;
    FXHeader header{};
};

// Ones where `isWalked(pixel's row and column in packed rows)` says so; nothing behind the packed rows.
template <typename IsWalked>
std::vector<uint8_t> Marks(const Counted &buffer, IsWalked isWalked) {
    std::vector<uint8_t> marks(buffer.bytes.size());
    const int32_t width = buffer.header.biWidth;
    for (int32_t i = 0; i < 3 * width * buffer.header.biHeight; ++i)
        marks[static_cast<size_t>(i)] = isWalked(i / 3 / width, i / 3 % width) ? 1 : 0;
    return marks;
}

TEST(PixelWalks, ComeByEachByteOfTheirsOnceAndByNoOther) {
    constexpr int32_t kHeight = 6;
    for (int32_t width = 1; width <= 9; ++width) {
        for (const bool isPadded : {false, true}) {
            Counted bytes(width, kHeight, isPadded), pixels(width, kHeight, isPadded);
            const BufferRun<1> byteRun = WalkBytes(bytes.header), pixelRun = WalkPixels(pixels.header);
            for (int64_t i = 0; i < byteRun.count; ++i) ++byteRun.starts[0][i];
            EXPECT_EQ(bytes.bytes, std::vector<uint8_t>(bytes.bytes.size(), 1)) << width;
            for (int64_t i = 0; i < 3 * pixelRun.count; ++i) ++pixelRun.starts[0][i];
            EXPECT_EQ(pixels.bytes, Marks(pixels, [](int, int) { return true; })) << width;

            for (int32_t ring = 0; ring <= 3; ++ring) {
                Counted rows(width, kHeight, isPadded);
                ForEachRow(WalkRows(rows.header).Inner(ring), [](uint8_t *row, int64_t count) {
                    for (int64_t i = 0; i < 3 * count; ++i) ++row[i];
                });
                const auto isInside = [=](int32_t y, int32_t x) {
                    return x >= ring && y >= ring && x < width - ring && y < kHeight - ring;
                };
                EXPECT_EQ(rows.bytes, Marks(rows, isInside)) << width << " ring " << ring;
            }
        }
    }
}

TEST(PixelWalks, EndWithTheSmallestOfTheirBuffers) {
    Counted wide(7, 3, true), high(4, 9, false), small(2, 5, true);  // 72, 108 and 40 bytes
    EXPECT_EQ(WalkBytes(wide.header, high.header).count, 72);
    EXPECT_EQ(WalkBytes(wide.header, high.header, small.header).count, 40);
    EXPECT_EQ(WalkPixels(high.header, wide.header).count, 21);
    EXPECT_EQ(WalkPixels(wide.header, small.header, high.header).count, 10);
    const BufferRows<3> rows = WalkRows(wide.header, high.header, small.header);
    EXPECT_EQ(rows.width, 2);
    EXPECT_EQ(rows.rows, 3);
    int32_t row = 0;
    ForEachRow(rows, [&](uint8_t *first, uint8_t *second, uint8_t *third, int64_t width) {
        EXPECT_EQ(width, 2);
        EXPECT_EQ(first - wide.bytes.data(), 21 * row);
        EXPECT_EQ(second - high.bytes.data(), 12 * row);
        EXPECT_EQ(third - small.bytes.data(), 6 * row++);
    });
    EXPECT_EQ(row, 3);
    const BufferRows<1> inBlock = WalkRowsIn(wide.header, small.bytes.data());
    EXPECT_EQ(inBlock.Row(2), small.bytes.data() + 42);
    // A header that promises more than its block, or less than nothing.
    wide.header.biHeight = 100;
    EXPECT_EQ(WalkRows(wide.header).rows, 3);
    EXPECT_EQ(WalkPixels(wide.header).count, 24);
    for (int32_t *const size : {&high.header.biWidth, &small.header.biHeight}) *size = -5;
    EXPECT_EQ(WalkPixels(high.header).count + WalkPixels(small.header).count, 0);
    EXPECT_EQ(WalkRows(wide.header, high.header).rows + WalkRows(small.header).rows, 0);
}

TEST(PixelWalks, AnEffectChangesTheBufferAndThenPaintsIt) {
    Counted buffer(4, 2, false);
    const auto handle = reinterpret_cast<uintptr_t>(&buffer.header);
    const Canvas canvas(4, 2);
    const auto colour = [](const FXHeader &fx) {
        for (int i = 0; i < 24; ++i) fx.Pixels[i] = static_cast<uint8_t>(0x11 * (i % 3 + 1));
    };
    EXPECT_EQ(ChangeAndPaint(canvas.context, 0, 0, 0, colour), 0);
    EXPECT_EQ(ChangeAndPaint(0, 0, 0, handle, colour), 0);
    EXPECT_TRUE(SamePicture("before", PictureOf(canvas.context, 4, 2), Picture(4, 2)));
    EXPECT_EQ(ColourOfPixel(buffer.bytes.data()), 0x112233u);
    EXPECT_EQ(ChangeAndPaint(canvas.context, 0, 0, handle, colour), 0);
    EXPECT_TRUE(SamePicture("after", PictureOf(canvas.context, 4, 2), Picture(4, 2, 0x332211)));
}

}  // namespace
}  // namespace fenlight::test
