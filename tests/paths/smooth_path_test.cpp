// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "fenlight/paths.h"

namespace fenlight::test {
namespace {

using Path = std::vector<int16_t>;

// The two sweeps as they are defined, on byte positions.
void SmoothPlainly(Path &path, int32_t byteCount, int32_t passes) {
    const auto sweep = [&](int32_t i, size_t axis) {
        const size_t at = 2 * static_cast<size_t>(i) + axis;
        const auto number = [&](size_t word) { return int32_t{static_cast<uint16_t>(path[word])}; };
        path[at + 2] = static_cast<int16_t>((number(at) + number(at + 2) + number(at + 4)) / 3);
    };
    for (; passes > 0; --passes) {
        for (int32_t i = 0; i == 0 || 4 * i < byteCount - 12; ++i) sweep(i, 0);
        for (int32_t i = 0; 4 * i + 2 < byteCount - 8; ++i) sweep(i, 1);
    }
}

Path Smoothed(Path path, int32_t passes) {
    EXPECT_EQ(SmoothPath(path.data(), static_cast<int32_t>(2 * path.size()), passes), 0);
    return path;
}

TEST(PathSmoothing, IsThatOfThePlainSweeps) {
    std::mt19937 random(73);
    for (int turn = 0; turn < 3000 && !testing::Test::HasFailure(); ++turn) {
        Path path(2 * (3 + random() % (turn % 10 == 0 ? 200 : 16)));
        const unsigned reach = turn % 3 == 0 ? 65536 : 40;
        for (int16_t &word : path) word = static_cast<int16_t>(random() % reach);
        Path expected = path;
        const auto passes = static_cast<int32_t>(turn % 50 == 0 ? 500 + random() % 500 : random() % 13);
        SmoothPlainly(expected, static_cast<int32_t>(2 * path.size()), passes);
        EXPECT_EQ(Smoothed(path, passes), expected) << path.size() / 2 << " points, " << passes << " passes";
    }
}

TEST(PathSmoothing, ChangesWhatItIsToldTo) {
    const Path three{0, 0, 9, 3, 30, 12}, four{0, 0, 60, 30, 30, 90, 90, 30}, level{-1, -1, -1, -1, -1, -1};
    EXPECT_EQ(Smoothed(three, 1), (Path{0, 0, 13, 5, 30, 12}));
    EXPECT_EQ(Smoothed(four, 1), (Path{0, 0, 30, 40, 30, 53, 90, 30}));
    EXPECT_EQ(Smoothed(four, -7), Smoothed(four, 1));
    EXPECT_EQ(Smoothed(four, 0), four);
    EXPECT_EQ(Smoothed(level, 9), level);
    // Ends long before the passes do.
    EXPECT_EQ(Smoothed(four, 2147483647), Smoothed(four, 1000));
    for (const int32_t bytes : {-2147483647, -1, 0, 4, 8, 11}) {
        Path path = three;
        EXPECT_EQ(SmoothPath(path.data(), bytes, 3), 0);
        EXPECT_EQ(path, three) << bytes;
    }
    EXPECT_EQ(SmoothPath(nullptr, 12, 1), 0);
}

}  // namespace
}  // namespace fenlight::test
