// SPDX-License-Identifier: Zlib
// Channels, and the way to FX buffers and back, beside walks that do what the definitions say step by step.
#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "data/each_level.h"
#include "fenlight/alpha_images.h"
#include "fx/alpha/alpha_kernels.h"
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
            for (uint32_t move = 0; move <= moves && image[i] != goal[i]; ++move, ++count)
                image[i] = static_cast<uint8_t>(image[i] < goal[i] ? image[i] + 1 : image[i] - 1);
    return count;
}

using MergeCall = int32_t (*)(uint8_t *, const uint8_t *, int32_t, int32_t) noexcept;

void ExpectMerge(MergeCall call, size_t first, size_t last, int32_t size, int32_t steps) {
    SCOPED_TRACE(::testing::Message() << "channel " << first << ", " << size << " bytes, steps " << steps);
    Bytes expected = Noise(size, 1);
    const GuardedMemory goal(Noise(size, 2)), image(expected), atStart(expected, true);
    const int32_t count = MergePlainly(expected, goal.Content(), steps, first, last);
    for (const GuardedMemory *memory : {&image, &atStart}) {
        EXPECT_EQ(call(memory->Data(), goal.Data(), size, steps), count);
        EXPECT_EQ(memory->Content(), expected);
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

TEST(AlphaChannels, AreInvertedPixelByPixelAndNoFurther) {
    WithEachLevel([] {
        for (int32_t size = 0; size <= 300; ++size) {
            Bytes expected = Noise(size, 3);
            const GuardedMemory end(expected), start(expected, true);
            for (size_t i = 3; i < expected.size(); i += 4)
                expected[i] = static_cast<uint8_t>(255 - expected[i]);
            for (const GuardedMemory *image : {&end, &start}) {
                InvertChannelPng(image->Data(), size);
                InvertChannelPng(image->Data(), -size);
                EXPECT_EQ(image->Content(), expected) << size;
            }
        }
    });
    InvertChannelPng(nullptr, 4);
    EXPECT_EQ(MergeImagePng(nullptr, nullptr, 4, 4), 0);
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

TEST(AlphaConversion, TouchesNothingButItsPixels) {
    WithEachLevel([] {
        const AlphaKernels &kernels = CurrentAlphaKernels();
        for (int64_t pixels = 0; pixels <= 200; ++pixels)
            for (const bool isAtStart : {false, true}) {
                SCOPED_TRACE(pixels);
                const GuardedMemory colours(Noise(3 * pixels, 1), isAtStart);
                const GuardedMemory greys(Noise(3 * pixels, 2), isAtStart);
                const GuardedMemory opaque(Bytes(colours.Content().size() / 3 * 4), isAtStart);
                const GuardedMemory image(opaque.Content(), isAtStart);
                kernels.widen(opaque.Data(), colours.Data(), pixels);
                kernels.widenWithAlpha(image.Data(), colours.Data(), greys.Data(), pixels);
                ASSERT_EQ(opaque.Content(), WidenPlainly(colours.Content(), {}));
                ASSERT_EQ(image.Content(), WidenPlainly(colours.Content(), greys.Content()));

                const GuardedMemory some(greys.Content(), isAtStart), more(greys.Content(), isAtStart);
                kernels.narrow(some.Data(), image.Data(), pixels);
                kernels.narrowWithAlpha(more.Data(), greys.Data(), image.Data(), pixels);
                ASSERT_EQ(some.Content(), colours.Content());
                ASSERT_EQ(more.Content(), colours.Content());
                ASSERT_EQ(greys.Content(), AlphasOf(image.Content()));
            }
        Bytes sums, image(4 * 766);  // every mean
        for (int sum = 0; sum <= 765; ++sum)
            for (const int byte : {sum / 3, (sum + 1) / 3, (sum + 2) / 3})
                sums.push_back(static_cast<uint8_t>(byte));
        kernels.widenWithAlpha(image.data(), sums.data(), sums.data(), 766);
        EXPECT_EQ(image, WidenPlainly(sums, sums));
    });
}

Bytes BytesOf(const OwnedFX &fx) { return {fx->Pixels, fx->Pixels + fx->biSizeImage}; }

uintptr_t HandleOf(const OwnedFX &fx) { return reinterpret_cast<uintptr_t>(fx.get()); }

// With noise from end to end; rows of images are padded.
OwnedFX NoisyFX(int32_t width, int32_t height, bool isPadded) {
    if (height == 0) return nullptr;
    const uintptr_t image = isPadded ? NoisyImage(width, height) : 0;
    OwnedFX fx(FXFromHandle(isPadded ? InitFX(image) : CreateExtFX(width, height)));
    std::ranges::copy(Noise(fx->biSizeImage, static_cast<unsigned>(height)), fx->Pixels);
    if (isPadded) FreeImage(image);
    return fx;
}

TEST(AlphaConversion, WalksThePixelsOfBuffers) {
    for (const auto &[width, height, alphaHeight] :
         {std::array{1, 1, 1}, {5, 3, 0}, {6, 9, 9}, {67, 35, 20}, {64, 3, 5}, {7, 2, 1}})
        for (const bool isPadded : {false, true}) {
            const OwnedFX fx = NoisyFX(width, height, isPadded),
                          alpha = NoisyFX(width, alphaHeight, isPadded);
            const auto size = static_cast<size_t>(3 * width * height);
            Bytes colours = BytesOf(fx), greys = alpha != nullptr ? BytesOf(alpha) : Bytes();
            colours.resize(size);
            greys.resize(std::min(size, static_cast<size_t>(3 * width * alphaHeight)));
            int32_t sizes[3];
            uint8_t *image = FXToPng(HandleOf(fx), sizes, sizes + 1, sizes + 2, HandleOf(alpha));
            ASSERT_EQ(std::to_array(sizes), (std::array{width, height, 4 * width * height}));
            EXPECT_EQ(Bytes(image, image + sizes[2]), WidenPlainly(colours, greys)) << width;

            // Back, but for two thirds: there the buffers stay black.
            const int32_t used = sizes[2] / 3;
            Bytes alphas = AlphasOf({image, image + used / 4 * 4});
            colours.resize(alphas.size());
            for (Bytes *bytes : {&colours, &alphas}) bytes->resize(size);
            uintptr_t grey = 0;
            const OwnedFX back(FXFromHandle(PngToFX(image, width, height, used, &grey)));
            EXPECT_EQ(BytesOf(back), colours) << width;
            EXPECT_EQ(BytesOf(OwnedFX(FXFromHandle(grey))), alphas) << width;
            FreePng(image);
        }
}

TEST(AlphaConversion, FailsWithoutMemoryOrBuffer) {
    const OwnedFX fx = NoisyFX(4, 2, false);
    int32_t sizes[3] = {};
    const auto isRefused = [&](uintptr_t handle, std::array<int32_t, 3> told) {
        return FXToPng(handle, sizes, sizes + 1, sizes + 2, 0) == nullptr && std::to_array(sizes) == told;
    };
    platform::FailOnce(platform::Operation::Memory, 1);
    EXPECT_TRUE(isRefused(HandleOf(fx), {4, 2, 32})) << "told all the same";
    EXPECT_TRUE(isRefused(0, {}));
    FreePng(FXToPng(HandleOf(fx), nullptr, nullptr, nullptr, 0));
    FXHeader vast = *fx;
    vast.biWidth = vast.biHeight = 25000;
    EXPECT_TRUE(isRefused(reinterpret_cast<uintptr_t>(&vast), {25000, 25000, 0}));

    uintptr_t alpha = 4711;
    const Bytes image(32, 7);
    for (const int number : {1, 2}) {
        platform::FailOnce(platform::Operation::Memory, number);
        EXPECT_EQ(PngToFX(image.data(), 4, 2, 32, &alpha), 0u);
    }
    platform::ForgetFailures();
    for (const auto &[width, height] : {std::pair(0, 4), {4, -1}, {INT32_MAX, INT32_MAX}})
        EXPECT_EQ(PngToFX(image.data(), width, height, 32, &alpha), 0u);
    EXPECT_EQ(PngToFX(nullptr, 4, 2, 32, &alpha), 0u);
    EXPECT_EQ(alpha, 4711u) << "left alone by every failure";
    for (const int32_t bytes : {32, INT32_MAX, -1, INT32_MIN}) {
        const OwnedFX some(FXFromHandle(PngToFX(image.data(), 2, 2, bytes, nullptr)));
        EXPECT_EQ(BytesOf(some), Bytes(12, bytes > 0 ? 7 : 0)) << bytes;
    }
}

}  // namespace
}  // namespace fenlight::test
