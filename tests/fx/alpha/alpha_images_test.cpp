// SPDX-License-Identifier: Zlib
// Painting, channels, and the way to FX buffers and back, beside walks that do what the definitions say step
// by step.
#include "fenlight/alpha_images.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "data/memory_guard.h"
#include "fx/alpha/alpha_kernels.h"
#include "fx/fx_picture.h"
#include "fx/guarded_buffer.h"
#include "images/image_slots.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using platform::Operation;

// The same for the same seed; a quarter is 0 or 255.
Bytes Noise(int64_t size, unsigned seed) {
    Dice dice(seed);
    Bytes bytes(static_cast<size_t>(size));
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>(dice() % 4 == 0 ? dice() % 2 * 255 : dice() >> 24);
    return bytes;
}

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
void ExpectTheSame(Dice &dice, int depth, int backdropDepth) {
    constexpr int32_t kWidth = 24, kHeight = 9;
    const auto within = [&](int32_t from, int32_t to) { return dice.Between(from, to); };
    const int32_t backdropWidth = within(1, 30), backdropHeight = within(1, 12);
    const Twins twins(kWidth, kHeight, depth);
    const Canvas backdrop(BitmapOfDepth(backdropWidth, backdropHeight, backdropDepth));
    DrawNoise(backdrop.context, backdropWidth, backdropHeight);
    for (const HDC dc : {twins.dc, twins.expected}) {
        DrawNoise(dc, kWidth, kHeight);
        for (int32_t i = 3; depth == 32 && i < 4 * kWidth * kHeight; i += 4) BitsOf(dc)[i] = 0x77;  // unused
    }

    const int32_t width = 4 * within(1, 9), height = within(1, 14), size = 4 * width * height;
    const Bytes pixels = Noise(size, static_cast<unsigned>(within(0, 99999)));
    const GuardedMemory image(pixels);
    const int32_t sizes[] = {size, size, size + 400, size / 2 + 1, within(0, size), -8};
    const Call call{image.Data(), sizes[dice() % 6], within(-30, 26), within(-12, 10), width, height};
    const int choice = within(0, 5);
    const auto under = [&](HDC dc) {
        return choice < 3 ? backdrop.context : choice == 3 ? dc : choice == 4 ? HDC{0} : HDC{0xDEAD};
    };
    PaintPlainly(call, twins.expected, under(twins.expected));
    EXPECT_EQ(Paint(call, twins.dc, under(twins.dc)), 1);
    EXPECT_EQ(image.Content(), pixels);
    ASSERT_TRUE(twins.Same("alpha_painting"))
        << depth << " bits over " << backdropDepth << ", at " << call.x << ' ' << call.y << ", " << width
        << " x " << height << ", " << call.bytes << " of " << size << " bytes, case " << choice;
}

TEST_F(AlphaPainting, GivesWhatTheScratchImageGives) {
    WithEachLevel([] {
        Dice dice(11);
        for (int round = 0; round < 150; ++round) {
            ExpectTheSame(dice, 32, 32);
            ExpectTheSame(dice, kDepths[round % 6], kDepths[round / 6 % 6]);
        }
    });
}

TEST_F(AlphaPainting, BlendsEveryCombinationOfBytes) {
    constexpr int kPixels = 256 * 256;
    Bytes image(4 * kPixels), backdrop(4 * kPixels), expected(4 * kPixels), target(4 * kPixels);
    WithEachLevel([&] {
        for (int alpha = 0; alpha < 256; ++alpha) {
            for (size_t i = 0; i < image.size(); i += 4) {
                const auto source = static_cast<uint8_t>(i / 4), old = static_cast<uint8_t>(i / 1024);
                const uint8_t pixel[] = {source, static_cast<uint8_t>(255 - source),
                                         static_cast<uint8_t>(source ^ 85), static_cast<uint8_t>(alpha)};
                std::memcpy(&image[i], pixel, 4);
                std::memset(&backdrop[i], old, 4);  // the unused byte too, which becomes 0
                for (size_t c = 0; c < 3; ++c) expected[i + c] = Blend(pixel[2 - c], old, alpha);
            }
            CurrentAlphaKernels().paint(target.data(), backdrop.data(), image.data(), kPixels);
            ASSERT_TRUE(target == expected) << alpha;
        }
    });
}

TEST_F(AlphaPainting, ReadsAnImageInTheTargetBeforeItPaintsOverIt) {
    for (const int32_t offset : {0, 4, 64, 100, 300}) {
        const Twins twins(16, 8);
        for (int i = 0; i < 512; ++i)
            BitsOf(twins.dc)[i] = BitsOf(twins.expected)[i] = static_cast<uint8_t>(i * i >> 2);
        PaintPlainly({BitsOf(twins.expected) + offset, 128, 4, 1, 8, 4}, twins.expected, 0);
        EXPECT_EQ(Paint({BitsOf(twins.dc) + offset, 128, 4, 1, 8, 4}, twins.dc, 0), 1);
        EXPECT_TRUE(twins.Same("overlap")) << offset;
    }
}

TEST_F(AlphaPainting, RefusesWithoutATrace) {
    const Bytes image(4 * 8 * 4, 0x99);
    for (const int depth : {24, 32}) {
        const Canvas canvas(BitmapOfDepth(16, 8, depth));
        const auto isRefused = [&](int32_t width, int32_t height, HDC dc) {
            return PaintPng(image.data(), 128, dc, 1, 1, width, height, 0) == 0;
        };
        for (const int32_t width : {6, 7, 1, -3, 0, -4})
            EXPECT_TRUE(isRefused(width, 4, canvas.context)) << width;
        for (const int32_t height : {0, -1, INT32_MAX}) EXPECT_TRUE(isRefused(8, height, canvas.context));
        for (const HDC dc : {HDC{0}, HDC{3}, HDC{0xDEAD}}) EXPECT_TRUE(isRefused(8, 4, dc));
        EXPECT_EQ(PaintPng(nullptr, 128, canvas.context, 1, 1, 8, 4, 0), 0);
        for (uint32_t i = 0; i < kImageSlots; ++i) CreateImage(canvas.context, 4, 4);
        EXPECT_TRUE(isRefused(8, 4, canvas.context)) << "no slot";
        EXPECT_EQ(FreeAllImages(), 32);
        const int bitmaps = platform::CountHandles(platform::HandleKind::Bitmap);
        for (const Operation operation : {Operation::Bitmap, Operation::Context, Operation::Memory}) {
            if (depth == 32) break;  // needs none of these
            platform::FailOnce(operation, 1);
            EXPECT_TRUE(isRefused(8, 4, canvas.context)) << static_cast<int>(operation);
            EXPECT_EQ(platform::CountHandles(platform::HandleKind::Bitmap), bitmaps);
        }
        EXPECT_TRUE(SamePicture("refused", PictureOf(canvas.context, 16, 8), Picture(16, 8)));
    }
}

// One move at a time, for the channels from `first` to `last`.
int32_t MergePlainly(Bytes &image, const Bytes &goal, int32_t steps, size_t first, size_t last) {
    const uint32_t moves = static_cast<uint32_t>(steps) >= 32 ? 32 : static_cast<uint32_t>(steps);
    int32_t count = 0;
    for (size_t pixel = 0; pixel + 4 <= image.size(); pixel += 4)
        for (size_t i = pixel + first; i <= pixel + last; ++i)
            for (uint32_t move = 0; move <= moves && image[i] != goal[i]; ++move, ++count)
                image[i] = static_cast<uint8_t>(image[i] < goal[i] ? image[i] + 1 : image[i] - 1);
    return count;
}

using MergeCall = int32_t (*)(uint8_t *, const uint8_t *, int32_t, int32_t) noexcept;

void ExpectMerge(MergeCall call, size_t first, size_t last, int32_t size, int32_t steps) {
    SCOPED_TRACE(::testing::Message() << "channel " << first << ", " << size << " bytes, steps " << steps);
    for (const bool isAtStart : {false, true}) {
        Bytes expected = Noise(size, 1);
        const GuardedMemory image(expected, isAtStart), goal(Noise(size, 2), isAtStart);
        const int32_t count = MergePlainly(expected, goal.Content(), steps, first, last);
        EXPECT_EQ(call(image.Data(), goal.Data(), size, steps), count);
        EXPECT_EQ(image.Content(), expected);
    }
}

TEST(AlphaChannels, MoveTowardsTheGoalAndCountTheirSteps) {
    WithEachLevel([] {
        for (const int32_t steps : {0, 1, 4, 31, 32, 33, 100, -1, INT32_MIN})
            for (const int32_t size : {0, 3, 4, 7, 60, 64, 68, 255, 448, 452, 900, 4096, 7004}) {
                ExpectMerge(MergeChannelPng, 3, 3, size, steps);
                ExpectMerge(MergeImagePng, 0, 2, size, steps);
            }
    });
    for (const auto &[steps, alpha, count] : {std::array{0, 11, 1}, {4, 15, 5}, {100, 20, 10}}) {
        uint8_t pixel[] = {1, 2, 3, 10};
        const uint8_t goal[] = {200, 200, 200, 20};
        EXPECT_EQ(MergeChannelPng(pixel, goal, 4, steps), count);
        EXPECT_EQ(Bytes(pixel, pixel + 4), (Bytes{1, 2, 3, static_cast<uint8_t>(alpha)}));
        EXPECT_EQ(MergeImagePng(pixel, pixel, 4, steps) + MergeImagePng(pixel, goal, -4, steps), 0);
    }
}

// Pixels of an alpha image from two runs of colours; the second, of greys, may be shorter.
Bytes WidenPlainly(const Bytes &colours, const Bytes &greys) {
    Bytes image;
    for (size_t i = 0; i + 3 <= colours.size(); i += 3) {
        const int mean = i + 3 <= greys.size() ? (greys[i] + greys[i + 1] + greys[i + 2]) / 3 : 255;
        image.insert(image.end(), {colours[i + 2], colours[i + 1], colours[i], static_cast<uint8_t>(mean)});
    }
    return image;
}

Bytes AlphasOf(const Bytes &image) {
    Bytes alphas;
    for (size_t i = 3; i < image.size(); i += 4) alphas.insert(alphas.end(), 3, image[i]);
    return alphas;
}

TEST(AlphaPixels, AreTouchedAndNothingElse) {
    WithEachLevel([] {
        const AlphaKernels &kernels = CurrentAlphaKernels();
        for (int32_t pixels = 0; pixels <= 200; ++pixels)
            for (const bool isAtStart : {false, true}) {
                SCOPED_TRACE(pixels);
                const Bytes colours = Noise(3 * pixels, 1), greys = Noise(3 * pixels, 2);
                const GuardedMemory first(colours, isAtStart), second(greys, isAtStart);
                const GuardedMemory opaque(Noise(4 * pixels, 3), isAtStart),
                    image(opaque.Content(), isAtStart);
                kernels.widen(opaque.Data(), first.Data(), pixels);
                kernels.widenWithAlpha(image.Data(), first.Data(), second.Data(), pixels);
                ASSERT_EQ(opaque.Content(), WidenPlainly(colours, {}));
                Bytes expected = WidenPlainly(colours, greys);
                ASSERT_EQ(image.Content(), expected);

                kernels.narrow(second.Data(), image.Data(), pixels);
                ASSERT_EQ(second.Content(), colours);
                kernels.narrowWithAlpha(second.Data(), first.Data(), image.Data(), pixels);
                ASSERT_EQ(second.Content(), colours);
                ASSERT_EQ(first.Content(), AlphasOf(expected));

                for (size_t i = 3; i < expected.size(); i += 4) expected[i] ^= 255;
                InvertChannelPng(image.Data(), 4 * pixels + pixels % 4);
                InvertChannelPng(image.Data(), pixels % 4 - 4);
                ASSERT_EQ(image.Content(), expected);
            }
        Bytes sums, image(4 * 766);  // every mean
        for (int sum = 0; sum <= 765; ++sum)
            for (const int part : {sum, sum + 1, sum + 2}) sums.push_back(static_cast<uint8_t>(part / 3));
        kernels.widenWithAlpha(image.data(), sums.data(), sums.data(), 766);
        EXPECT_EQ(image, WidenPlainly(sums, sums));
    });
}

Bytes BytesOf(const OwnedFX &fx) { return {fx->Pixels, fx->Pixels + fx->biSizeImage}; }

TEST(AlphaConversion, WalksThePixelsOfBuffersWhateverTheirRows) {
    Dice dice(12);
    for (const auto &[width, height, alphaHeight] :
         {std::array{1, 1, 1}, {5, 3, 0}, {6, 9, 9}, {67, 35, 20}, {64, 3, 5}, {7, 2, 1}}) {
        const GuardedBuffer fx = dice.Noise(width, height), alpha = dice.Noise(width, alphaHeight);
        Bytes colours = fx.Block(), greys = alpha.Block();
        colours.resize(static_cast<size_t>(3 * fx.Pixels()));
        greys.resize(static_cast<size_t>(3 * std::min(fx.Pixels(), alpha.Pixels())));
        int32_t sizes[3];
        uint8_t *image =
            FXToPng(fx.Handle(), sizes, sizes + 1, sizes + 2, alphaHeight > 0 ? alpha.Handle() : 0);
        ASSERT_EQ(std::to_array(sizes), (std::array{width, height, 4 * width * height}));
        EXPECT_EQ(Bytes(image, image + sizes[2]), WidenPlainly(colours, greys)) << width;

        uintptr_t grey = 0;
        const OwnedFX back(FXFromHandle(PngToFX(image, width, height, sizes[2], &grey)));
        const OwnedFX alone(FXFromHandle(PngToFX(image, width, height, sizes[2], nullptr)));
        EXPECT_EQ(BytesOf(back), colours) << width;
        EXPECT_EQ(BytesOf(alone), colours) << width;
        EXPECT_EQ(BytesOf(OwnedFX(FXFromHandle(grey))), AlphasOf({image, image + sizes[2]})) << width;
        FreePng(image);
    }
}

TEST(AlphaConversion, FailsWithoutMemoryOrBuffer) {
    GuardedBuffer fx(4, 2);
    int32_t sizes[3] = {};
    const auto isRefused = [&](uintptr_t handle, std::array<int32_t, 3> told) {
        return FXToPng(handle, sizes, sizes + 1, sizes + 2, 0) == nullptr && std::to_array(sizes) == told;
    };
    platform::FailOnce(Operation::Memory, 1);
    EXPECT_TRUE(isRefused(fx.Handle(), {4, 2, 32})) << "told all the same";
    EXPECT_TRUE(isRefused(0, {}));
    FreePng(FXToPng(fx.Handle(), nullptr, nullptr, nullptr, 0));
    fx.header.biWidth = fx.header.biHeight = 25000;
    EXPECT_TRUE(isRefused(fx.Handle(), {25000, 25000, 0}));

    uintptr_t alpha = 4711;
    const Bytes image(32, 7);
    const auto convert = [&](int32_t width, int32_t height) {
        return PngToFX(image.data(), width, height, 32, &alpha);
    };
    for (const int number : {1, 2}) {
        platform::FailOnce(Operation::Memory, number);
        EXPECT_EQ(convert(4, 2), 0u);
    }
    platform::ForgetFailures();
    EXPECT_EQ(convert(0, 4) + convert(4, -1) + convert(INT32_MAX, INT32_MAX), 0u);
    EXPECT_EQ(PngToFX(nullptr, 4, 2, 32, &alpha), 0u);
    InvertChannelPng(nullptr, 4);
    EXPECT_EQ(MergeImagePng(nullptr, nullptr, 4, 4), 0);
    EXPECT_EQ(alpha, 4711u) << "left alone by every failure";
    for (const int32_t bytes : {32, INT32_MAX, 9, 3, -1, INT32_MIN}) {  // black behind them
        Bytes expected(12);
        std::fill_n(expected.begin(), 3 * std::clamp(bytes / 4, 0, 4), uint8_t{7});
        const OwnedFX some(FXFromHandle(PngToFX(image.data(), 2, 2, bytes, &alpha)));
        EXPECT_EQ(BytesOf(some), expected) << bytes;
        EXPECT_EQ(BytesOf(OwnedFX(FXFromHandle(alpha))), expected) << bytes;
    }
}

}  // namespace
}  // namespace fenlight::test
