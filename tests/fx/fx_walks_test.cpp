// SPDX-License-Identifier: Zlib
// What the walks do is judged with the effects; here are headers that no effect should meet.
#include <gtest/gtest.h>

#include "fx/pixel_walks.h"

namespace fenlight::test {
namespace {

// A block of 72 bytes under a header that promises more, less or nothing.
TEST(PixelWalks, StayWithinTheBlockWhateverTheHeaderSays) {
    FXHeader whole{}, odd{};
    whole.biWidth = whole.biHeight = 100;
    whole.biSizeImage = 30000;
    odd.biSizeImage = 72;
    const struct {
        int32_t width, height, rows, pixels;
    } cases[] = {{7, 3, 3, 21}, {7, 100, 3, 24}, {100, 7, 0, 24}, {INT32_MAX, INT32_MAX, 0, 24},
                 {7, -5, 0, 0}, {-5, 7, 0, 0},   {-5, -5, 0, 0},  {0, 7, 0, 0}};
    for (const auto &[width, height, rows, pixels] : cases) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        odd.biWidth = width;
        odd.biHeight = height;
        EXPECT_EQ(WalkPixels(odd).count, pixels);
        EXPECT_EQ(WalkPixels(whole, odd).count, pixels);
        EXPECT_EQ(WalkRows(odd).rows, rows);
        EXPECT_EQ(WalkRows(odd, whole).rows, rows);
        EXPECT_EQ(WalkRows(odd).Inner(1).rows, rows == 3 && width == 7 ? 1 : 0);
        EXPECT_EQ(WalkRows(odd).Inner(2).width, 0);
    }
}

}  // namespace
}  // namespace fenlight::test
