// SPDX-License-Identifier: Zlib
// Scaling by every version of the row loops that this machine has; the transfers judge the other loops.
#include "platform/raster/row_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

namespace fenlight::test {
namespace {

constexpr int kMargin = 70;

class RowKernelsTest : public ::testing::TestWithParam<const platform::RowKernels *> {};

// Ratios from far reduction to far enlargement, forwards and mirrored, from sources of just the size needed.
TEST_P(RowKernelsTest, ScaleBySamples) {
    std::mt19937 random(22);
    int round = 0;
    constexpr int kRatios[][2] = {{1, 9},  {1, 2},  {2, 3},   {5, 7},   {1, 1},   {7, 5},
                                  {3, 2},  {15, 8}, {2, 1},   {33, 16}, {31, 15}, {7, 3},
                                  {40, 1}, {8, 7},  {17, 16}, {21, 10}, {11, 5}};
    for (const auto &[numerator, denominator] : kRatios) {
        for (int count = 1; count <= 70; ++count) {
            const bool isMirrored = random() % 2 == 0;
            std::vector<int32_t> positions;
            for (int i = 0; i < count; ++i) positions.push_back(i * numerator / denominator);
            const int sourceWidth = positions.back() + 1;
            if (isMirrored) std::reverse(positions.begin(), positions.end());
            std::vector<uint8_t> source(static_cast<size_t>(sourceWidth) * 8);
            for (uint8_t &byte : source) byte = static_cast<uint8_t>(random());
            const auto reach = [&](int64_t n) {
                return ((n - 1) * numerator + denominator - 1) / denominator + 1;
            };
            const std::array<int32_t, 3> lines{1, 1, 0};
            const ptrdiff_t sourcePitch = 4 * sourceWidth;
            for (const ptrdiff_t gap : {0, 4, 1}) {
                const ptrdiff_t pitch = 4 * count + gap;
                std::vector<uint8_t> target(static_cast<size_t>(3 * pitch) + 2 * kMargin, 0xEE);
                std::vector<uint8_t> expected = target;
                for (size_t row = 0; row < lines.size(); ++row) {
                    for (size_t i = 0; i < positions.size(); ++i) {
                        std::memcpy(&expected[kMargin + row * static_cast<size_t>(pitch) + 4 * i],
                                    &source[static_cast<size_t>(lines[row] * sourcePitch + 4 * positions[i])],
                                    4);
                    }
                }
                GetParam()->scale32({&target[kMargin], pitch, source.data(), sourcePitch, positions, lines,
                                     sourceWidth, reach(8), reach(16), round++ % 2 == 0});
                ASSERT_EQ(target, expected)
                    << GetParam()->name << ' ' << numerator << ':' << denominator << ", " << count
                    << " pixels, mirrored " << isMirrored << ", gap " << gap;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryVersion, RowKernelsTest, ::testing::ValuesIn(platform::AvailableKernels()),
                         [](const auto &version) { return version.param->name; });

}  // namespace
}  // namespace fenlight::test
