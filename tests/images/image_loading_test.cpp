// SPDX-License-Identifier: Zlib
#include <filesystem>
#include <functional>

#include "fenlight/images.h"
#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "images/image_slots.h"
#include "images/picture_loading.h"
#include "platform/pictures/picture_drawing.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using platform::CountOperations;
using platform::FailOnce;
using platform::ForgetFailures;
using platform::Operation;

constexpr DWORD kUntouched = 4711;

std::string SamplePath(const char *name) { return std::string(FENLIGHT_TEST_DATA) + "/" + name; }

uintptr_t LoadBytes(const Bytes &bytes) {
    return LoadMemoryImage(bytes.data(), static_cast<int32_t>(bytes.size()));
}

const char *IntegerName(uintptr_t number) { return reinterpret_cast<const char *>(number); }

class ImageLoading : public ::testing::Test {
  protected:
    void SetUp() override { EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0})); }
    void TearDown() override {
        FreeAllImages();
        EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0}));
        EXPECT_EQ(platform::CountHandles(platform::HandleKind::File), 0);
        EXPECT_EQ(platform::CountPictureObjects(), 0);
        EXPECT_EQ(platform::CountTaskBlocks(), 0);
        EXPECT_EQ(platform::CountInitializations(), 0);
    }
};

void ExpectImage(const std::string &name, uintptr_t image, const Picture &expected, int bitCount) {
    BITMAPINFOHEADER infos[2] = {};
    const auto &info = infos[0];
    infos[1].biSize = 0xDEAD;
    ASSERT_EQ(GetInfosImage(image, infos), 1) << name;
    EXPECT_EQ(infos[1].biSize, 0xDEADu) << "no more than the header is written";
    EXPECT_EQ(
        (std::vector<int64_t>{info.biSize, info.biWidth, info.biHeight, info.biPlanes, info.biBitCount}),
        (std::vector<int64_t>{40, expected.width, expected.height, 1, bitCount}))
        << name;
    EXPECT_EQ(GetWidthImage(image), expected.width) << name;
    EXPECT_EQ(GetHeightImage(image), expected.height) << name;
    EXPECT_TRUE(SamePicture(name, ShownBy(image, expected.width, expected.height), expected));
}

TEST_F(ImageLoading, FilesAndMemoryGiveTheSameImages) {
    constexpr struct {
        const char *name;
        uint32_t yellow;
        int bitCount;  // PNG keeps its own, all others take the screen's
    } kCases[] = {{"sample.png", 0xF0DC3C, 24},
                  {"sample.gif", 0xFFFFFF, 32},
                  {"sample_plain.tif", 0xF0DC3C, 32},
                  {"sample_rle.tga", 0xF0DC3C, 32}};
    for (const auto &test : kCases) {
        const Picture expected = SamplePicture(test.yellow);
        ExpectImage(std::string("file-") + test.name, LoadFileImage(SamplePath(test.name).c_str()), expected,
                    test.bitCount);
        const Bytes bytes = ReadSample(test.name);
        Bytes copy = bytes;
        const uintptr_t image = LoadBytes(copy);
        EXPECT_EQ(copy, bytes);
        std::fill(copy.begin(), copy.end(), uint8_t{0});
        ExpectImage(std::string("memory-") + test.name, image, expected, test.bitCount);
    }
    EXPECT_EQ(FreeAllImages(), 8);
}

TEST_F(ImageLoading, StoredResolutionScalesThePicture) {
    const uintptr_t image = LoadBytes(MakeBmp(12, 6, {.pelsPerMetreX = 1890, .pelsPerMetreY = 3780}));
    Picture doubled(24, 6);  // 48 dots per inch across, 96 down
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 24; ++x) doubled.At(x, y) = BmpPicture(12, 6, 24).At(x / 2, y);
    ExpectImage("doubled", image, doubled, 32);
    Bytes jpeg = ReadSample("gradient.jpg");
    jpeg[13] = 1;  // dots per inch
    jpeg[15] = jpeg[17] = 72;
    const uintptr_t larger = LoadBytes(jpeg);
    EXPECT_EQ(GetWidthImage(larger), 49);   // 37 x 96 / 72 = 49.3
    EXPECT_EQ(GetHeightImage(larger), 31);  // 23 x 96 / 72 = 30.7
}

TEST_F(ImageLoading, FailuresLeaveTheirCodesAndNoImage) {
    const std::string folder = std::string(FENLIGHT_TEST_OUTPUT) + "/images_test";
    std::filesystem::create_directories(folder);
    const Bytes text(40, 'x');
    const auto file = [](const std::string &path) { return [path] { return LoadFileImage(path.c_str()); }; };
    const auto resource = [](const char *name) { return [name] { return LoadResourceImage(0, name); }; };
    const struct {
        const char *name;
        std::function<uintptr_t()> load;
        DWORD lastError;
    } cases[] = {
        {"missing file", file(folder + "/missing.png"), 2},
        {"file of two bytes", file(SamplePath("two_bytes.bin")), 2},
        {"empty file", file(SamplePath("empty.bin")), 2},
        {"text", file(SamplePath("README.md")), 2},
        {"folder", file(folder), 2},
        {"long path", file(std::string(2000, 'x')), 2},
        {"no path", [&] { return LoadFileImage(nullptr); }, 2},
        {"text in memory", [&] { return LoadBytes(text); }, 87},
        {"three bytes", [&] { return LoadMemoryImage("\x89PN", 3); }, 87},
        {"no bytes", [&] { return LoadMemoryImage(text.data(), 0); }, 87},
        {"negative size", [&] { return LoadMemoryImage(text.data(), INT32_MIN); }, 87},
        {"no data", [&] { return LoadMemoryImage(nullptr, 100); }, 87},
        {"empty resource", resource("empty"), 2},
        {"resource of two bytes", resource("tiny"), 87},
        {"resource with text", resource("text"), 87},
        // A PNG that breaks off goes nowhere else.
        {"broken png", file(SamplePath("broken.png")), 0},  // as opening it leaves it
        {"broken png in memory", [&] { return LoadBytes(ReadSample("broken.png")); }, kUntouched},
        {"broken png resource", resource("broken"), kUntouched},
    };
    const uintptr_t first = CreateImage(GetDC(0), 1, 1);
    for (const auto &test : cases) {
        SetLastError(kUntouched);
        EXPECT_EQ(test.load(), 0u) << test.name;
        EXPECT_EQ(GetLastError(), test.lastError) << test.name;
        EXPECT_EQ(FreeImage(LoadFileImage(SamplePath("sample.png").c_str())), 5) << test.name;
        EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{1, 1})) << test.name;
    }
    EXPECT_EQ(LoadResourceImage(0, "nowhere"), 0u);
    EXPECT_EQ(LoadResourceImage(0, nullptr), 0u);
    EXPECT_EQ(FreeImage(first), 1);
}

TEST_F(ImageLoading, FullTableTouchesNothing) {
    for (int i = 0; i < 32; ++i) CreateImage(GetDC(0), 1, 1);
    SetLastError(kUntouched);
    FailOnce(Operation::File, 1000);
    EXPECT_EQ(LoadFileImage(SamplePath("sample.png").c_str()), 0u);
    EXPECT_EQ(CountOperations(Operation::File), 0);
    ForgetFailures();
    EXPECT_EQ(LoadMemoryImage(nullptr, 0), 0u);
    EXPECT_EQ(LoadResourceImage(0, "sample"), 0u);
    EXPECT_EQ(GetLastError(), kUntouched);
}

TEST_F(ImageLoading, ResourcesOfTheTypeImageComeBeforeBitmaps) {
    Picture corner(3, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) corner.At(x, y) = SamplePicture().At(x, y);
    const HRSRC resource = FindResourceA(0, "sample", "IMAGE");
    const auto *bytes = static_cast<const uint8_t *>(LockResource(LoadResource(0, resource)));
    const DWORD size = SizeofResource(0, resource);
    ExpectImage("resource-png", LoadResourceImage(0, "sample"), SamplePicture(), 24);
    EXPECT_EQ(Bytes(bytes, bytes + size), ReadSample("sample.png"));
    ExpectImage("resource-bmp", LoadResourceImage(0, IntegerName(300)), corner, 32);
    ExpectImage("resource-text-integer", LoadResourceImage(0, "#300"), corner, 32);
    ExpectImage("resource-bitmap", LoadResourceImage(0, "plain"), corner, 24);
    ExpectImage("resource-both", LoadResourceImage(0, "both"), SamplePicture(), 24);
    EXPECT_EQ(FreeAllImages(), 5);
}

TEST_F(ImageLoading, WhicheverOperationFailsTheLoadFailsWhole) {
    const std::string png = SamplePath("sample.png");
    const std::string gif = SamplePath("sample.gif");
    const Bytes scaled = MakeBmp(12, 6, {.pelsPerMetreX = 2835, .pelsPerMetreY = 2835});
    const std::pair<const char *, std::function<uintptr_t()>> roads[] = {
        {"png file", [&] { return LoadFileImage(png.c_str()); }},
        {"gif file", [&] { return LoadFileImage(gif.c_str()); }},
        {"bmp in memory", [&] { return LoadBytes(scaled); }},
        {"png resource", [&] { return LoadResourceImage(0, "sample"); }},
        {"bitmap resource", [&] { return LoadResourceImage(0, "plain"); }},
    };
    for (const auto &[name, load] : roads) {
        int failures = 0;
        for (const Operation operation :
             {Operation::Memory, Operation::Bitmap, Operation::Context, Operation::File}) {
            for (int number = 1;; ++number) {
                FailOnce(operation, number);
                const uintptr_t image = load();
                const bool wasReached = CountOperations(operation) >= number;
                ForgetFailures();
                // A file that cannot be looked at may still go to the picture loader, which succeeds or not.
                const bool isExcused = operation == Operation::File && wasReached;
                EXPECT_TRUE(isExcused || (image == 0) == wasReached) << name << number;
                failures += image == 0;
                FreeImage(image);
                EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0})) << name << number;
                if (!wasReached) break;
            }
        }
        EXPECT_GE(failures, 2) << name;
    }
    FailOnce(Operation::Memory, 1);  // the wide path
    EXPECT_EQ(LoadFileImage(gif.c_str()), 0u);
    ForgetFailures();
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

class FailingPicture final : public platform::IPicture {
  public:
    uint32_t AddRef() noexcept override { return 1; }
    uint32_t Release() noexcept override { return 1; }
    HRESULT get_Width(int32_t *himetric) noexcept override { return *himetric = 2540, 0; }
    HRESULT get_Height(int32_t *himetric) noexcept override { return *himetric = 1270, 0; }
    HRESULT Render(HDC, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                   const RECT *) noexcept override {
        return static_cast<HRESULT>(0x80041234u);
    }
};

TEST_F(ImageLoading, WhatRenderSaysBecomesTheLastError) {
    FailingPicture picture;
    EXPECT_EQ(PictureToBitmap(&picture), 0u);
    EXPECT_EQ(GetLastError(), 0x80041234u);
}

}  // namespace
}  // namespace fenlight::test
