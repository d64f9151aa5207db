// SPDX-License-Identifier: Zlib
#include <cstring>
#include <random>
#include <vector>

#include "data/each_level.h"
#include "fenlight/alpha_images.h"
#include "fx/fx_picture.h"
#include "images/image_slots.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using Bytes = std::vector<uint8_t>;

struct Call {
    const uint8_t *image;
    int32_t bytes, x, y, width, height;
};

int32_t Paint(const Call &call, HDC dc, HDC backdrop) {
    return PaintPng(call.image, call.bytes, dc, call.x, call.y, call.width, call.height, backdrop);
}

uint8_t Blend(int source, int target, int alpha) {
    return static_cast<uint8_t>((source * alpha + target * (255 - alpha)) / 255);
}

// The definition, with the library's other functions.
int32_t PaintPlainly(const Call &call, HDC dc, HDC backdrop) {
    const uintptr_t scratch = CreateImage(dc, call.width, call.height);
    BitBlt(scratch, 0, 0, call.width, call.height, backdrop != 0 ? backdrop : dc, call.x, call.y, SRCCOPY);
    const uintptr_t fx = InitFX(scratch);
    for (int32_t i = 0; i < std::min(call.bytes / 4, call.width * call.height); ++i)
        for (int c = 0; c < 3; ++c) {
            uint8_t &byte = FXFromHandle(fx)->Pixels[3 * i + c];
            byte = Blend(call.image[4 * i + 2 - c], byte, call.image[4 * i + 3]);
        }
    CopyFX(dc, call.x, call.y, fx);
    FreeFX(fx);
    return FreeImage(scratch);
}

// The first row in memory; the rows of DIB sections of 32 bits have no gaps.
uint8_t *BitsOf(HDC dc) {
    const platform::SurfaceAccess surface(dc);
    return std::min(surface.View().Row(0), surface.View().Row(surface.View().height - 1));
}

class AlphaPainting : public ::testing::Test {
  protected:
    void TearDown() override {
        platform::ForgetFailures();
        EXPECT_EQ(FreeAllImages(), 0);
    }
};

// Sizes and places around a target of 24 x 9; sometimes over itself, or over a backdrop that is dead.
void ExpectTheSame(std::mt19937 &random, int depth, int backdropDepth) {
    constexpr int32_t kWidth = 24, kHeight = 9;
    const auto within = [&](int32_t from, int32_t to) {
        return from + static_cast<int32_t>(random() % static_cast<unsigned>(to - from + 1));
    };
    const int32_t backdropWidth = within(1, 30), backdropHeight = within(1, 12);
    const Canvas actual(BitmapOfDepth(kWidth, kHeight, depth)),
        expected(BitmapOfDepth(kWidth, kHeight, depth)),
        backdrop(BitmapOfDepth(backdropWidth, backdropHeight, backdropDepth));
    DrawNoise(actual.context, kWidth, kHeight);
    DrawNoise(expected.context, kWidth, kHeight);
    DrawNoise(backdrop.context, backdropWidth, backdropHeight);
    for (const Canvas *canvas : {&actual, &expected})  // the unused bytes
        for (int32_t i = 3; depth == 32 && i < 4 * kWidth * kHeight; i += 4)
            BitsOf(canvas->context)[i] = 0x77;

    const int32_t width = 4 * within(1, 9), height = within(1, 14), size = 4 * width * height;
    Bytes pixels(static_cast<size_t>(size));
    for (uint8_t &byte : pixels)
        byte = static_cast<uint8_t>(within(0, 3) == 0 ? within(0, 1) * 255 : random());
    const GuardedMemory image(pixels);
    const int32_t sizes[] = {size, size, size + 400, size / 2 + 1, within(0, size), -8};
    const Call call{image.Data(), sizes[random() % 6], within(-30, 26), within(-12, 10), width, height};
    const int choice = within(0, 5);
    const auto under = [&](HDC dc) {
        return choice < 3 ? backdrop.context : choice == 3 ? dc : choice == 4 ? HDC{0} : HDC{0xDEAD};
    };
    PaintPlainly(call, expected.context, under(expected.context));
    EXPECT_EQ(Paint(call, actual.context, under(actual.context)), 1);
    EXPECT_EQ(image.Content(), pixels);
    EXPECT_TRUE(depth != 32 ||
                std::memcmp(BitsOf(actual.context), BitsOf(expected.context), 4 * kWidth * kHeight) == 0);
    ASSERT_TRUE(SamePicture("alpha_painting", PictureOf(actual.context, kWidth, kHeight),
                            PictureOf(expected.context, kWidth, kHeight)))
        << depth << " bits over " << backdropDepth << ", at " << call.x << ' ' << call.y << ", " << width
        << " x " << height << ", " << call.bytes << " of " << size << " bytes, case " << choice;
}

TEST_F(AlphaPainting, GivesWhatTheScratchImageGives) {
    WithEachLevel([] {
        std::mt19937 random(11);
        for (int round = 0; round < 150; ++round) {
            ExpectTheSame(random, 32, 32);
            ExpectTheSame(random, kDepths[round % 6], kDepths[round / 6 % 6]);
        }
    });
}

TEST_F(AlphaPainting, BlendsEveryCombinationOfBytes) {
    const Canvas target(BitmapOfDepth(256, 256, 32));  // bottom-up: row and column change the roles
    Bytes image(4 * 256 * 256), expected(image.size());
    WithEachLevel([&] {
        for (int alpha = 0; alpha < 256; ++alpha) {
            for (size_t i = 0; i < image.size(); i += 4) {
                const auto source = static_cast<uint8_t>(i / 4), old = static_cast<uint8_t>(i / 1024);
                const size_t turned = i % 1024 + (255 - i / 1024) * 1024;
                const uint8_t sources[] = {source, static_cast<uint8_t>(255 - source),
                                           static_cast<uint8_t>(source ^ 85), static_cast<uint8_t>(alpha)};
                std::copy_n(sources, 4, &image[turned]);
                std::memset(BitsOf(target.context) + i, old, 4);  // the unused byte too, which becomes 0
                for (size_t c = 0; c < 3; ++c) expected[i + c] = Blend(sources[2 - c], old, alpha);
            }
            ASSERT_EQ(PaintPng(image.data(), 4 * 256 * 256, target.context, 0, 0, 256, 256, 0), 1);
            ASSERT_EQ(std::memcmp(BitsOf(target.context), expected.data(), expected.size()), 0) << alpha;
        }
    });
}

TEST_F(AlphaPainting, ReadsAnImageInTheTargetBeforeItPaintsOverIt) {
    for (const int32_t offset : {0, 4, 64, 100, 300}) {
        const Canvas actual(BitmapOfDepth(16, 8, 32)), expected(BitmapOfDepth(16, 8, 32));
        for (int i = 0; i < 512; ++i)
            BitsOf(actual.context)[i] = BitsOf(expected.context)[i] = static_cast<uint8_t>(i * i >> 2);
        PaintPlainly({BitsOf(expected.context) + offset, 128, 4, 1, 8, 4}, expected.context, 0);
        EXPECT_EQ(Paint({BitsOf(actual.context) + offset, 128, 4, 1, 8, 4}, actual.context, 0), 1);
        EXPECT_TRUE(
            SamePicture("overlap", PictureOf(actual.context, 16, 8), PictureOf(expected.context, 16, 8)))
            << offset;
    }
}

TEST_F(AlphaPainting, RefusesWithoutATrace) {
    using platform::Operation;
    const Bytes image(4 * 8 * 4, 0x99);
    for (const int depth : {24, 32}) {
        const Canvas target(BitmapOfDepth(16, 8, depth));
        const auto isRefused = [&](int32_t width, int32_t height, HDC dc) {
            return PaintPng(image.data(), 128, dc, 1, 1, width, height, 0) == 0;
        };
        for (const int32_t width : {6, 7, 1, -3, 0, -4})
            EXPECT_TRUE(isRefused(width, 4, target.context)) << width;
        for (const int32_t height : {0, -1, INT32_MAX}) EXPECT_TRUE(isRefused(8, height, target.context));
        for (const HDC dc : {HDC{0}, HDC{3}, HDC{0xDEAD}}) EXPECT_TRUE(isRefused(8, 4, dc));
        EXPECT_EQ(PaintPng(nullptr, 128, target.context, 1, 1, 8, 4, 0), 0);
        for (uint32_t i = 0; i < kImageSlots; ++i) CreateImage(target.context, 4, 4);
        EXPECT_TRUE(isRefused(8, 4, target.context)) << "no slot";
        EXPECT_EQ(FreeAllImages(), 32);
        const int bitmaps = platform::CountHandles(platform::HandleKind::Bitmap);
        for (const Operation operation : {Operation::Bitmap, Operation::Context, Operation::Memory}) {
            platform::FailOnce(operation, 1);  // 32 bits need none of these
            EXPECT_EQ(isRefused(8, 4, depth == 24 ? target.context : 0), true) << static_cast<int>(operation);
            EXPECT_EQ(platform::CountHandles(platform::HandleKind::Bitmap), bitmaps);
        }
        EXPECT_TRUE(SamePicture("refused", PictureOf(target.context, 16, 8), Picture(16, 8)));
    }
}

}  // namespace
}  // namespace fenlight::test
