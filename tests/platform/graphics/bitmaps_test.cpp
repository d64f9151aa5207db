// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "canvas.h"
#include "platform/graphics/bitmap_resource.h"
#include "platform/graphics/surface_access.h"
#include "platform/raster/raster.h"

namespace fenlight::test {
namespace {

using platform::ScreenContext;
using Bytes = std::vector<uint8_t>;

constexpr int kWidth = 11;
constexpr int kHeight = 5;

// Black and white only, colours that every default palette has, or any, as the depth allows them unchanged.
COLORREF TestColour(int bits, std::mt19937 &random) {
    const COLORREF sixteen[] = {0, 0xFFFFFF, 0x0000FF, 0xFF0000, 0x00FFFF, 0x808080, 0xC0C0C0, 0x000080};
    if (bits == 1) return random() % 2 * 0xFFFFFF;
    return bits < 24 ? sixteen[random() % 8] : static_cast<COLORREF>(random() & 0xFFFFFF);
}

Picture Scribble(HDC context, int width, int height, int bits) {
    std::mt19937 random(static_cast<uint32_t>(bits));
    Picture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const COLORREF colour = TestColour(bits, random);
            picture.At(x, y) = Word(colour);
            EXPECT_EQ(SetPixel(context, x, y, colour), colour);
        }
    return picture;
}

int PitchOf(int width, int bits) { return (width * bits + 31) / 32 * 4; }

// A buffer of DIB lines read by hand, first line first.
uint32_t PixelOfLine(const uint8_t *line, int x, int bits, const RGBQUAD *colours) {
    if (bits >= 24) {
        const uint8_t *pixel = line + x * bits / 8;
        return static_cast<uint32_t>(pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
    }
    const int shift = 8 - bits - x * bits % 8;
    const RGBQUAD &quad = colours[line[x * bits / 8] >> shift & ((1 << bits) - 1)];
    return static_cast<uint32_t>(quad.rgbRed << 16 | quad.rgbGreen << 8 | quad.rgbBlue);
}

Picture PictureOfLines(const uint8_t *lines, DibHeader &dib) {
    const int bits = dib.header.biBitCount;
    Picture picture(dib.header.biWidth, std::abs(dib.header.biHeight));
    for (int line = 0; line < picture.height; ++line)
        for (int x = 0; x < picture.width; ++x)
            picture.At(x, dib.header.biHeight < 0 ? line : picture.height - 1 - line) =
                PixelOfLine(lines + line * PitchOf(picture.width, bits), x, bits, dib.colours);
    return picture;
}

BITMAPINFOHEADER HeaderOf(HDC context, HBITMAP bitmap) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    EXPECT_NE(GetDIBits(context, bitmap, 0, 0, nullptr, &info, 0), 0);
    return info.bmiHeader;
}

TEST(Sections, ShowTheirBitsAsTheHeaderLaysThemOut) {
    for (const int bits : {1, 4, 8, 24, 32}) {
        for (const int height : {kHeight, -kHeight}) {
            SCOPED_TRACE(std::to_string(bits) + " bits, height " + std::to_string(height));
            DibHeader dib(kWidth, height, bits);
            const RGBQUAD colours[] = {{0, 0, 0, 0},       {255, 255, 255, 0}, {0, 0, 255, 9},
                                       {255, 0, 0, 0},     {0, 255, 255, 0},   {128, 128, 128, 0},
                                       {192, 192, 192, 0}, {0, 0, 128, 0}};
            std::copy(std::begin(colours), std::end(colours), dib.colours);
            dib.header.biClrUsed = bits == 1 ? 2 : 8;
            void *address = nullptr;
            const HBITMAP section = CreateDIBSection(0, dib.Info(), DIB_RGB_COLORS, &address, 0, 0);
            ASSERT_NE(section, 0u);
            const Canvas canvas(section);
            const Picture drawn = Scribble(canvas.context, kWidth, kHeight, bits);
            EXPECT_TRUE(SamePicture("section", PictureOfLines(static_cast<uint8_t *>(address), dib), drawn));
            // A compatible bitmap has the same format and colours.
            const HBITMAP compatible = CreateCompatibleBitmap(canvas.context, kWidth, kHeight);
            const Canvas copy(compatible);
            BitBlt(copy.context, 0, 0, kWidth, kHeight, canvas.context, 0, 0, SRCCOPY);
            EXPECT_TRUE(SamePicture("compatible", PictureOf(copy.context, kWidth, kHeight), drawn));
            const BITMAPINFOHEADER described = HeaderOf(copy.context, compatible);
            EXPECT_EQ(described.biBitCount, bits);
            EXPECT_EQ(described.biWidth * 100 + described.biHeight, kWidth * 100 + kHeight);
            EXPECT_EQ(described.biPlanes, 1);
            EXPECT_EQ(described.biSizeImage, static_cast<DWORD>(PitchOf(kWidth, bits) * kHeight));
        }
    }
}

TEST(Sections, ReadNoMoreThanTheHeaderHas) {
    // Exactly three colours: AddressSanitizer watches the end.
    Bytes exact(sizeof(BITMAPINFOHEADER) + 3 * sizeof(RGBQUAD));
    DibHeader dib(2, 1, 8);
    dib.header.biClrUsed = 3;
    dib.colours[2] = {0x11, 0x22, 0x33, 0};
    std::memcpy(exact.data(), &dib, exact.size());
    uint8_t *bits = nullptr;
    const Canvas canvas(CreateDIBSection(0, reinterpret_cast<BITMAPINFO *>(exact.data()), 0,
                                         reinterpret_cast<void **>(&bits), 0, 0));
    ASSERT_NE(bits, nullptr);
    bits[0] = 2;
    bits[1] = 250;  // no such colour
    EXPECT_EQ(GetPixel(canvas.context, 0, 0), 0x112233u);
    EXPECT_EQ(GetPixel(canvas.context, 1, 0), 0u);

    const auto refuses = [](auto change, int32_t width = 4, int32_t height = 4, int depth = 24) {
        DibHeader wrong(width, height, depth);
        change(wrong.header);
        void *address = &wrong;
        const HBITMAP bitmap = CreateDIBSection(0, wrong.Info(), DIB_RGB_COLORS, &address, 0, 0);
        return bitmap == 0 && address == nullptr;
    };
    using Header = BITMAPINFOHEADER;
    EXPECT_TRUE(refuses([](Header &header) { header.biSize = 12; }));
    EXPECT_TRUE(refuses([](Header &header) { header.biSize = 0xFFFFFFFF; }));
    EXPECT_TRUE(refuses([](Header &header) { header.biPlanes = 2; }));
    EXPECT_TRUE(refuses([](Header &header) { header.biCompression = 1; }));
    const auto nothing = [](Header &) {};
    EXPECT_TRUE(refuses(nothing, 4, 4, 16));
    const std::pair<int32_t, int32_t> sizes[] = {
        {0, 4}, {-4, 4}, {4, 0}, {4, INT32_MIN}, {INT32_MAX, INT32_MAX}, {(1 << 26) + 1, 4}};
    for (const auto &[width, height] : sizes) EXPECT_TRUE(refuses(nothing, width, height)) << width;
}

TEST(Bitmaps, HaveTheFormatTheyAreAskedFor) {
    const HDC fresh = CreateCompatibleDC(ScreenContext());
    const uint8_t rows[] = {0xA0, 0, 0x40, 0};  // each row of one byte fills up two
    struct Case {
        HBITMAP bitmap;
        int bits, width, height;
    };
    const Case cases[] = {{CreateCompatibleBitmap(fresh, 9, 8), 1, 9, 8},  // like its default bitmap
                          {CreateCompatibleBitmap(ScreenContext(), 1024, 3), 32, 1024, 3},
                          {CreateCompatibleBitmap(ScreenContext(), 0, 8), 1, 1, 1},
                          {CreateBitmap(3, 2, 1, 1, rows), 1, 3, 2},
                          {CreateBitmap(3, 2, 1, 8, nullptr), 8, 3, 2},
                          {CreateBitmap(3, 2, 1, 32, nullptr), 32, 3, 2}};
    for (const Case &expected : cases) {
        const BITMAPINFOHEADER described = HeaderOf(fresh, expected.bitmap);
        EXPECT_EQ(described.biBitCount, expected.bits);
        EXPECT_EQ(described.biWidth * 100 + described.biHeight, expected.width * 100 + expected.height);
        SelectObject(fresh, expected.bitmap);
        const platform::SurfaceAccess access(fresh);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(access.View().topRow) % 64, 0u);
        EXPECT_TRUE(access.View().pitch % 64 == 0 && access.View().pitch % 4096 != 0) << access.View().pitch;
    }
    SelectObject(fresh, cases[3].bitmap);
    const Picture stripes = PictureOf(fresh, 3, 2);
    EXPECT_EQ(stripes.pixels, (std::vector<uint32_t>{0xFFFFFF, 0, 0xFFFFFF, 0, 0xFFFFFF, 0}));
    DeleteDC(fresh);
    for (const Case &done : cases) EXPECT_EQ(DeleteObject(done.bitmap), 1);
    for (const auto &[width, height] :
         {std::pair(-1, 4), {4, -1}, {INT32_MAX, INT32_MAX}, {1 << 28, 2}, {1, 1 << 28}})
        EXPECT_EQ(CreateCompatibleBitmap(ScreenContext(), width, height) |
                      CreateBitmap(width, height, 1, 1, nullptr),
                  0u);
    EXPECT_EQ(CreateBitmap(4, 4, 2, 1, nullptr) | CreateBitmap(4, 4, 1, 16, nullptr), 0u);
}

// Bitmap -> lines in each layout -> bitmap; the lines are also read by hand, and nothing around them is
// touched.
TEST(Lines, OfEveryLayoutGoOutOfABitmapAndBack) {
    for (const int sourceBits : {1, 8, 24, 32}) {
        const Canvas canvas(CreateBitmap(kWidth, kHeight, 1, static_cast<UINT>(sourceBits), nullptr));
        for (const int bits : {1, 4, 8, 24, 32})
            for (const int height : {kHeight, -kHeight}) {
                SCOPED_TRACE(std::to_string(sourceBits) + " to " + std::to_string(bits) + " height " +
                             std::to_string(height));
                const Picture drawn = Scribble(canvas.context, kWidth, kHeight, std::min(sourceBits, bits));
                DibHeader dib(kWidth, height, bits);
                const auto size = static_cast<size_t>(PitchOf(kWidth, bits) * kHeight);
                Bytes buffer(size + 2, 0xEE);
                ASSERT_EQ(GetDIBits(canvas.context, canvas.bitmap, 0, 99, buffer.data() + 1, dib.Info(), 0),
                          kHeight);
                EXPECT_EQ(buffer.front() << 8 | buffer.back(), 0xEEEE);
                EXPECT_EQ(dib.header.biSizeImage, size);
                EXPECT_TRUE(SamePicture("lines", PictureOfLines(buffer.data() + 1, dib), drawn));
                const Canvas back(kWidth, kHeight);
                ASSERT_EQ(SetDIBitsToDevice(back.context, 0, 0, kWidth, kHeight, 0, 0, 0, kHeight,
                                            buffer.data() + 1, dib.Info(), 0),
                          kHeight);
                EXPECT_TRUE(SamePicture("back", PictureOf(back.context, kWidth, kHeight), drawn));
            }
    }
}

TEST(Lines, CountFromTheBottomOrTheTop) {
    const Canvas canvas(2, 4);
    for (int32_t y = 0; y < 4; ++y) SetPixel(canvas.context, 0, y, static_cast<COLORREF>(y + 1));
    struct Case {
        int height;
        UINT first, count;
        std::vector<int> rows;  // red of the first pixel of each line: its row in the bitmap and 1
    };
    const Case cases[] = {{4, 0, 2, {4, 3}},
                          {4, 1, 2, {3, 2}},
                          {4, 3, 9, {1}},
                          {4, 4, 1, {}},
                          {-4, 1, 2, {2, 3}},
                          {-4, 3, 5, {4}},
                          {-4, 0xFFFFFFFF, 9, {}},
                          {2, 0, 9, {4, 3}},
                          {-2, 0, 9, {1, 2}},
                          {9, 2, 0xFFFFFFFF, {2, 1}},
                          {4, 0, 0, {}}};
    for (const Case &expected : cases) {
        DibHeader dib(3, expected.height, 24);  // a column more than the bitmap has
        Bytes buffer(12 * 10, 0xEE);
        const int lines = GetDIBits(canvas.context, canvas.bitmap, expected.first, expected.count,
                                    buffer.data(), dib.Info(), 0);
        ASSERT_EQ(lines, static_cast<int>(expected.rows.size())) << expected.height << ' ' << expected.first;
        for (size_t line = 0; line < expected.rows.size(); ++line) {
            const Bytes row(buffer.begin() + static_cast<ptrdiff_t>(line) * 12,
                            buffer.begin() + static_cast<ptrdiff_t>(line) * 12 + 12);
            Bytes wanted(12, 0);
            wanted[2] = static_cast<uint8_t>(expected.rows[line]);
            EXPECT_EQ(row, wanted);
        }
        EXPECT_EQ(std::count(buffer.begin(), buffer.end(), 0xEE), 120 - 12 * lines);
    }
    DibHeader dib(2, 4, 24);
    uint8_t buffer[64];
    EXPECT_EQ(GetDIBits(canvas.context, canvas.bitmap, 0, 4, buffer, dib.Info(), 1), 0);
    EXPECT_EQ(GetDIBits(canvas.context, canvas.bitmap, 0, 4, buffer, nullptr, 0), 0);
    dib.header.biCompression = 3;
    EXPECT_EQ(GetDIBits(canvas.context, canvas.bitmap, 0, 4, buffer, dib.Info(), 0), 0);
}

// The published rule, applied to each pixel of the drawn rectangle on its own.
TEST(Lines, AreDrawnWhereTheRectangleAndTheBufferMeet) {
    std::mt19937 random(9);
    const auto number = [&random](int from, int to) {
        return static_cast<int32_t>(random() % static_cast<uint32_t>(to - from + 1)) + from;
    };
    const Canvas canvas(kWidth, kHeight);
    for (int round = 0; round < 2000; ++round) {
        const int32_t sizeX = number(1, 9), sizeY = number(1, 7);
        DibHeader dib(sizeX, round % 2 == 0 ? sizeY : -sizeY, 24);
        const auto first = static_cast<UINT>(number(0, sizeY)), count = static_cast<UINT>(number(0, 8));
        const bool isHuge = round % 10 == 0;
        const int32_t x = isHuge ? number(0, 1) * INT32_MIN + 3 : number(-5, 9), y = number(-5, 9);
        const DWORD width = isHuge ? 0xFFFFFFF0u : static_cast<DWORD>(number(0, 12));
        const auto height = static_cast<DWORD>(number(0, 12));
        const int32_t sourceX = isHuge ? INT32_MIN : number(-4, 8), sourceY = number(-4, 8);
        Bytes lines(
            static_cast<size_t>(PitchOf(sizeX, 24)) *
            std::min<size_t>(count, static_cast<size_t>(sizeY) - std::min(first, static_cast<UINT>(sizeY))));
        for (uint8_t &byte : lines) byte = static_cast<uint8_t>(random() | 1);
        Picture expected(kWidth, kHeight);
        for (int32_t targetY = 0; targetY < kHeight; ++targetY)
            for (int32_t targetX = 0; targetX < kWidth; ++targetX) {
                const int64_t across = int64_t{targetX} - x, down = int64_t{targetY} - y;
                if (across < 0 || down < 0 || across >= width || down >= height) continue;
                const int64_t column = sourceX + across;
                const int64_t line =
                    dib.header.biHeight < 0 ? sourceY + down : sourceY + int64_t{height} - 1 - down;
                if (column < 0 || column >= sizeX || line < first || line >= int64_t{first} + count ||
                    line >= sizeY)
                    continue;
                const uint8_t *row = lines.data() + (line - first) * PitchOf(sizeX, 24);
                expected.At(targetX, targetY) = PixelOfLine(row, static_cast<int>(column), 24, nullptr);
            }
        BitBlt(canvas.context, 0, 0, kWidth, kHeight, 0, 0, 0, BLACKNESS);
        lines.push_back(0);  // an address also for no lines
        SetDIBitsToDevice(canvas.context, x, y, width, height, sourceX, sourceY, first, count, lines.data(),
                          dib.Info(), 0);
        ASSERT_TRUE(SamePicture("drawn_lines", PictureOf(canvas.context, kWidth, kHeight), expected))
            << "round " << round;
    }
}

TEST(Resources, OfTheTypeBitmapAreLoadedByName) {
    const HBITMAP bitmap = LoadBitmapA(0, "figure");
    ASSERT_NE(bitmap, 0u);
    const Canvas canvas(bitmap);
    Picture expected(3, 2);
    expected.pixels = {0xFF0000, 0x00FF00, 0x0000FF, 0x0000FF, 0x0000FF, 0xFF0000};
    EXPECT_TRUE(SamePicture("resource", PictureOf(canvas.context, 3, 2), expected));
    EXPECT_EQ(LoadBitmapA(0, "nobody"), 0u);
    EXPECT_EQ(LoadBitmapA(0, nullptr), 0u);
}

Bytes PackedMonochrome() {
    DibHeader dib(9, -2, 1);
    dib.colours[1] = {255, 255, 255, 0};
    const auto *start = reinterpret_cast<const uint8_t *>(&dib);
    Bytes bytes(start, start + sizeof(dib.header) + 2 * sizeof(RGBQUAD));
    for (const int byte : {0x80, 0x80, 0, 0, 0x01, 0x00, 0, 0}) bytes.push_back(static_cast<uint8_t>(byte));
    return bytes;
}

TEST(Resources, AreReadWholeOrNotAtAll) {
    const Bytes whole = PackedMonochrome();
    const platform::Picture picture = platform::ReadBitmapResource(whole);
    ASSERT_NE(picture.memory, nullptr);
    EXPECT_EQ(picture.view.format, platform::PixelFormat::Mono);
    std::string pixels;
    for (int32_t i = 0; i < 18; ++i)
        pixels += platform::ReadPixel(picture.view, i % 9, i / 9) != 0 ? '1' : '0';
    EXPECT_EQ(pixels, "100000001000000010");
    for (size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_EQ(platform::ReadBitmapResource(cut).memory, nullptr) << size;
    }
    // A file header whose offset points anywhere, and every byte forged: AddressSanitizer is the judge.
    Bytes file{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 62, 0, 0, 0};
    file.insert(file.end(), whole.begin(), whole.end());
    EXPECT_NE(platform::ReadBitmapResource(file).memory, nullptr);
    for (size_t place = 0; place < file.size(); ++place)
        for (const int forged : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            Bytes wrong = file;
            wrong[place] = static_cast<uint8_t>(forged);
            const platform::Picture read = platform::ReadBitmapResource(wrong);
            EXPECT_LE(read.view.width * read.view.height, 18 * 8) << place;
        }
}

}  // namespace
}  // namespace fenlight::test
