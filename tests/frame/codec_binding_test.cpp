// SPDX-License-Identifier: Zlib
#include "frame/codec_binding.h"

#include <gtest/gtest.h>

#include <vector>

#include "fenlight/platform/system.h"
#include "frame/attach.h"

namespace fenlight {
namespace {

TEST(CodecBinding, IsCompleteFromAttachOnAndGoneAfterDetach) {
    const auto isComplete = [] { return DecodePNG && EncodePNG && FreePNGBuffer && Dib2Jpg; };
    EXPECT_TRUE(isComplete());
    EntryRoutine(DLL_PROCESS_DETACH);
    EXPECT_FALSE(DecodePNG || EncodePNG || FreePNGBuffer || Dib2Jpg);
    EntryRoutine(DLL_PROCESS_ATTACH);
    EXPECT_TRUE(isComplete());
}

TEST(CodecBinding, EncodesAndDecodesPixelsUnchanged) {
    constexpr int32_t kWidth = 33, kHeight = 7;
    std::vector<uint8_t> pixels(kWidth * kHeight * 4);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * 37 + i / 91);

    uint8_t *stream = nullptr, *decoded = nullptr;
    int32_t streamBytes = 0, width = 0, height = 0, bytes = 0;
    ASSERT_EQ(EncodePNG(kWidth, kHeight, pixels.data(), &stream, &streamBytes), 0u);
    ASSERT_EQ(DecodePNG(&width, &height, stream, streamBytes, &decoded, &bytes), 0u);
    EXPECT_EQ(width, kWidth);
    EXPECT_EQ(height, kHeight);
    EXPECT_EQ(std::vector<uint8_t>(decoded, decoded + bytes), pixels);
    FreePNGBuffer(decoded);

    // The same stream cut short.
    height = 4711;
    EXPECT_NE(DecodePNG(&width, &height, stream, streamBytes / 2, &decoded, &bytes), 0u);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 4711);
    EXPECT_EQ(decoded, nullptr);
    EXPECT_EQ(bytes, 0);
    FreePNGBuffer(stream);
}

TEST(CodecBinding, RefusesWhatCannotBeAPicture) {
    const std::vector<uint8_t> junk(64, 0xAB);
    int32_t width = 1, height = 1, bytes = 1;
    uint8_t *block = nullptr;
    for (const int32_t size : {64, 3, 0, -5}) {
        EXPECT_NE(DecodePNG(&width, &height, junk.data(), size, &block, &bytes), 0u) << size;
        EXPECT_EQ(block, nullptr);
    }
    for (const auto &[w, h] : {std::pair{0, 4}, {4, 0}, {-1, 4}, {65536, 65536}}) {
        EXPECT_NE(EncodePNG(w, h, junk.data(), &block, &bytes), 0u) << w << " x " << h;
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(bytes, 0);
    }
}

}  // namespace
}  // namespace fenlight
