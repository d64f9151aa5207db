// SPDX-License-Identifier: Zlib
// Pictures compared whole. On a difference the actual picture, the expected one and the difference are
// written to the test's output folder as PPM files, and the failure names the first differing pixel and the
// files.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace fenlight::test {

// Pixels as 0x00RRGGBB words, rows from the top.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;

    Picture() = default;
    Picture(int pictureWidth, int pictureHeight, uint32_t fill = 0)
        : width(pictureWidth),
          height(pictureHeight),
          pixels(static_cast<size_t>(pictureWidth) * static_cast<size_t>(pictureHeight), fill) {}
    uint32_t &At(int x, int y) {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
    uint32_t At(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

// EXPECT_TRUE(SamePicture("name", actual, expected)). Only the low 24 bits of a pixel count.
::testing::AssertionResult SamePicture(const std::string &name, const Picture &actual,
                                       const Picture &expected);

// True if the file was written.
bool WritePpm(const std::string &path, const Picture &picture);

}  // namespace fenlight::test
