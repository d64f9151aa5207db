// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <random>

#include "platform/pictures/picture_drawing.h"
#include "platform/pictures/picture_survey.h"

namespace fenlight::test {
namespace {

using platform::SurveyPicture;

struct Named {
    std::string name;
    Bytes bytes;
};

std::vector<Named> SmallPictures() {
    std::vector<Named> pictures;
    for (const char *name :
         {"sample.gif", "sample.ico", "sample_lzw.tif", "sample_plain.tif", "sample_alpha.tif",
          "sample_rle.tga", "sample_palette.tga", "sample_alpha.tga", "sample.jpg"}) {
        pictures.push_back({name, ReadSample(name)});
    }
    pictures.push_back({"24-bit bmp", MakeBmp(7, 5)});
    pictures.push_back({"core bmp", MakeBmp(7, 5, {.bitCount = 1, .hasCoreHeader = true})});
    pictures.push_back({"masks bmp", MakeBmp(7, 5, {.bitCount = 16, .compression = 3})});
    pictures.push_back({"rle4 bmp", MakeBmp(7, 5, {.bitCount = 4, .compression = 2})});
    pictures.push_back({"rle8 bmp", MakeBmp(7, 5, {.bitCount = 8, .compression = 1})});
    return pictures;
}

class HostilePictures : public ::testing::Test {
  protected:
    void SetUp() override { EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0})); }
    void TearDown() override {
        EXPECT_EQ(platform::CountPictureObjects(), 0);
        EXPECT_EQ(platform::CountTaskBlocks(), 0);
        EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0}));
    }
};

// Loads and draws what may be loaded. True if it showed something.
bool TryOut(const Bytes &bytes) {
    const PictureReference picture = LoadFromStream(bytes);
    return picture != nullptr && Draw(picture.get(), 9, 8).width == 9;
}

TEST_F(HostilePictures, FilesCutOffAtAnyLengthAreRefused) {
    std::vector<Named> pictures = SmallPictures();
    for (const Named &picture : pictures) EXPECT_TRUE(TryOut(picture.bytes)) << picture.name;
    pictures.push_back({"webp", ReadSample("sample.webp")});  // its decoder need not be installed
    for (const Named &picture : pictures) {
        EXPECT_TRUE(SurveyPicture(picture.bytes).has_value()) << picture.name;
        for (size_t length = 0; length < picture.bytes.size(); ++length) {
            EXPECT_FALSE(SurveyPicture({picture.bytes.data(), length}).has_value())
                << picture.name << " cut off at " << length;
        }
    }
    Bytes cut = MakeBmp(7, 5);
    cut.pop_back();
    EXPECT_FALSE(TryOut(cut));
}

TEST_F(HostilePictures, ForgedSizesAreRefusedBeforeAnythingIsDecoded) {
    struct Forgery {
        const char *name;
        Bytes bytes;
        size_t widthAt, heightAt, fieldBytes;
        bool isBigEndian;
    };
    const auto bmp = [](const BmpLayout &layout) { return MakeBmp(7, 5, layout); };
    const Forgery forgeries[] = {
        {"bmp", bmp({}), 18, 22, 4, false},
        {"core bmp", bmp({.hasCoreHeader = true}), 18, 20, 2, false},
        {"rle bmp", bmp({.bitCount = 8, .compression = 1}), 18, 22, 4, false},
        {"jpeg", ReadSample("sample.jpg"), 165, 163, 2, true},
        {"gif screen", ReadSample("sample.gif"), 6, 8, 2, false},
        {"icon", ReadSample("sample.ico"), 26, 30, 4, false},
        {"tga", ReadSample("sample_rle.tga"), 12, 14, 2, false},
    };
    for (const Forgery &forgery : forgeries) {
        ASSERT_TRUE(SurveyPicture(forgery.bytes).has_value()) << forgery.name;
        for (const uint32_t size : {0u, 8000u, 0x7FFFu, 0xFFFFu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
            Bytes bytes = forgery.bytes;
            for (size_t i = 0; i < forgery.fieldBytes; ++i) {
                const auto byte = static_cast<uint8_t>(size >> (8 * i));
                const size_t offset = forgery.isBigEndian ? forgery.fieldBytes - 1 - i : i;
                bytes[forgery.widthAt + offset] = bytes[forgery.heightAt + offset] = byte;
            }
            EXPECT_FALSE(SurveyPicture(bytes).has_value()) << forgery.name << " of " << size;
        }
    }
    Bytes icon = ReadSample("sample.ico");
    icon[27] = icon[31] = 1;  // 263 x 133: a possible size, but not for these few bytes
    EXPECT_FALSE(SurveyPicture(icon).has_value());
    Bytes tiff = ReadSample("sample_lzw.tif");
    constexpr uint8_t kByteCountTag[] = {0x17, 0x01, 0x04, 0x00};
    const auto tag =
        std::search(tiff.begin(), tiff.end(), std::begin(kByteCountTag), std::end(kByteCountTag));
    ASSERT_LT(tag + 9, tiff.end());
    tag[9] = 2;  // 512 bytes more in the strip than there are
    EXPECT_FALSE(SurveyPicture(tiff).has_value());
    // At 1 pixel per inch, 96 times as wide and high when drawn: 14400 is within the limit, 17280 over it.
    EXPECT_TRUE(SurveyPicture(MakeBmp(150, 150, {.pelsPerMetreX = 39, .pelsPerMetreY = 39})).has_value());
    EXPECT_FALSE(SurveyPicture(MakeBmp(180, 180, {.pelsPerMetreX = 39, .pelsPerMetreY = 39})).has_value());
}

// Each byte is hit several times.
TEST_F(HostilePictures, RandomMutationsBreakNothing) {
    constexpr unsigned kSeed = 20261122;
    constexpr int kRounds = 1500;
    std::mt19937 random(kSeed);
    const auto below = [&random](size_t limit) { return size_t{random()} % limit; };
    int shown = 0;
    for (const Named &picture : SmallPictures()) {
        for (int round = 0; round < kRounds; ++round) {
            Bytes bytes = picture.bytes;
            for (size_t changes = 1 + below(6); changes > 0; --changes) {
                // Headers are short: half of the changes go to the first 64 bytes.
                const size_t at = below(below(2) == 0 ? std::min<size_t>(64, bytes.size()) : bytes.size());
                constexpr uint8_t kEdges[] = {0, 1, 0x7F, 0x80, 0xFF};
                bytes[at] = below(2) == 0 ? kEdges[below(5)] : static_cast<uint8_t>(random());
            }
            if (below(8) == 0) bytes.insert(bytes.end(), below(40), static_cast<uint8_t>(random()));
            shown += TryOut(bytes);
        }
    }
    // Most changes hit pixels, so that the decoders were really reached.
    EXPECT_GT(shown, kRounds) << "seed " << kSeed;
}

}  // namespace
}  // namespace fenlight::test
