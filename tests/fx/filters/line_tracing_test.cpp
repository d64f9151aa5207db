// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "fenlight/fx_filters.h"
#include "filter_buffer.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using Points = std::vector<int16_t>;

struct Outcome {
    Points points;
    int64_t left = 0;  // pixels of the line behind the last point
};

// The definition in terms of the picture: pixels of the block in their own order, the line goes from the last
// black one back to the first.
Outcome Follow(GuardedBuffer &buffer, int64_t step) {
    const int64_t width = buffer.header.biWidth, pixels = buffer.Pixels();
    std::vector<bool> isBlack;
    for (int64_t i = 0; i < pixels; ++i)
        isBlack.push_back(*buffer.At(3 * i) == 0 && *buffer.At(3 * i + 1) == 0 && *buffer.At(3 * i + 2) == 0);
    int64_t at = pixels - 1;
    while (at >= 0 && !isBlack[static_cast<size_t>(at)]) --at;
    Outcome outcome;
    if (at < 0) return outcome;
    struct Way {
        int64_t right, down;
    };
    constexpr Way kWays[] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}};
    int64_t column = at % width, row = at / width;
    for (bool isOn = true; isOn;) {
        isBlack[static_cast<size_t>(at)] = false;
        if (++outcome.left == step) {
            outcome.points.push_back(static_cast<int16_t>(column + 1));
            outcome.points.push_back(static_cast<int16_t>(buffer.header.biHeight - 1 - row));
            outcome.left = 0;
        }
        isOn = false;
        for (const Way &way : kWays) {
            const int64_t next = at + way.right + way.down * width;
            if (isOn || next < 0 || next >= pixels || !isBlack[static_cast<size_t>(next)]) continue;
            at = next;
            column += way.right;
            row += way.down;
            isOn = true;
        }
    }
    return outcome;
}

constexpr int16_t kUntouched = 0x7A7A;

// What the call writes; what stands behind it must not change.
Outcome Trace(GuardedBuffer &buffer, int32_t step) {
    Points points(static_cast<size_t>(2 * buffer.Pixels() + 8), kUntouched);
    const int32_t bytes = PixelToMemory(buffer.Handle(), points.data(), step);
    EXPECT_EQ(buffer.header.biXPelsPerMeter, buffer.Pixels());
    EXPECT_EQ(buffer.header.biYPelsPerMeter, bytes);
    const auto end = points.begin() + bytes / 2;
    EXPECT_EQ(std::count(end, points.end(), kUntouched), points.end() - end);
    return {Points(points.begin(), end), buffer.header.biClrUsed};
}

class LineTracing : public FilterLevels {};

TEST_P(LineTracing, GoesWhereTheDefinitionGoes) {
    std::mt19937 random(20240718);
    for (int scene = 0; scene < 3000; ++scene) {
        const auto width = static_cast<int32_t>(random() % 67 + 1);
        GuardedBuffer buffer(width, static_cast<int32_t>(random() % 35 + 1),
                             scene % 2 == 0 ? Rows::Packed : Rows::Padded);
        // From single dots to next to all black; others differ from black in any one colour.
        const auto density = random() % 100;
        for (int64_t i = 0; i < buffer.Pixels(); ++i) {
            std::fill_n(buffer.At(3 * i), 3, uint8_t{0});
            if (random() % 100 > density)
                *buffer.At(3 * i + random() % 3) = static_cast<uint8_t>(1 << random() % 8);
        }
        const int32_t steps[] = {1, 2, 3, 7, 0, -1};
        const int32_t step = steps[random() % std::size(steps)];
        const std::vector<uint8_t> kept = buffer.bytes;
        const Outcome expected = Follow(buffer, step), traced = Trace(buffer, step);
        ASSERT_EQ(traced.points, expected.points) << "scene " << scene << " step " << step;
        ASSERT_EQ(traced.left, expected.left) << "scene " << scene << " step " << step;
        ASSERT_EQ(buffer.bytes, kept);
    }
}

// Black where the drawing has '#'.
GuardedBuffer Drawn(const std::vector<std::string> &rows) {
    const auto width = static_cast<int32_t>(rows[0].size());
    GuardedBuffer buffer(width, static_cast<int32_t>(rows.size()));
    for (int64_t i = 0; i < buffer.Pixels(); ++i)
        std::fill_n(buffer.At(3 * i), 3,
                    rows[static_cast<size_t>(i / width)][static_cast<size_t>(i % width)] == '#' ? 0 : 200);
    return buffer;
}

// Traced by hand.
TEST_P(LineTracing, GivesThePointsOfDrawings) {
    const struct {
        std::vector<std::string> rows;
        int32_t step;
        Points points;
        int64_t left;
    } drawings[] = {
        {{"....", "...."}, 1, {}, 0},
        {{"....", ".#.."}, 1, {2, 0}, 0},
        {{"....", ".#.."}, 2, {}, 1},
        {{"............", ".##########.", "............"}, 3, {9, 1, 6, 1, 3, 1}, 1},
        // A fork: left and up comes before up. The other branch is left out.
        {{"#.#...", ".##...", "..#...", "...#.."}, 1, {4, 0, 3, 1, 2, 2, 1, 3}, 0},
        // Off the left edge the line goes on at the right end of the row above.
        {{"...##", "##...", "....."}, 1, {2, 1, 1, 1, 0, 1, -1, 1}, 0},
        {{"#..", "...", "..#"}, 1, {3, 0}, 0},
    };
    for (const auto &drawing : drawings) {
        GuardedBuffer buffer = Drawn(drawing.rows);
        const Outcome traced = Trace(buffer, drawing.step);
        EXPECT_EQ(traced.points, drawing.points) << drawing.rows[0];
        EXPECT_EQ(traced.left, drawing.left) << drawing.rows[0];
    }
}

TEST_P(LineTracing, LeavesTheHeaderWithoutBufferListOrMemory) {
    GuardedBuffer buffer = Drawn({"####"});
    const FXHeader kept = buffer.header;
    int16_t points[8];
    EXPECT_EQ(PixelToMemory(0, points, 1), 0);
    EXPECT_EQ(PixelToMemory(buffer.Handle(), nullptr, 1), 0);
    platform::FailOnce(platform::Operation::Memory, 1);
    EXPECT_EQ(PixelToMemory(buffer.Handle(), points, 1), 0);
    platform::ForgetFailures();
    EXPECT_EQ(std::memcmp(&buffer.header, &kept, sizeof kept), 0);
}

INSTANTIATE_TEST_SUITE_P(Levels, LineTracing, ::testing::ValuesIn(kLevels));

}  // namespace
}  // namespace fenlight::test
