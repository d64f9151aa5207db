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

Bytes FileBytes() {
    std::ifstream file(kFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What an import gives; the outputs hold a mark before it.
struct Import {
    explicit Import(const std::string &path)
        : image(ImportPng(path.c_str(), &sizes[0], &sizes[1], &sizes[2])) {}
    explicit Import(const Bytes &file) {
        std::ofstream(kFile, std::ios::binary)
            .write(reinterpret_cast<const char *>(file.data()), static_cast<std::streamsize>(file.size()));
        image = ImportPng(kFile.c_str(), &sizes[0], &sizes[1], &sizes[2]);
    }
    Import(const Import &) = delete;
    Import &operator=(const Import &) = delete;
    ~Import() { FreePng(image); }
    bool GaveNothing(int32_t mark) const { return image == nullptr && sizes == std::array{mark, mark, mark}; }
    std::array<int32_t, 3> sizes{-7, -7, -7};
    uint8_t *image;
};

constexpr int32_t kUntouched = -7, kCleared = 0;

Bytes Noise(int32_t size) {
    Bytes bytes(static_cast<size_t>(size));
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * i * 37 >> 3);
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
        EXPECT_EQ(platform::CountHandles(platform::HandleKind::File), 0);
        std::filesystem::remove(kFile);
    }
};

TEST_F(AlphaFiles, ComeBackAsTheyWereWrittenAndAsAnotherDecoderSeesThem) {
    for (const auto &[width, height] : {std::array{1, 1}, {3, 50}, {64, 33}}) {
        Bytes pixels = Noise(4 * width * height);
        for (const bool isOpaque : {false, true}) {
            for (size_t i = 3; isOpaque && i < pixels.size(); i += 4) pixels[i] = 255;
            const int32_t size = ExportPng(pixels.data(), kFile.c_str(), width, height);
            EXPECT_EQ(static_cast<size_t>(size), FileBytes().size());
            const Import back(kFile);
            ASSERT_EQ(back.sizes, (std::array{width, height, 4 * width * height}));
            EXPECT_EQ(Bytes(back.image, back.image + back.sizes[2]), pixels);
        }
        const uintptr_t judge = LoadFileImage(kFile.c_str());
        Picture picture(width, height);
        for (size_t i = 0; i < picture.pixels.size(); ++i)
            picture.pixels[i] =
                uint32_t{pixels[4 * i]} << 16 | uint32_t{pixels[4 * i + 1]} << 8 | pixels[4 * i + 2];
        EXPECT_TRUE(SamePicture("exported", PictureOf(judge, width, height), picture));
        FreeImage(judge);
    }
}

TEST_F(AlphaFiles, ThatCannotBeReadLeaveTheOutputsAlone) {
    const std::string directory = FENLIGHT_TEST_OUTPUT;
    for (const std::string &path :
         {kFile, kFile + "/none", directory, std::string(), std::string("/dev/null")})
        EXPECT_TRUE(Import(path).GaveNothing(kUntouched)) << path;
    EXPECT_EQ(ImportPng(nullptr, nullptr, nullptr, nullptr), nullptr);
    for (const auto &[operation, number] : {std::pair(platform::Operation::Memory, 1),
                                            {platform::Operation::File, 1},
                                            {platform::Operation::File, 2}}) {
        platform::FailOnce(operation, number);
        EXPECT_TRUE(Import(Noise(100)).GaveNothing(kUntouched)) << number;
    }
    EXPECT_TRUE(Import(Noise(100)).GaveNothing(kCleared));
}

// The codec's answer to a file that is no picture, its outputs checked; 0 if it took it for one.
uint32_t RefusalOf(const Bytes &file) {
    int32_t width = 1, height = 1, bytes = 1;
    uint8_t *block = nullptr;
    const uint32_t error =
        DecodePNG(&width, &height, file.data(), static_cast<int32_t>(file.size()), &block, &bytes);
    EXPECT_TRUE(block == nullptr && width == 0 && height == 1 && bytes == 0);
    FreePng(block);
    return error;
}

TEST_F(AlphaFiles, ThatAreDamagedGiveNothing) {
    ExportPng(Noise(4 * 9 * 9).data(), kFile.c_str(), 9, 9);
    const Bytes whole = FileBytes();
    constexpr size_t kEndChunk = 12;  // plays no part
    for (size_t length = 0; length < whole.size() - kEndChunk; ++length)
        ASSERT_NE(RefusalOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)}), 0u)
            << length;
    for (size_t bit = 0; bit < 8 * (whole.size() - kEndChunk); ++bit) {
        Bytes damaged = whole;
        damaged[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
        ASSERT_NE(RefusalOf(damaged), 0u) << "bit " << bit;
    }
}

TEST_F(AlphaFiles, AreNotGivenMemoryThatTheyCannotFill) {
    ExportPng(Bytes(4 * 2048 * 2048).data(), kFile.c_str(), 2048, 2048);
    Bytes file = FileBytes();
    constexpr uint32_t kTooLittleData = 91, kTooManyPixels = 92, kTooMuchData = 109;  // LodePNG's numbers
    for (const auto &[width, height, error] : {std::array{0x7FFFFFFFu, 0x7FFFFFFFu, kTooManyPixels},
                                               {16385u, 16384u, kTooManyPixels},
                                               {16384u, 16384u, kTooLittleData},
                                               {1u, 1u, kTooMuchData}}) {
        for (size_t i = 0; i < 4; ++i) {
            file[16 + i] = static_cast<uint8_t>(width >> (24 - 8 * i));
            file[20 + i] = static_cast<uint8_t>(height >> (24 - 8 * i));
        }
        lodepng_chunk_generate_crc(&file[8]);
        EXPECT_EQ(RefusalOf(file), error) << width;
        EXPECT_TRUE(Import(file).GaveNothing(kCleared)) << width;
    }
}

TEST_F(AlphaFiles, TellTheResultOfTheCodec) {
    const Bytes pixels = Noise(4 * 4 * 4);
    const auto exported = [&](const char *path) { return ExportPng(pixels.data(), path, 4, 4); };
    constexpr int32_t kEmptyPicture = 93;
    EXPECT_EQ(ExportPng(pixels.data(), kFile.c_str(), 0, 4), kEmptyPicture);
    EXPECT_EQ(ExportPng(nullptr, kFile.c_str(), 4, 4), 0);
    EXPECT_FALSE(std::filesystem::exists(kFile));
    const int32_t size = exported(kFile.c_str());
    for (const char *path : {FENLIGHT_TEST_OUTPUT, "", "/dev/full", static_cast<const char *>(nullptr)})
        EXPECT_EQ(exported(path), size);
    for (const int number : {1, 2}) {
        platform::FailOnce(platform::Operation::File, number);
        EXPECT_EQ(exported(kFile.c_str()), size);
    }

    UnbindCodecs();
    EXPECT_TRUE(Import(kFile).GaveNothing(kUntouched));
    EXPECT_EQ(exported(kFile.c_str()), 0);
    uint8_t byte = 0;
    EXPECT_EQ(FreePng(&byte), 0) << "no allocator is asked";
    BindCodecs();
    EXPECT_EQ(FreePng(nullptr), 0);
}

}  // namespace
}  // namespace fenlight::test
