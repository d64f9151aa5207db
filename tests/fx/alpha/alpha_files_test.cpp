// SPDX-License-Identifier: Zlib
#include <lodepng.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fenlight/alpha_images.h"
#include "frame/codec_binding.h"
#include "fx/fx_picture.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using Bytes = std::vector<uint8_t>;

const std::string kFile = std::string(FENLIGHT_TEST_OUTPUT) + "/alpha_image.png";

Bytes ReadBytes(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const Bytes &bytes) {
    std::ofstream(kFile, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// What an import of kFile gives; the outputs hold a mark before it.
struct Import {
    explicit Import(const std::string &path = kFile)
        : image(ImportPng(path.c_str(), &sizes[0], &sizes[1], &sizes[2])) {}
    Import(const Import &) = delete;
    Import &operator=(const Import &) = delete;
    ~Import() { FreePng(image); }
    std::array<int32_t, 3> sizes{-7, -7, -7};
    uint8_t *image;
};

constexpr std::array kUntouched{-7, -7, -7}, kNothing{0, 0, 0};

Bytes Noise(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * i * 37 >> 3);
    return bytes;
}

class AlphaFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(FENLIGHT_TEST_OUTPUT);
        std::filesystem::remove(kFile);
    }
    void TearDown() override {
        platform::ForgetFailures();
        BindCodecs();
        EXPECT_EQ(platform::CountHandles(platform::HandleKind::File), 0);
        std::filesystem::remove(kFile);
    }
};

TEST_F(AlphaFiles, ComeBackAsTheyWereWritten) {
    for (const auto &[width, height] : {std::array{1, 1}, {3, 50}, {64, 33}}) {
        const Bytes pixels = Noise(static_cast<size_t>(4 * width * height));
        const int32_t size = ExportPng(pixels.data(), kFile.c_str(), width, height);
        EXPECT_EQ(static_cast<size_t>(size), ReadBytes(kFile).size());
        const Import back;
        ASSERT_EQ(back.sizes, (std::array{width, height, 4 * width * height}));
        EXPECT_EQ(Bytes(back.image, back.image + back.sizes[2]), pixels);
    }
}

TEST_F(AlphaFiles, ShowWhatAnotherDecoderShows) {
    const std::string path = std::string(FENLIGHT_TEST_DATA) + "/sample.png";
    const uintptr_t judge = LoadFileImage(path.c_str());
    const Import png(path);
    ASSERT_EQ(png.sizes, (std::array{7, 5, 140}));
    Picture picture(7, 5);
    for (size_t i = 0; i < 35; ++i) {
        const uint8_t *pixel = png.image + 4 * i;
        picture.pixels[i] = uint32_t{pixel[0]} << 16 | uint32_t{pixel[1]} << 8 | pixel[2];
        EXPECT_EQ(pixel[3], 255);
    }
    EXPECT_TRUE(SamePicture("imported", picture, PictureOf(judge, 7, 5)));
    FreeImage(judge);
}

TEST_F(AlphaFiles, ThatCannotBeReadLeaveTheOutputsAlone) {
    const std::string directory = FENLIGHT_TEST_OUTPUT;
    for (const std::string &path :
         {kFile, kFile + "/none", directory, std::string(), std::string("/dev/null")})
        EXPECT_TRUE(Import(path).image == nullptr && Import(path).sizes == kUntouched) << path;
    int32_t size = -7;
    EXPECT_EQ(ImportPng(nullptr, &size, &size, &size), nullptr);
    WriteBytes(Noise(100));
    for (const auto operation : {platform::Operation::Memory, platform::Operation::File})
        for (const int number : {1, 2}) {
            platform::FailOnce(operation, number);
            const Import import;
            const bool isLastOfMemory = operation == platform::Operation::Memory && number == 2;
            EXPECT_EQ(import.sizes, isLastOfMemory ? kNothing : kUntouched) << number;
            EXPECT_EQ(platform::CountHandles(platform::HandleKind::File), 0);
        }
}

// An IHDR of another size, with the check sum of that.
Bytes Forged(Bytes file, uint32_t width, uint32_t height) {
    for (size_t i = 0; i < 4; ++i) {
        file[16 + i] = static_cast<uint8_t>(width >> (24 - 8 * i));
        file[20 + i] = static_cast<uint8_t>(height >> (24 - 8 * i));
    }
    lodepng_chunk_generate_crc(&file[8]);
    return file;
}

TEST_F(AlphaFiles, ThatAreDamagedGiveNothing) {
    const Bytes pixels = Noise(4 * 9 * 9);
    ExportPng(pixels.data(), kFile.c_str(), 9, 9);
    const Bytes whole = ReadBytes(kFile);
    const size_t endChunk = 12;
    for (size_t length = 0; length < whole.size() - endChunk; ++length) {
        WriteBytes(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        const Import import;
        ASSERT_EQ(import.image, nullptr) << length;
        ASSERT_EQ(import.sizes, kNothing) << length;
    }
    for (size_t bit = 0; bit < 8 * whole.size(); ++bit) {
        Bytes damaged = whole;
        damaged[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
        WriteBytes(damaged);
        const Import import;
        if (import.image != nullptr) continue;  // in a chunk that plays no part, or its name
        ASSERT_EQ(import.sizes, kNothing) << bit;
    }
}

TEST_F(AlphaFiles, AreNotGivenMemoryThatTheyCannotFill) {
    const Bytes black(4 * 2048 * 2048);
    ExportPng(black.data(), kFile.c_str(), 2048, 2048);
    const Bytes file = ReadBytes(kFile);
    constexpr uint32_t kTooLittleData = 91, kTooManyPixels = 92, kTooMuchData = 109;  // LodePNG's numbers
    const std::tuple<uint32_t, uint32_t, uint32_t> forgeries[] = {{0x7FFFFFFF, 0x7FFFFFFF, kTooManyPixels},
                                                                  {16385, 16384, kTooManyPixels},
                                                                  {16384, 16384, kTooLittleData},
                                                                  {1, 1, kTooMuchData}};
    for (const auto &[width, height, error] : forgeries) {
        const Bytes forged = Forged(file, width, height);
        int32_t w = 1, h = 1, bytes = 1;
        uint8_t *block = nullptr;
        EXPECT_EQ(DecodePNG(&w, &h, forged.data(), static_cast<int32_t>(forged.size()), &block, &bytes),
                  error)
            << width;
        WriteBytes(forged);
        EXPECT_EQ(Import().sizes, kNothing);
    }
}

TEST_F(AlphaFiles, TellTheResultOfTheCodec) {
    const Bytes pixels = Noise(4 * 4 * 4);
    constexpr int32_t kEmptyPicture = 93;
    EXPECT_EQ(ExportPng(pixels.data(), kFile.c_str(), 0, 4), kEmptyPicture);
    EXPECT_EQ(ExportPng(nullptr, kFile.c_str(), 4, 4), 0);
    EXPECT_FALSE(std::filesystem::exists(kFile));
    const int32_t size = ExportPng(pixels.data(), kFile.c_str(), 4, 4);
    for (const std::string &path : {kFile + "/none", std::string(FENLIGHT_TEST_OUTPUT), std::string()})
        EXPECT_EQ(ExportPng(pixels.data(), path.c_str(), 4, 4), size) << path;
    EXPECT_EQ(ExportPng(pixels.data(), nullptr, 4, 4), size);
    for (const int number : {1, 2}) {
        platform::FailOnce(platform::Operation::File, number);
        EXPECT_EQ(ExportPng(pixels.data(), kFile.c_str(), 4, 4), size);
    }

    UnbindCodecs();
    const Import import;
    EXPECT_TRUE(import.image == nullptr && import.sizes == kUntouched);
    EXPECT_EQ(ExportPng(pixels.data(), kFile.c_str(), 4, 4), 0);
    uint8_t byte = 0;
    EXPECT_EQ(FreePng(&byte), 0) << "no allocator is asked";
    BindCodecs();
    EXPECT_EQ(FreePng(nullptr), 0);
}

}  // namespace
}  // namespace fenlight::test
