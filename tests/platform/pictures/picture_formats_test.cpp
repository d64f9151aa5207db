// SPDX-License-Identifier: Zlib
#include <cmath>
#include <cstdio>
#include <cstdlib>

// Wants the two above before it.
#include <jpeglib.h>

#include "platform/pictures/picture_drawing.h"

namespace fenlight::test {
namespace {

TEST(PictureFormats, BmpOfEveryDepthShowsItsPixels) {
    constexpr BmpLayout kLayouts[] = {
        {.bitCount = 1},
        {.bitCount = 4},
        {.bitCount = 8},
        {.bitCount = 16},
        {.bitCount = 24},
        {.bitCount = 32},
        {.bitCount = 16, .compression = 3},
        {.bitCount = 32, .compression = 3},
        {.bitCount = 8, .compression = 1},
        {.bitCount = 4, .compression = 2},
        {.bitCount = 1, .hasCoreHeader = true},
        {.bitCount = 4, .hasCoreHeader = true},
        {.bitCount = 8, .hasCoreHeader = true},
        {.bitCount = 24, .hasCoreHeader = true},
        {.bitCount = 8, .isTopDown = true},
        {.bitCount = 24, .isTopDown = true},
    };
    for (const BmpLayout &layout : kLayouts) {
        for (const int width : {4, 9, 17}) {
            const std::string name = "bmp-" + std::to_string(layout.bitCount) + "-" +
                                     std::to_string(layout.compression) +
                                     (layout.hasCoreHeader ? "-core-"
                                      : layout.isTopDown   ? "-top-"
                                                           : "-") +
                                     std::to_string(width);
            const PictureReference picture = LoadFromStream(MakeBmp(width, 6, layout));
            EXPECT_TRUE(
                SamePicture(name, Draw(picture.get(), width, 6), BmpPicture(width, 6, layout.bitCount)));
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
    Bytes cursor = ReadSample("sample.ico");
    cursor[2] = 2;
    EXPECT_TRUE(SamePicture("cur", Draw(LoadFromStream(cursor).get(), 7, 5), SamplePicture(kWhite)));

    Bytes fromTheTop = ReadSample("sample_alpha.tga");
    fromTheTop[17] |= 0x20;
    Picture upsideDown = SamplePicture();
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 7; ++x) upsideDown.At(x, y) = SamplePicture().At(x, 4 - y);
    }
    EXPECT_TRUE(SamePicture("tga-top", Draw(LoadFromStream(fromTheTop).get(), 7, 5), upsideDown));
}

struct JpegKind {
    int components;  // 1 or 3
    bool isProgressive;
    uint8_t densityUnit;
    uint16_t density;
};

Bytes MakeJpeg(int width, int height, const JpegKind &kind) {
    jpeg_compress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char *buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &buffer, &size);
    jpeg.image_width = static_cast<JDIMENSION>(width);
    jpeg.image_height = static_cast<JDIMENSION>(height);
    jpeg.input_components = kind.components;
    jpeg.in_color_space = kind.components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg.density_unit = kind.densityUnit;
    jpeg.X_density = jpeg.Y_density = kind.density;
    if (kind.isProgressive) jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    Bytes row(static_cast<size_t>(width * kind.components));
    for (int y = 0; y < height; ++y) {
        for (size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<uint8_t>(128 + 100 * std::sin(static_cast<double>(i) / 9 + y / 5.0));
        }
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&jpeg, rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    const Bytes bytes(buffer, buffer + size);
    std::free(buffer);
    return bytes;
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
    for (const JpegKind &kind :
         {JpegKind{3, false, 0, 1}, JpegKind{1, false, 0, 1}, JpegKind{3, true, 0, 1}}) {
        const Bytes bytes = MakeJpeg(75, 41, kind);
        const PictureReference picture = LoadFromStream(bytes);
        EXPECT_TRUE(SamePicture("jpeg-" + std::to_string(kind.components) + (kind.isProgressive ? "p" : "b"),
                                Draw(picture.get(), 75, 41), DecodeJpeg(bytes)));
    }
}

// Himetric units are hundredths of a millimetre, 2540 to the inch.
TEST(PictureFormats, SizesFollowTheStoredResolution) {
    const auto bmp = [](uint32_t pelsX, uint32_t pelsY) {
        return MakeBmp(300, 20, {.pelsPerMetreX = pelsX, .pelsPerMetreY = pelsY});
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
        {"jpeg without", MakeJpeg(300, 20, {3, false, 0, 1}), 7938, 529},
        {"jpeg 72", MakeJpeg(300, 20, {3, false, 1, 72}), 10583, 706},  // 705.6
        {"jpeg 50 to the cm", MakeJpeg(300, 20, {3, true, 2, 50}), 6000, 400},
        {"tiff 192 x 144", ReadSample("sample_lzw.tif"), 93, 88},  // 92.6, 88.2
        {"gif", ReadSample("sample.gif"), 185, 132},               // 185.2, 132.3
    };
    for (const Case &test : cases) {
        const PictureReference picture = LoadFromStream(test.bytes);
        ASSERT_NE(picture, nullptr) << test.name;
        int32_t width = 0;
        int32_t height = 0;
        EXPECT_GE(picture->get_Width(&width), 0);
        EXPECT_GE(picture->get_Height(&height), 0);
        EXPECT_EQ(width, test.width) << test.name;
        EXPECT_EQ(height, test.height) << test.name;
    }
}

}  // namespace
}  // namespace fenlight::test
