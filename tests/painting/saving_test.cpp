// SPDX-License-Identifier: Zlib
// Saved files are read by others: by gdk-pixbuf through the loading of pictures, by ImageMagick, and JPEGs
// are held against those of libjpeg's own compressor, where these two programs are installed.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "fenlight/images.h"
#include "fenlight/platform/windows.h"
#include "frame/codec_binding.h"
#include "images/image_slots.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "support/picture_check.h"

namespace fenlight::test {
namespace {

using platform::FailOnce;
using platform::Operation;

const std::string kFolder = std::string(FENLIGHT_TEST_OUTPUT) + "/saving/";
const std::string kFile = kFolder + "saved";

// An image of random pixels, below 16 bits with a palette of random colours, or `smooth` ones.
uintptr_t MakeImage(int32_t width, int32_t height, int bits, bool smooth = false) {
    std::mt19937 random(static_cast<unsigned>(width * 100 + bits));
    struct {
        BITMAPINFOHEADER header{};
        std::array<uint32_t, 256> colours{};
    } info;
    info.header = {sizeof info.header, width, -height, 1, static_cast<WORD>(bits), BI_RGB, 0, 0, 0, 0, 0};
    for (uint32_t &colour : info.colours) colour = static_cast<uint32_t>(random()) & 0xFFFFFF;
    void *pixels = nullptr;
    const HBITMAP bitmap = CreateDIBSection(0, reinterpret_cast<BITMAPINFO *>(&info), 0, &pixels, 0, 0);
    auto *bytes = static_cast<uint8_t *>(pixels);
    for (int32_t i = 0; i < (width * bits + 31) / 32 * 4 * height; ++i)
        bytes[i] = static_cast<uint8_t>(
            smooth ? 255 * (i % 4 == 0 ? i / 4 % width : i / 4 / width) / (width + height) : random());
    EXPECT_TRUE(FindFreeSlot());
    return FillSlot(GetDC(0), bitmap);
}

Picture PictureOf(uintptr_t image) {
    Picture picture(GetWidthImage(image), GetHeightImage(image));
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const COLORREF colour = GetPixel(image, x, y);
            picture.At(x, y) = (colour & 0xFF) << 16 | (colour & 0xFF00) | colour >> 16;
        }
    }
    return picture;
}

std::string BytesOf(const std::string &fileName) {
    std::ifstream file(fileName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteText(const std::string &fileName, const char *text) { std::ofstream(fileName) << text; }

// What another program says, read from a file that it writes.
std::string OutputOf(const std::string &command) {
    const std::string result = kFolder + "answer";
    EXPECT_EQ(std::system((command + " 2> /dev/null > '" + result + "'").c_str()), 0) << command;
    return BytesOf(result);
}
bool IsInstalled(const std::string &program) {
    return std::system(("command -v " + program + " > /dev/null").c_str()) == 0;
}

class Saving : public ::testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directories(kFolder); }
    void TearDown() override {
        platform::ForgetFailures();
        FreeAllImages();
        std::filesystem::remove_all(kFolder);
        EXPECT_EQ(platform::CountHandles(platform::HandleKind::File), 0);
    }
};

TEST_F(Saving, FilesShowThePictureOfEveryDepthAndWidth) {
    const bool hasConvert = IsInstalled("convert"), hasCompressor = IsInstalled("cjpeg");
    const std::string ppm = kFolder + "picture.ppm";
    for (const int bits : {1, 4, 8, 24, 32}) {
        for (const int width : {1, 2, 3, 4, 5, 33}) {
            SCOPED_TRACE(std::to_string(bits) + " bits, width " + std::to_string(width));
            const uintptr_t image = MakeImage(width, 4, bits);
            const Picture picture = PictureOf(image);
            WriteText(
                kFile,
                "an older file, longer than some of the pictures that take its place, and not one itself, "
                "which is to be gone");
            EXPECT_EQ(SaveImage(image, kFile.c_str(), 0, 0), 1);
            EXPECT_EQ(BytesOf(kFile).size(), static_cast<size_t>(54 + (3 * width + 3) / 4 * 4 * 4));
            EXPECT_TRUE(SamePicture("bmp", PictureOf(LoadFileImage(kFile.c_str())), picture));
            WritePpm(ppm, picture);
            if (hasConvert && width == 5) {
                EXPECT_EQ(OutputOf("convert bmp:'" + kFile + "' ppm:-"), BytesOf(ppm));
            }

            EXPECT_EQ(SaveImage(image, kFile.c_str(), 1, 9), 1);
            if (hasCompressor) {
                EXPECT_EQ(BytesOf(kFile), OutputOf("cjpeg -quality 90 '" + ppm + "'"));
            }
            EXPECT_TRUE(SamePicture("after", PictureOf(image), picture));
            FreeAllImages();
        }
    }
}

// Without the compressor at least the steps are told apart by how far a picture comes back from itself.
TEST_F(Saving, JpegHasTheQualityAskedFor) {
    const uintptr_t smooth = MakeImage(70, 50, 32, true), noise = MakeImage(400, 300, 32);
    const Picture picture = PictureOf(smooth);
    const std::string ppm = kFolder + "picture.ppm";
    const bool hasCompressor = IsInstalled("cjpeg");
    for (const auto &[asked, meant] :
         {std::pair{-7, 1}, {0, 1}, {1, 1}, {5, 5}, {10, 10}, {11, 10}, {100, 10}}) {
        for (const uintptr_t image : {noise, smooth}) {
            ASSERT_EQ(SaveImage(image, kFile.c_str(), 1, asked), 1);
            WritePpm(ppm, PictureOf(image));
            if (hasCompressor) {
                EXPECT_EQ(BytesOf(kFile),
                          OutputOf("cjpeg -quality " + std::to_string(meant * 10) + " '" + ppm + "'"))
                    << asked;
            }
        }
        const uintptr_t loaded = LoadFileImage(kFile.c_str());
        const Picture back = PictureOf(loaded);
        FreeImage(loaded);
        ASSERT_EQ(back.pixels.size(), picture.pixels.size());
        int worst = 0;
        for (size_t i = 0; i < back.pixels.size(); ++i)
            for (const int shift : {0, 8, 16})
                worst = std::max(worst, std::abs(static_cast<int>(back.pixels[i] >> shift & 255) -
                                                 static_cast<int>(picture.pixels[i] >> shift & 255)));
        EXPECT_LE(worst, meant == 1 ? 48 : meant == 5 ? 12 : 3) << asked;
    }
}

TEST_F(Saving, TellsThatWritingWasTriedWhereTheFileCannotBeHad) {
    const uintptr_t image = MakeImage(9, 5, 32);
    const HBITMAP bitmap = ImageBitmapTable[0];
    for (const std::string &name :
         {kFolder + "none/such", kFolder, std::string(), std::string("/dev/full")}) {
        EXPECT_EQ(SaveImage(image, name.c_str(), 0, 0), 1) << name;
        EXPECT_EQ(SaveImage(image, name.c_str(), 1, 5), 1) << name;
        EXPECT_EQ(Dib2Jpg(bitmap, name.c_str(), 5), 0u) << name;
    }
    EXPECT_EQ(Dib2Jpg(bitmap, kFile.c_str(), 5), 1u);
    std::filesystem::remove(kFile);

    EXPECT_EQ(SaveImage(image, nullptr, 0, 0), 1);
    EXPECT_EQ(SaveImage(image, nullptr, 1, 5), 1);
    for (const uintptr_t dead : {uintptr_t{0}, uintptr_t{3}, image + 1, GetDC(0)}) {
        EXPECT_EQ(SaveImage(dead, kFile.c_str(), 0, 0), 0) << dead;
        EXPECT_EQ(SaveImage(dead, kFile.c_str(), 1, 5), 1) << dead;
    }
    EXPECT_EQ(Dib2Jpg(0, kFile.c_str(), 5), 0u);
    for (const int32_t format : {2, 1000, -1}) EXPECT_EQ(SaveImage(image, kFile.c_str(), format, 5), format);
    UnbindCodecs();
    EXPECT_EQ(SaveImage(image, kFile.c_str(), 1, 5), 0);
    BindCodecs();
    EXPECT_TRUE(std::filesystem::is_empty(kFolder));
}

// Wherever the failure strikes, the older file stays whole. A JPEG of noise grows several times.
TEST_F(Saving, AFailureBeforeThePictureIsReadyTouchesNoFile) {
    const uintptr_t image = MakeImage(400, 300, 32), longImage = MakeImage(65501, 1, 1);
    WriteText(kFile, "older");
    EXPECT_EQ(Dib2Jpg(ImageBitmapTable[1], kFile.c_str(), 5), 0u);
    EXPECT_EQ(SaveImage(longImage, kFile.c_str(), 1, 5), 1);
    int failures = 0;
    for (FailOnce(Operation::Memory, 1); Dib2Jpg(ImageBitmapTable[0], kFile.c_str(), 10) == 0;
         FailOnce(Operation::Memory, failures + 1)) {
        ++failures;
        ASSERT_EQ(BytesOf(kFile), "older") << failures;
    }
    EXPECT_GE(failures, 4);  // the rows, the first block of the file and two larger ones
    WriteText(kFile, "older");
    FailOnce(Operation::Memory, 1);
    EXPECT_EQ(SaveImage(image, kFile.c_str(), 0, 0), 0);
    FailOnce(Operation::File, 1);
    EXPECT_EQ(SaveImage(image, kFile.c_str(), 0, 0), 1);
    EXPECT_EQ(BytesOf(kFile), "older");
}

}  // namespace
}  // namespace fenlight::test
