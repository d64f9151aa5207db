// SPDX-License-Identifier: Zlib
#include "fx/fx_buffer.h"

#include <algorithm>
#include <cstring>

#include "fx/fx_picture.h"
#include "fx/guarded_buffer.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using platform::FailOnce;
using platform::ForgetFailures;
using platform::Operation;

// Bytes of a row on 32 bits, by the definition of the format.
int32_t PitchOf(int32_t width) { return (width * 24 + 31) / 32 * 4; }

class FXBuffers : public ::testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(FreeAllImages(), 0) << "images left by the test"; }
};

TEST_F(FXBuffers, HoldTheImageAtEveryWidthAndInEveryFormat) {
    for (const int depth : kDepths) {
        for (int32_t width = 1; width <= 17; ++width) {
            const int32_t height = 1 + width % 3;
            const uintptr_t image = NoisyImage(width, height, depth);
            const Picture drawn = PictureOf(image, width, height);
            SetTextColor(image, 0x345678);  // the colours of the image's context play no part
            SetBkColor(image, 0x8800FF);
            const uintptr_t handle = InitFX(image);
            ASSERT_NE(handle, 0u) << depth << ' ' << width;
            EXPECT_EQ(FreeImage(image), 1);
            const FXHeader &fx = *FXFromHandle(handle);
            EXPECT_EQ(fx.biSizeImage, static_cast<uint32_t>(PitchOf(width) * height)) << width;
            EXPECT_TRUE(SamePicture("block", PictureInBlock(fx, PitchOf(width)), drawn)) << depth;
            for (int32_t y = 0; y < height; ++y)
                for (int32_t at = 3 * width; at < PitchOf(width); ++at)
                    EXPECT_EQ(fx.Pixels[y * PitchOf(width) + at], 0) << width << ' ' << at;

            const Canvas canvas(width, height);
            EXPECT_EQ(CopyFX(canvas.context, 0, 0, handle), 0);
            EXPECT_TRUE(SamePicture("painted", PictureOf(canvas.context, width, height), drawn)) << depth;
            EXPECT_EQ(fx.biHeight, height);
            EXPECT_EQ(FreeFX(handle), 0);
        }
    }
}

TEST_F(FXBuffers, HaveTheDocumentedHeader) {
    const uintptr_t image = NoisyImage(5, 2);
    const uintptr_t padded = InitFX(image), packed = CreateExtFX(5, 2);
    for (const auto &[handle, bytes] : {std::pair(padded, 32u), std::pair(packed, 30u)}) {
        const FXHeader &fx = *FXFromHandle(handle);
        const uint32_t words[] = {40, 5, 2, 1 | 24 << 16, 0, bytes, 0, 0, 0, 0};
        EXPECT_EQ(std::memcmp(&fx, words, sizeof words), 0) << bytes;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(fx.Pixels) % 64, 0u);
    }
    FXHeader &source = *FXFromHandle(padded);
    source.biClrUsed = 7;
    const uintptr_t clone = CloneFX(padded);
    FXHeader &copy = *FXFromHandle(clone);
    EXPECT_EQ(std::memcmp(&copy, &source, sizeof(BITMAPINFOHEADER)), 0);
    EXPECT_EQ(std::memcmp(copy.Pixels, source.Pixels, 32), 0);
    std::fill_n(copy.Pixels, 32, uint8_t{0x77});
    EXPECT_TRUE(SamePicture("source", PictureInBlock(source, 16), PictureOf(image, 5, 2)));
    for (const uintptr_t handle : {padded, packed, clone}) FreeFX(handle);
    FreeImage(image);
}

TEST_F(FXBuffers, AreBlackWhereNothingIsDrawnAlsoInRecycledMemory) {
    const auto takeAndSpoil = [](uintptr_t handle) {
        const OwnedFX fx(FXFromHandle(handle));
        Picture picture = PictureInBlock(*fx, 180);
        std::fill_n(fx->Pixels, fx->biSizeImage, uint8_t{0xEE});
        return picture;
    };
    const uintptr_t image = NoisyImage(60, 40);
    for (int turn = 0; turn < 2; ++turn)
        EXPECT_TRUE(SamePicture("black", takeAndSpoil(CreateExtFX(60, 40)), Picture(60, 40))) << turn;
    // Somebody has another bitmap in the image's context: the size stays that of the image.
    for (const auto &[width, height] : {std::pair(33, 40), {60, 7}, {99, 1}, {99, 99}}) {
        const HBITMAP other = CreateCompatibleBitmap(image, width, height);
        const HGDIOBJ own = SelectObject(image, other);
        DrawNoise(image, width, height);
        Picture shown(60, 40);
        for (int i = 0; i < 60 * 40; ++i)
            if (i % 60 < width && i / 60 < height)
                shown.At(i % 60, i / 60) = Word(GetPixel(image, i % 60, i / 60));
        EXPECT_TRUE(SamePicture("shown", takeAndSpoil(InitFX(image)), shown)) << width << ' ' << height;
        SelectObject(image, own);
        DeleteObject(other);
    }
    FreeImage(image);
}

TEST_F(FXBuffers, RefuseWhatCannotBe) {
    const std::pair<int32_t, int32_t> sizes[] = {
        {0, 4},           {4, 0},         {-1, 4},        {4, -1},    {-3, -5},      {kMost, kMost},
        {kLeast, kLeast}, {65536, 65536}, {26755, 26755}, {kMost, 1}, {1, 715827865}};
    for (const auto &[width, height] : sizes)
        EXPECT_EQ(CreateExtFX(width, height), 0u) << width << ' ' << height;

    const uintptr_t image = NoisyImage(4, 4), freed = NoisyImage(4, 4);
    FreeImage(freed);
    const Canvas own(4, 4);
    for (const uintptr_t unknown : {uintptr_t{0}, uintptr_t{3}, freed, own.context, ~uintptr_t{0}})
        EXPECT_EQ(InitFX(unknown), 0u) << unknown;
    const uintptr_t fx = InitFX(image);
    const auto failsOnce = [](auto make) {
        FailOnce(Operation::Memory, 1);
        const bool hasFailed = make() == 0;
        ForgetFailures();
        return hasFailed;
    };
    EXPECT_TRUE(failsOnce([&] { return InitFX(image); }));
    EXPECT_TRUE(failsOnce([&] { return CreateExtFX(4, 4); }));
    EXPECT_TRUE(failsOnce([&] { return CloneFX(fx); }));
    EXPECT_EQ(CloneFX(0), 0u);
    EXPECT_EQ(FreeFX(0), 0);
    FreeFX(fx);
    FreeImage(image);
}

// The published transfer, told by its own header that the rows go down, is the judge for every target.
TEST_F(FXBuffers, PaintAsThePublishedTransferDoes) {
    const uintptr_t image = NoisyImage(7, 5), handle = InitFX(image);
    const FXHeader &fx = *FXFromHandle(handle);
    DibHeader downwards(7, -5, 24);
    for (const int depth : kDepths) {
        for (const auto &[x, y] : {std::pair(0, 0), {-3, -2}, {6, 4}, {kMost, 0}, {kLeast, kLeast}}) {
            const Twins twins(9, 6, depth);
            for (const HDC context : {twins.dc, twins.expected}) {
                DrawNoise(context, 9, 6);
                SetBkColor(context, Word(PictureOf(image, 7, 5).At(3, 2)));
            }
            CopyFX(twins.dc, x, y, handle);
            SetDIBitsToDevice(twins.expected, x, y, 7, 5, 0, 0, 0, 5, fx.Pixels, downwards.Info(), 0);
            EXPECT_TRUE(twins.Same("painted")) << depth << " at " << x << ", " << y;
        }
    }
    EXPECT_EQ(CopyFX(0, 0, 0, handle), 0);
    EXPECT_EQ(CopyFX(image, 0, 0, 0), 0);
    FreeImage(image);
    EXPECT_EQ(CopyFX(image, 0, 0, handle), 0);  // the context is dead
    FreeFX(handle);
}

TEST_F(FXBuffers, PackedRowsArePaintedAsPaddedOnesAndNeverReadBehindTheBlock) {
    Dice dice(1);
    for (int32_t width = 1; width <= 9; ++width) {
        for (int32_t height = 1; height <= 7; ++height) {
            const GuardedBuffer fx = dice.Noise(width, height, Rows::Packed, 256);
            const Canvas canvas(width, height);
            DrawNoise(canvas.context, width, height);
            PaintFX(canvas.context, 0, 0, fx.header, fx.header.Pixels);
            EXPECT_TRUE(SamePicture("packed", PictureOf(canvas.context, width, height),
                                    PictureInBlock(fx.header, PitchOf(width))));
        }
    }
    const uintptr_t packed = CreateExtFX(5, 20);
    const Canvas canvas(5, 20);
    DrawNoise(canvas.context, 5, 20);
    const Picture before = PictureOf(canvas.context, 5, 20);
    FailOnce(Operation::Memory, 1);
    CopyFX(canvas.context, 0, 0, packed);
    ForgetFailures();
    EXPECT_TRUE(SamePicture("no memory", PictureOf(canvas.context, 5, 20), before));
    FreeFX(packed);
}

}  // namespace
}  // namespace fenlight::test
