// SPDX-License-Identifier: Zlib
#include <cstdio>
#include <cstdlib>

// Wants the two above before it.
#include <jpeglib.h>

#include "platform/pictures/picture_drawing.h"

namespace fenlight::test {
namespace {

TEST(PictureFormats, BmpOfEveryDepthShowsItsPixels) {
    constexpr BmpLayout kLayouts[] = {
        {1, 0, false, false},  {4, 0, false, false},  {8, 0, false, false},  {16, 0, false, false},
        {24, 0, false, false}, {32, 0, false, false}, {16, 3, false, false}, {32, 3, false, false},
        {8, 1, false, false},  {4, 2, false, false},  {1, 0, true, false},   {4, 0, true, false},
        {8, 0, true, false},   {24, 0, true, false},  {8, 0, false, true},   {24, 0, false, true}};
    for (const BmpLayout &layout : kLayouts) {
        for (const int width : {4, 9, 17}) {
            const std::string name =
                "bmp-" + std::to_string(&layout - kLayouts) + '-' + std::to_string(width);
            const Picture shown = Draw(LoadFromStream(MakeBmp(width, 6, layout)).get(), width, 6);
            EXPECT_TRUE(SamePicture(name, shown, BmpPicture(width, 6, layout.bitCount)));
        }
    }
}

TEST(PictureFormats, SamplesShowTheOnePictureAndTransparentPartsInWhite) {
    constexpr uint32_t kYellow = 0xF0DC3C;
    constexpr uint32_t kWhite = 0xFFFFFF;
    struct Case {
        const char *name;
        uint32_t yellow;
    };
    constexpr Case kCases[] = {
        {"sample.gif", kWhite},          {"sample.ico", kWhite},        {"sample_lzw.tif", kYellow},
        {"sample_plain.tif", kYellow},   {"sample_alpha.tif", kWhite},  {"sample_rle.tga", kYellow},
        {"sample_palette.tga", kYellow}, {"sample_alpha.tga", kYellow},
    };
    for (const Case &test : kCases) {
        const PictureReference picture = LoadFromStream(ReadSample(test.name));
        EXPECT_TRUE(SamePicture(test.name, Draw(picture.get(), 7, 5), SamplePicture(test.yellow)));
    }
    // WebP only where its decoder is installed.
    if (const PictureReference webp = LoadFromStream(ReadSample("sample.webp"))) {
        EXPECT_TRUE(SamePicture("webp", Draw(webp.get(), 7, 5), SamplePicture(kWhite)));
    }
    Bytes cursor = ReadSample("sample.ico");
    cursor[2] = 2;
    EXPECT_TRUE(SamePicture("cur", Draw(LoadFromStream(cursor).get(), 7, 5), SamplePicture(kWhite)));

    Bytes pngIcon = {0, 0, 1, 0, 1, 0, 7, 5, 0, 0, 1, 0, 32, 0};
    const Bytes png = ReadSample("sample.png");
    Put(pngIcon, static_cast<uint32_t>(png.size()), 4);
    Put(pngIcon, 22, 4);
    pngIcon.insert(pngIcon.end(), png.begin(), png.end());
    EXPECT_TRUE(SamePicture("png-ico", Draw(LoadFromStream(pngIcon).get(), 7, 5), SamplePicture()));

    // Half transparent with its colours multiplied already: the other half of the light is white.
    Bytes half = ReadSample("sample_alpha.tif");
    std::copy_n(std::initializer_list<uint8_t>{100, 50, 20, 128}.begin(), 4, half.begin() + 8);
    Picture halfWhite = SamplePicture(kWhite);
    halfWhite.At(0, 0) = 0xE3B193;
    EXPECT_TRUE(SamePicture("half", Draw(LoadFromStream(half).get(), 7, 5), halfWhite));

    Bytes fromTheTop = ReadSample("sample_alpha.tga");
    fromTheTop[17] |= 0x20;
    Picture upsideDown = SamplePicture();
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 7; ++x) upsideDown.At(x, y) = SamplePicture().At(x, 4 - y);
    }
    EXPECT_TRUE(SamePicture("tga-top", Draw(LoadFromStream(fromTheTop).get(), 7, 5), upsideDown));
}

Picture DecodeJpeg(const Bytes &bytes) {
    jpeg_decompress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, bytes.data(), static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = JCS_RGB;
    jpeg_start_decompress(&jpeg);
    Picture picture(static_cast<int>(jpeg.output_width), static_cast<int>(jpeg.output_height));
    Bytes row(jpeg.output_width * 3);
    for (int y = 0; y < picture.height; ++y) {
        JSAMPROW rows[] = {row.data()};
        jpeg_read_scanlines(&jpeg, rows, 1);
        for (int x = 0; x < picture.width; ++x) {
            const auto at = static_cast<size_t>(x) * 3;
            picture.At(x, y) = uint32_t{row[at]} << 16 | uint32_t{row[at + 1]} << 8 | row[at + 2];
        }
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    return picture;
}

TEST(PictureFormats, JpegIsWhatItsOwnLibraryDecodes) {
    for (const char *name : {"gradient.jpg", "gradient_progressive.jpg", "gradient_grey.jpg"}) {
        const Bytes bytes = ReadSample(name);
        EXPECT_TRUE(SamePicture(name, Draw(LoadFromStream(bytes).get(), 37, 23), DecodeJpeg(bytes)));
    }
}

// Himetric units are hundredths of a millimetre, 2540 to the inch.
TEST(PictureFormats, SizesFollowTheStoredResolution) {
    const auto bmp = [](uint32_t pelsX, uint32_t pelsY) {
        return MakeBmp(300, 20, {.pelsPerMetreX = pelsX, .pelsPerMetreY = pelsY});
    };
    const auto jpeg = [](uint8_t unit, uint8_t density) {
        Bytes bytes = ReadSample("gradient.jpg");
        bytes[13] = unit;
        bytes[15] = bytes[17] = density;
        return bytes;
    };
    struct Case {
        const char *name;
        Bytes bytes;
        int32_t width, height;
    };
    const Case cases[] = {
        {"bmp without", bmp(0, 0), 7938, 529},           // 300 / 96 x 2540 = 7937.5
        {"bmp 96", bmp(3780, 3779), 7938, 529},          // 96.01 and 95.99 are 96
        {"bmp 72 x 300", bmp(2835, 11811), 10583, 169},  // 10583.3, 169.3
        {"jpeg without", jpeg(0, 72), 979, 609},         // 37 and 23 at 96: 978.96, 608.5
        {"jpeg 72", jpeg(1, 72), 1305, 811},             // 1305.3, 811.4
        {"jpeg 50 to the cm", jpeg(2, 50), 740, 460},
        {"tiff 192 x 144", ReadSample("sample_lzw.tif"), 93, 88},  // 7 and 5: 92.6, 88.2
        {"gif", ReadSample("sample.gif"), 185, 132},               // 185.2, 132.3
    };
    for (const Case &test : cases) {
        const PictureReference picture = LoadFromStream(test.bytes);
        ASSERT_NE(picture, nullptr) << test.name;
        int32_t width = 0;
        int32_t height = 0;
        picture->get_Width(&width);
        picture->get_Height(&height);
        EXPECT_EQ(std::pair(width, height), std::pair(test.width, test.height)) << test.name;
    }
}

}  // namespace
}  // namespace fenlight::test
