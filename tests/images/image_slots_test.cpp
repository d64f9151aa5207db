// SPDX-License-Identifier: Zlib
#include "images/image_slots.h"

#include <algorithm>
#include <random>
#include <vector>

#include "fenlight/images.h"
#include "fenlight/platform/windows.h"
#include "images/raster_modes.h"
#include "platform/pictures/picture_drawing.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using platform::FailOnce;
using platform::ForgetFailures;
using platform::Operation;

class ImageSlots : public ::testing::Test {
  protected:
    void SetUp() override { EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0})); }
    void TearDown() override {
        FreeAllImages();
        EXPECT_EQ(platform::CountHandles(platform::HandleKind::Brush), brushes_);
        EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0}));
        EXPECT_EQ(ImageDCTable.back(), 3u);
        EXPECT_EQ(ImageBitmapTable.back(), 3u);
        EXPECT_EQ(std::count(ImageDCTable.begin(), ImageDCTable.end(), 0u), 32);
        EXPECT_EQ(std::count(ImageBitmapTable.begin(), ImageBitmapTable.end(), 0u), 32);
    }

  private:
    int brushes_ = platform::CountHandles(platform::HandleKind::Brush);
};

TEST_F(ImageSlots, FullTableRefusesTheNextImageAndKeepsAllOthers) {
    std::vector<uintptr_t> images;
    for (int i = 0; i < 32; ++i) {
        images.push_back(CreateImage(GetDC(0), 10 + i, 20 + i));
        EXPECT_GT(static_cast<int32_t>(images.back()), 3) << i;
        EXPECT_EQ(ImageDCTable[static_cast<size_t>(i)], images.back());
    }
    EXPECT_EQ(CreateImage(GetDC(0), 5, 5), 0u);
    EXPECT_EQ(FreeImage(0), 0);
    EXPECT_EQ(FreeImage(3), 0);
    EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{32, 32}));
    for (int i = 0; i < 32; ++i) {
        EXPECT_EQ(GetWidthImage(images[static_cast<size_t>(i)]), 10 + i);
        EXPECT_EQ(GetHeightImage(images[static_cast<size_t>(i)]), 20 + i);
    }
    EXPECT_EQ(FreeImage(images[0]), 1);
    EXPECT_EQ(FreeImage(images[0]), 0);  // the handle is dead
    EXPECT_EQ(FreeImage(images[31]), 125);
    EXPECT_EQ(FreeAllImages(), 30);
    EXPECT_EQ(FreeAllImages(), 0);
}

TEST_F(ImageSlots, TheLowestFreeSlotIsTakenAndAnswersToZero) {
    uintptr_t images[4];
    for (uintptr_t &image : images) image = CreateImage(GetDC(0), 4, 4);
    EXPECT_EQ(FreeImage(0), 17);  // slot 4 is the first free one; nothing is released
    EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{4, 4}));
    EXPECT_EQ(FreeImage(images[3]), 13);
    EXPECT_EQ(FreeImage(CreateImage(GetDC(0), 4, 4)), 13);
    EXPECT_EQ(FreeImage(images[0]), 1);
    EXPECT_EQ(FreeImage(images[1]), 5);
    EXPECT_EQ(FreeImage(0), 1);
    EXPECT_NE(CreateImage(GetDC(0), 4, 4), 0u);
    EXPECT_EQ(FreeAllImages(), 2);  // slots 0 and 2
}

// Dead, of another kind, or any number at all.
std::vector<uintptr_t> HandlesOfNothing(uintptr_t image, HBRUSH brush) {
    const uintptr_t freed = CreateImage(image, 4, 4);
    FreeImage(freed);
    std::vector<uintptr_t> handles{
        0, 3, freed, ImageBitmapTable[0], brush, ~uintptr_t{0}, image + 2, image | uintptr_t{1} << 40};
    std::mt19937_64 random(27);
    for (int bits = 1; bits <= 64; ++bits) handles.push_back(random() >> (64 - bits));
    std::erase(handles, image);
    return handles;
}

TEST_F(ImageSlots, UnknownHandlesGiveTheirFailureValues) {
    const uintptr_t image = CreateImage(GetDC(0), 4, 4);
    const HBRUSH brush = CreateSolidBrush(0);
    ColorFillImage(image, 0x123456, 0, 0, 4, 4);
    uint8_t info[40];
    std::fill(std::begin(info), std::end(info), uint8_t{0xA5});
    for (const uintptr_t unknown : HandlesOfNothing(image, brush)) {
        EXPECT_EQ(GetWidthImage(unknown), -1) << unknown;
        EXPECT_EQ(GetHeightImage(unknown), 0) << unknown;
        EXPECT_EQ(GetInfosImage(unknown, info), 0) << unknown;
        EXPECT_EQ(FreeImage(unknown), unknown == 0 ? 5 : 0) << unknown;
        EXPECT_EQ(ColorFillImage(unknown, 0, 0, 0, 4, 4), 0) << unknown;
        EXPECT_EQ(SizeImage(unknown, 0, 0, 4, 4, image, 0, 0, 4, 4, 0), 0) << unknown;
        EXPECT_EQ(SizeImage(image, 0, 0, 4, 4, unknown, 0, 0, 4, 4, 0), 0) << unknown;
        if (unknown != 0) {  // the screen, the program
            EXPECT_EQ(CreateImage(unknown, 4, 4), 0u) << unknown;
            EXPECT_EQ(LoadResourceImage(unknown, "sample"), 0u) << unknown;
        }
    }
    EXPECT_EQ(std::count(std::begin(info), std::end(info), 0xA5), 40);
    EXPECT_EQ(GetInfosImage(image, nullptr), 0);
    for (const auto &[width, height] :
         {std::pair{-1, 4}, std::pair{4, INT32_MIN}, std::pair{1 << 20, 1 << 20}})
        EXPECT_EQ(CreateImage(GetDC(0), width, height), 0u) << width << " x " << height;
    // A context of the caller's own is no image, and stays.
    const HDC own = CreateCompatibleDC(0);
    EXPECT_EQ(GetWidthImage(own), -1);
    EXPECT_EQ(FreeImage(own), 0);
    EXPECT_EQ(DeleteDC(own), 1);
    EXPECT_TRUE(SamePicture("untouched", ShownBy(image, 4, 4), Picture(4, 4, 0x563412)));
    DeleteObject(brush);
}

TEST_F(ImageSlots, FailedCreationLeavesTheSlotFree) {
    for (const Operation operation : {Operation::Bitmap, Operation::Context}) {
        FailOnce(operation, 1);
        EXPECT_EQ(CreateImage(GetDC(0), 8, 8), 0u);
        ForgetFailures();
        EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0}));
        EXPECT_EQ(FreeImage(CreateImage(GetDC(0), 8, 8)), 1);
    }
}

TEST_F(ImageSlots, RectanglesAreFilledWithoutTheirRightAndBottomEdge) {
    const uintptr_t image = CreateImage(GetDC(0), 8, 6);
    ColorFillImage(image, 0x332211, 0, 0, 8, 6);
    ColorFillImage(image, 0x0000FF, 2, 1, 5, 4);
    ColorFillImage(image, 0x00FF00, 6, 0, 6, 6);
    EXPECT_EQ(ColorFillImage(image, 0xFF0000, 7, 5, 100, 100), 0);
    Picture expected(8, 6, 0x112233);
    for (int y = 1; y < 4; ++y)
        for (int x = 2; x < 5; ++x) expected.At(x, y) = 0xFF0000;
    expected.At(7, 5) = 0x0000FF;
    EXPECT_TRUE(SamePicture("color-fill", ShownBy(image, 8, 6), expected));
}

TEST_F(ImageSlots, SizingRepeatsAndDropsPixels) {
    const uintptr_t source = CreateImage(GetDC(0), 4, 2), target = CreateImage(GetDC(0), 10, 6);
    for (int i = 0; i < 8; ++i)
        SetPixel(source, i % 4, i / 4, static_cast<COLORREF>(i % 4 * 40 + (i / 4 * 100 << 8)));
    constexpr int32_t kOtherMode = 1;
    for (const uintptr_t image : {source, target}) SetStretchBltMode(image, kOtherMode);
    for (const int32_t mode : {0, 0xCC0020}) {
        ColorFillImage(target, 0, 0, 0, 10, 6);
        EXPECT_NE(SizeImage(target, 1, 1, 8, 4, source, 0, 0, 4, 2, mode), 0);
        Picture expected(10, 6);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 8; ++x)
                expected.At(1 + x, 1 + y) = uint32_t(x / 2 * 40 << 16 | y / 2 * 100 << 8);
        EXPECT_TRUE(SamePicture("sized", ShownBy(target, 10, 6), expected)) << mode;
    }
    for (const uintptr_t image : {source, target})
        EXPECT_EQ(SetStretchBltMode(image, kOtherMode), COLORONCOLOR);
}

// What the names of the operations mean, bit by bit, over pattern (the brush, white), source and target.
TEST_F(ImageSlots, RasterModesDoWhatTheirNamesSay) {
    const uint32_t source = 0x5A3CF0, target = 0x0FF0C6, pattern = 0xFFFFFF;
    const uint32_t expected[] = {source,
                                 source & target,
                                 source | target,
                                 source ^ target,
                                 ~target,
                                 ~source,
                                 ~(source | target),
                                 source & pattern,
                                 ~source | target,
                                 pattern,
                                 pattern | ~source | target,
                                 pattern ^ target,
                                 source & ~target,
                                 0,
                                 0xFFFFFF};
    const uintptr_t from = CreateImage(GetDC(0), 1, 1);
    const uintptr_t to = CreateImage(GetDC(0), 1, 1);
    SetPixel(from, 0, 0, source);
    for (int32_t mode = 0; mode < 15; ++mode) {
        SetPixel(to, 0, 0, target);
        EXPECT_NE(SizeImage(to, 0, 0, 1, 1, from, 0, 0, 1, 1, mode), 0) << mode;
        EXPECT_EQ(GetPixel(to, 0, 0), expected[mode] & 0xFFFFFF) << mode;
    }
    for (const int32_t code : {15, -1, INT32_MIN, 0x660046})
        EXPECT_EQ(RasterCodeOfMode(code), static_cast<DWORD>(code));
}

}  // namespace
}  // namespace fenlight::test
