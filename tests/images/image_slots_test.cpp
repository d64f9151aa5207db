// SPDX-License-Identifier: Zlib
#include "images/image_slots.h"

#include <algorithm>
#include <array>
#include <random>
#include <utility>
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

// The model is the table as it should stand: the lowest free slot is taken, and the handle 0 names it.
TEST_F(ImageSlots, FollowAModelThroughFullAndEmptyTables) {
    std::array<uintptr_t, 32> model{};
    const auto slotOf = [&](uintptr_t image) {
        return static_cast<int32_t>(std::find(model.begin(), model.end(), image) - model.begin());
    };
    std::mt19937 random(9);
    uintptr_t dead = 3;
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        const bool isFilling = round % 200 < 100;
        if ((random() % 4 != 0) == isFilling) {
            const int32_t slot = slotOf(0);
            const uintptr_t image = CreateImage(GetDC(0), 10 + slot, 20 + slot);
            if (slot < 32) model[static_cast<size_t>(slot)] = image;
            EXPECT_EQ(static_cast<int32_t>(image) > 3, slot < 32);
        } else {
            const uintptr_t image = std::array{model[random() % 32], dead, uintptr_t{0}}[random() % 8 % 3];
            const int32_t slot = slotOf(image);
            EXPECT_EQ(FreeImage(image), slot < 32 ? 4 * slot + 1 : 0);
            if (image != 0 && slot < 32) dead = std::exchange(model[static_cast<size_t>(slot)], 0);
        }
        ASSERT_TRUE(std::equal(model.begin(), model.end(), ImageDCTable.begin()));
    }
    const auto live = static_cast<int32_t>(32 - std::count(model.begin(), model.end(), 0u));
    EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{live, live}));
    for (const uintptr_t image : model) {
        EXPECT_EQ(GetWidthImage(image), image != 0 ? 10 + slotOf(image) : -1);
        EXPECT_EQ(GetHeightImage(image), image != 0 ? 20 + slotOf(image) : 0);
    }
    EXPECT_EQ(FreeAllImages(), live);
    EXPECT_EQ(FreeAllImages(), 0);
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

TEST_F(ImageSlots, FillingLeavesOutTwoEdgesAndSizingRepeatsPixels) {
    const uintptr_t source = CreateImage(GetDC(0), 4, 2), target = CreateImage(GetDC(0), 10, 6);
    for (int i = 0; i < 8; ++i)
        SetPixel(source, i % 4, i / 4, static_cast<COLORREF>(i % 4 * 40 + (i / 4 * 100 << 8)));
    constexpr int32_t kOtherMode = 1;
    for (const uintptr_t image : {source, target}) SetStretchBltMode(image, kOtherMode);
    for (const int32_t mode : {0, 0xCC0020}) {
        ColorFillImage(target, 0x0000FF, 0, 0, 100, 6);
        EXPECT_EQ(ColorFillImage(target, 0x332211, -3, 0, 9, 5), 0);
        EXPECT_NE(SizeImage(target, 1, 1, 8, 4, source, 0, 0, 4, 2, mode), 0);
        Picture expected(10, 6, 0xFF0000);
        for (int i = 0; i < 9 * 5; ++i) expected.At(i % 9, i / 9) = 0x112233;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 8; ++x)
                expected.At(1 + x, 1 + y) = uint32_t(x / 2 * 40 << 16 | y / 2 * 100 << 8);
        EXPECT_TRUE(SamePicture("sized", ShownBy(target, 10, 6), expected)) << mode;
    }
    for (const uintptr_t image : {source, target})
        EXPECT_EQ(SetStretchBltMode(image, kOtherMode), COLORONCOLOR);
}

// As truth tables: bit 4 P + 2 S + T is the result for the bits of pattern (the brush), source and target.
TEST_F(ImageSlots, RasterModesDoWhatTheirNamesSay) {
    constexpr uint32_t kTables[] = {0xCC, 0x88, 0xEE, 0x66, 0x55, 0x33, 0x11, 0xC0,
                                    0xBB, 0xF0, 0xFB, 0x5A, 0x44, 0x00, 0xFF};
    const uint32_t pattern = 0x99A5C3, source = 0x5A3CF0, target = 0x0FF0C6;
    const auto bitOf = [](uint32_t word, int bit) { return word >> bit & 1; };
    const HBRUSH brush = CreateSolidBrush(pattern);
    const uintptr_t from = CreateImage(GetDC(0), 1, 1), to = CreateImage(GetDC(0), 1, 1);
    const HGDIOBJ white = SelectObject(to, brush);
    SetPixel(from, 0, 0, source);
    for (int32_t mode = 0; mode < 15; ++mode) {
        uint32_t expected = 0;
        for (int bit = 0; bit < 24; ++bit) {
            const uint32_t at = 4 * bitOf(pattern, bit) + 2 * bitOf(source, bit) + bitOf(target, bit);
            expected |= (kTables[mode] >> at & 1) << bit;
        }
        SetPixel(to, 0, 0, target);
        EXPECT_NE(SizeImage(to, 0, 0, 1, 1, from, 0, 0, 1, 1, mode), 0) << mode;
        EXPECT_EQ(GetPixel(to, 0, 0), expected) << mode;
    }
    SelectObject(to, white);
    DeleteObject(brush);
    for (const int32_t code : {15, -1, INT32_MIN, 0x660046})
        EXPECT_EQ(RasterCodeOfMode(code), static_cast<DWORD>(code));
}

}  // namespace
}  // namespace fenlight::test
