// SPDX-License-Identifier: Zlib
// Channels, and the way to FX buffers and back, beside walks that do what the definitions say step by step.
#include <random>
#include <vector>

#include "data/each_level.h"
#include "fenlight/alpha_images.h"
#include "fx/fx_picture.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Noise(int64_t size, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(static_cast<size_t>(size));
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random() >> 24);
    return bytes;
}

// One move at a time, for the channels from `first` to `last`.
int32_t MergePlainly(Bytes &image, const Bytes &goal, int32_t steps, size_t first, size_t last) {
    const uint32_t moves = static_cast<uint32_t>(steps) >= 32 ? 32 : static_cast<uint32_t>(steps);
    int32_t count = 0;
    for (size_t pixel = 0; pixel + 4 <= image.size(); pixel += 4)
        for (size_t i = pixel + first; i <= pixel + last; ++i)
            for (uint32_t move = 0; move <= moves; ++move) {
                if (image[i] == goal[i]) continue;
                ++count;
                image[i] = static_cast<uint8_t>(image[i] < goal[i] ? image[i] + 1 : image[i] - 1);
            }
    return count;
}

using MergeCall = int32_t (*)(uint8_t *, const uint8_t *, int32_t, int32_t) noexcept;

void ExpectMerge(MergeCall call, size_t first, size_t last, int32_t size, int32_t steps) {
    SCOPED_TRACE(::testing::Message() << "channel " << first << ", " << size << " bytes, steps " << steps);
    Bytes expected = Noise(size, 1);
    const Bytes goal = Noise(size, static_cast<unsigned>(steps));
    const GuardedMemory image(expected), goalMemory(goal), atStart(expected, true);
    const int32_t count = MergePlainly(expected, goal, steps, first, last);
    EXPECT_EQ(call(image.Data(), goalMemory.Data(), size, steps), count);
    EXPECT_EQ(call(atStart.Data(), goalMemory.Data(), size, steps), count);
    EXPECT_EQ(image.Content(), expected);
    EXPECT_EQ(atStart.Content(), expected);
}

TEST(AlphaChannels, MoveTowardsTheGoalAndCountTheirSteps) {
    WithEachLevel([] {
        for (const int32_t steps : {0, 1, 4, 31, 32, 33, 100, -1, INT32_MIN})
            for (const int32_t size : {0, 3, 4, 7, 60, 64, 68, 255, 448, 452, 900, 4096, 7004}) {
                ExpectMerge(MergeChannelPng, 3, 3, size, steps);
                ExpectMerge(MergeImagePng, 0, 2, size, steps);
            }
    });
}

TEST(AlphaChannels, MoveAsFarAsWorkedByHand) {
    for (const auto &[steps, alpha, count] : {std::array{0, 11, 1}, {4, 15, 5}, {100, 20, 10}}) {
        uint8_t pixel[] = {1, 2, 3, 10};
        const uint8_t goal[] = {200, 200, 200, 20};
        EXPECT_EQ(MergeChannelPng(pixel, goal, 4, steps), count);
        EXPECT_EQ(Bytes(pixel, pixel + 4), (Bytes{1, 2, 3, static_cast<uint8_t>(alpha)}));
        EXPECT_EQ(MergeImagePng(pixel, pixel, 4, steps), 0);
    }
}

TEST(AlphaChannels, AreInvertedPixelByPixelAndNoFurther) {
    WithEachLevel([] {
        for (int32_t size = 0; size <= 300; ++size) {
            Bytes expected = Noise(size, 3);
            const GuardedMemory end(expected), start(expected, true);
            for (size_t i = 3; i < expected.size(); i += 4)
                expected[i] = static_cast<uint8_t>(255 - expected[i]);
            for (const GuardedMemory *image : {&end, &start}) {
                InvertChannelPng(image->Data(), size);
                EXPECT_EQ(image->Content(), expected) << size;
            }
        }
    });
    for (const int32_t none : {0, 3, -4, INT32_MIN}) {
        uint8_t pixel[] = {1, 2, 3, 4};
        InvertChannelPng(pixel, none);
        EXPECT_EQ(MergeChannelPng(pixel, Bytes(4, 9).data(), none, 0), 0);
        EXPECT_EQ(Bytes(pixel, pixel + 4), (Bytes{1, 2, 3, 4})) << none;
    }
    InvertChannelPng(nullptr, 4);
    EXPECT_EQ(MergeImagePng(nullptr, nullptr, 4, 4), 0);
}

// A buffer with rows of either kind, filled with noise from end to end.
uintptr_t NoisyFX(int32_t width, int32_t height, bool isPadded, unsigned seed) {
    const uintptr_t image = isPadded ? CreateImage(platform::ScreenContext(), width, height) : 0;
    const uintptr_t fx = isPadded ? InitFX(image) : CreateExtFX(width, height);
    FXHeader &header = *FXFromHandle(fx);
    const Bytes noise = Noise(header.biSizeImage, seed);
    std::copy(noise.begin(), noise.end(), header.Pixels);
    if (isPadded) FreeImage(image);
    return fx;
}

Bytes PlainImage(const FXHeader &fx, const FXHeader *alpha) {
    const int32_t pixels = fx.biWidth * fx.biHeight;
    const int32_t alphas = alpha != nullptr ? alpha->biWidth * alpha->biHeight : 0;
    Bytes image;
    for (int32_t i = 0; i < pixels; ++i) {
        const uint8_t *colour = fx.Pixels + 3 * i;
        const uint8_t *grey = i < alphas ? alpha->Pixels + 3 * i : nullptr;
        const int mean = grey != nullptr ? (grey[0] + grey[1] + grey[2]) / 3 : 255;
        image.insert(image.end(), {colour[2], colour[1], colour[0], static_cast<uint8_t>(mean)});
    }
    return image;
}

void ExpectConversions(int32_t width, int32_t height, bool isPadded, int32_t alphaHeight) {
    SCOPED_TRACE(::testing::Message() << width << " x " << height << ", alpha " << alphaHeight);
    const OwnedFX fx(FXFromHandle(NoisyFX(width, height, isPadded, 1)));
    const OwnedFX alpha(FXFromHandle(alphaHeight > 0 ? NoisyFX(width, alphaHeight, isPadded, 2) : 0));
    int32_t w = 0, h = 0, bytes = 0;
    uint8_t *image = FXToPng(reinterpret_cast<uintptr_t>(fx.get()), &w, &h, &bytes,
                             reinterpret_cast<uintptr_t>(alpha.get()));
    ASSERT_EQ((std::array{w, h, bytes}), (std::array{width, height, 4 * width * height}));
    const Bytes expected = PlainImage(*fx, alpha.get());
    EXPECT_EQ(Bytes(image, image + bytes), expected);

    // Back, from all of the image or less: what it does not have stays black.
    const int32_t used = width % 2 != 0 ? bytes : bytes / 3;
    uintptr_t greyHandle = 0;
    const OwnedFX back(FXFromHandle(PngToFX(image, w, h, used, &greyHandle)));
    const OwnedFX opaque(FXFromHandle(PngToFX(image, w, h, used, nullptr)));
    const OwnedFX grey(FXFromHandle(greyHandle));
    Bytes colours(back->biSizeImage), greys(back->biSizeImage);
    for (size_t i = 0; i < static_cast<size_t>(used) / 4; ++i)
        for (size_t c = 0; c < 3; ++c) {
            colours[3 * i + c] = expected[4 * i + 2 - c];
            greys[3 * i + c] = expected[4 * i + 3];
        }
    const auto bytesOf = [](const OwnedFX &buffer) {
        return Bytes(buffer->Pixels, buffer->Pixels + buffer->biSizeImage);
    };
    EXPECT_EQ(bytesOf(back), colours);
    EXPECT_EQ(bytesOf(opaque), colours);
    EXPECT_EQ(bytesOf(grey), greys);
    EXPECT_EQ(FreePng(image), 0);
}

TEST(AlphaConversion, WalksThePixelsOfEveryBuffer) {
    WithEachLevel([] {
        std::mt19937 random(7);
        for (int round = 0; round < 60; ++round) {
            const auto width = static_cast<int32_t>(1 + random() % 67), height = 1 + round % 35;
            const int32_t alphaHeights[] = {0, height, height / 2, height + 1};
            ExpectConversions(width, height, round % 2 == 0, alphaHeights[round / 2 % 4]);
        }
    });
}

TEST(AlphaConversion, RoundsEveryMeanDown) {
    const OwnedFX fx(FXFromHandle(CreateExtFX(256, 766))), grey(FXFromHandle(CreateExtFX(256, 766)));
    for (int32_t i = 0; i < 256 * 766; ++i) {  // the first byte, and the sum of all three as far as it can be
        const int32_t first = i % 256, rest = std::clamp(i / 256 - first, 0, 510);
        const int32_t pixel[] = {first, rest / 2, rest - rest / 2};
        std::copy_n(pixel, 3, grey->Pixels + 3 * i);
    }
    WithEachLevel([&] {
        int32_t w = 0, h = 0, bytes = 0;
        uint8_t *image = FXToPng(reinterpret_cast<uintptr_t>(fx.get()), &w, &h, &bytes,
                                 reinterpret_cast<uintptr_t>(grey.get()));
        EXPECT_EQ(Bytes(image, image + bytes), PlainImage(*fx, grey.get()));
        FreePng(image);
    });
}

TEST(AlphaConversion, FailsWithoutMemoryOrBuffer) {
    using platform::Operation;
    const OwnedFX fx(FXFromHandle(NoisyFX(4, 2, false, 1)));
    const auto handle = reinterpret_cast<uintptr_t>(fx.get());
    int32_t sizes[3] = {};
    platform::FailOnce(Operation::Memory, 1);
    EXPECT_EQ(FXToPng(handle, sizes, sizes + 1, sizes + 2, handle), nullptr);
    EXPECT_EQ(std::to_array(sizes), (std::array{4, 2, 32})) << "told all the same";
    EXPECT_EQ(FXToPng(0, sizes, sizes + 1, sizes + 2, handle), nullptr);
    EXPECT_EQ(std::to_array(sizes), (std::array{0, 0, 0}));
    FreePng(FXToPng(handle, nullptr, nullptr, nullptr, 0));
    FXHeader vast = *fx;  // 4 bytes a pixel do not fit the size
    vast.biWidth = vast.biHeight = 25000;
    EXPECT_EQ(FXToPng(reinterpret_cast<uintptr_t>(&vast), sizes, sizes + 1, sizes + 2, 0), nullptr);
    EXPECT_EQ(std::to_array(sizes), (std::array{25000, 25000, 0}));

    uintptr_t alpha = 4711;
    const Bytes image(32, 7);
    for (const int number : {1, 2}) {
        platform::FailOnce(Operation::Memory, number);
        EXPECT_EQ(PngToFX(image.data(), 4, 2, 32, &alpha), 0u);
    }
    platform::ForgetFailures();
    for (const auto &[width, height] : {std::pair(0, 4), {4, -1}, {INT32_MAX, INT32_MAX}})
        EXPECT_EQ(PngToFX(image.data(), width, height, 32, &alpha), 0u);
    EXPECT_EQ(PngToFX(nullptr, 4, 2, 32, &alpha), 0u);
    EXPECT_EQ(alpha, 4711u) << "left alone by every failure";
    // More bytes than the picture has, and less than none.
    for (const int32_t bytes : {32, INT32_MAX, -1, INT32_MIN}) {
        const OwnedFX some(FXFromHandle(PngToFX(image.data(), 2, 2, bytes, nullptr)));
        EXPECT_EQ(Bytes(some->Pixels, some->Pixels + 12), Bytes(12, bytes > 0 ? 7 : 0)) << bytes;
    }
}

}  // namespace
}  // namespace fenlight::test
