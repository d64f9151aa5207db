// SPDX-License-Identifier: Zlib
// Every version of the row loops that this machine has, over the same cases.
#include "platform/raster/row_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/raster/colour_conversion.h"
#include "platform/raster/model.h"

namespace fenlight::test {
namespace {

using platform::RowBlock;
using platform::RowKernels;

constexpr int kRows = 3;
constexpr int kMargin = 70;

// Source and target with random bytes. Sources end where their last row ends, so that AddressSanitizer sees
// whatever is read behind it.
struct Rows {
    std::vector<uint8_t> source;
    std::vector<uint8_t> target;
    RowBlock block;

    Rows(int64_t width, int sourceBytes, int targetBytes, int offset, std::mt19937 &random) {
        const int64_t sourcePitch = width * sourceBytes + offset;
        const int64_t targetPitch = width * targetBytes + 2 * offset;
        source.resize(static_cast<size_t>(sourcePitch * (kRows - 1) + width * sourceBytes + offset));
        target.resize(static_cast<size_t>(targetPitch * kRows) + 2 * kMargin);
        source.shrink_to_fit();
        source.reserve(1);  // an address even where no byte is read
        for (uint8_t &byte : source) byte = static_cast<uint8_t>(random() % 4);
        for (uint8_t &byte : target) byte = static_cast<uint8_t>(random());
        block = {&target[kMargin] + offset, targetPitch, source.data() + offset, sourcePitch, width, kRows};
    }
};

class RowKernelsTest : public ::testing::TestWithParam<const RowKernels *> {
  protected:
    // Compares all bytes with those after expect(row, i) has done its pixel (or byte).
    template <typename Run, typename Pixel>
    void Check(Rows &rows, Run run, Pixel expect) {
        const std::vector<uint8_t> before = rows.target;
        run(rows.block);
        const std::vector<uint8_t> actual = rows.target;
        rows.target = before;
        for (int64_t row = 0; row < kRows; ++row) {
            for (int64_t i = 0; i < rows.block.width; ++i) {
                expect(rows.block.target + row * rows.block.targetPitch,
                       rows.block.source + row * rows.block.sourcePitch, i);
            }
        }
        ASSERT_EQ(actual, rows.target) << GetParam()->name << ", width " << rows.block.width;
    }
    template <typename Action>
    void ForEachCase(int sourceBytes, int targetBytes, Action action) {
        std::mt19937 random(21);
        std::vector<int64_t> widths{127, 128, 129, 200, 255, 256, 257, 700};
        for (int64_t width = 0; width <= 64; ++width) widths.push_back(width);
        for (const int64_t width : widths) {
            for (const int offset : {0, 1, 2, 3, 8}) {
                Rows rows(width, sourceBytes, targetBytes, offset, random);
                action(rows);
                if (HasFatalFailure()) return;
            }
        }
    }
};

void PutWord(uint8_t *target, int64_t i, uint32_t word, uint32_t key) {
    if ((word & 0xFFFFFF) != key) std::memcpy(target + 4 * i, &word, 4);
}

TEST_P(RowKernelsTest, CopyBytes) {
    ForEachCase(1, 1, [&](Rows &rows) {
        Check(rows, GetParam()->copyBytes,
              [](uint8_t *target, const uint8_t *source, int64_t i) { target[i] = source[i]; });
    });
}

TEST_P(RowKernelsTest, PackWordsToTriples) {
    ForEachCase(4, 3, [&](Rows &rows) {
        Check(rows, GetParam()->packTo24, [](uint8_t *target, const uint8_t *source, int64_t i) {
            std::copy_n(source + 4 * i, 3, target + 3 * i);
        });
    });
}

TEST_P(RowKernelsTest, LeaveOutKeyPixelsAndTouchNothingElse) {
    std::array<uint32_t, 256> palette{0x010203, 0x00FF00, 0x010203, 0xFFFFFF};
    for (size_t i = 4; i < 256; ++i) palette[i] = static_cast<uint32_t>(i * 0x1F3);
    for (const uint32_t key : {0x010203u, 0x000000u, 0xFFFFFFu, platform::kNoColour}) {
        ForEachCase(4, 4, [&](Rows &rows) {
            for (size_t i = 0; i + 8 <= rows.source.size(); i += 8) std::memset(&rows.source[i], 0, 3);
            const auto run = [&](const RowBlock &block) { GetParam()->keyFrom32(block, key); };
            Check(rows, run, [&](uint8_t *target, const uint8_t *source, int64_t i) {
                uint32_t word;
                std::memcpy(&word, source + 4 * i, 4);
                PutWord(target, i, word, key);
            });
        });
        for (const int targetBytes : {3, 4}) {
            ForEachCase(3, targetBytes, [&](Rows &rows) {
                for (size_t i = 0; i + 12 <= rows.source.size(); i += 12) {
                    std::memset(&rows.source[i], i % 24 == 0 ? 0xFF : 0, 7);
                }
                const auto run = targetBytes == 3 ? GetParam()->key24 : GetParam()->keyFrom24;
                Check(
                    rows, [&](const RowBlock &block) { run(block, key); },
                    [&](uint8_t *target, const uint8_t *source, int64_t i) {
                        const uint32_t word =
                            source[3 * i] + source[3 * i + 1] * 256u + source[3 * i + 2] * 65536u;
                        if (word != key)
                            std::memcpy(target + targetBytes * i, &word, static_cast<size_t>(targetBytes));
                    });
            });
        }
        ForEachCase(1, 4, [&](Rows &rows) {
            for (size_t i = 0; i < rows.source.size(); i += 2) rows.source[i] = static_cast<uint8_t>(i * 37);
            const auto run = [&](const RowBlock &block) { GetParam()->keyFrom8(block, palette.data(), key); };
            Check(rows, run, [&](uint8_t *target, const uint8_t *source, int64_t i) {
                PutWord(target, i, palette[source[i]], key);
            });
        });
    }
}

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

TEST_P(RowKernelsTest, CopyMarkedPixelsOnly) {
    std::mt19937_64 random(23);
    for (int round = 0; round < 200; ++round) {
        std::vector<uint64_t> marks(static_cast<size_t>(random() % 9));
        for (uint64_t &word : marks)
            word =
                std::array<uint64_t, 4>{0, ~0ull, random() & random(), ~0ull << random() % 64}[random() % 4];
        // The bitmap may end behind the last mark.
        if (!marks.empty()) marks.back() = 0x7FFFFFFFFFull >> random() % 39;
        const size_t pixels =
            marks.empty() ? 0 : 64 * marks.size() - static_cast<size_t>(std::countl_zero(marks.back()));
        std::vector<uint8_t> source(4 * pixels);
        std::vector<uint8_t> target(4 * pixels);
        for (uint8_t &byte : source) byte = static_cast<uint8_t>(random());
        std::vector<uint8_t> expected = target;
        for (size_t i = 0; i < pixels; ++i) {
            if ((marks[i / 64] >> i % 64 & 1) != 0) std::memcpy(&expected[4 * i], &source[4 * i], 4);
        }
        GetParam()->copyMarked32(target.data(), source.data(), marks);
        ASSERT_EQ(target, expected) << GetParam()->name << ", round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryVersion, RowKernelsTest, ::testing::ValuesIn(platform::AvailableKernels()),
                         [](const auto &version) { return version.param->name; });

}  // namespace
}  // namespace fenlight::test
