// SPDX-License-Identifier: Zlib
#include <cstring>
#include <string>

#include "fenlight/fx_filters.h"
#include "fx/guarded_buffer.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using Points = std::vector<int16_t>;

// The definition in terms of the picture: the line goes from the last black pixel of the block towards the
// first. The last number is how many pixels lie behind the last point.
Points Follow(GuardedBuffer &buffer, int64_t step) {
    const int64_t width = buffer.header.biWidth, pixels = buffer.Pixels();
    std::vector<bool> isVisited(static_cast<size_t>(pixels));
    const auto isOpen = [&](int64_t at) {
        return at >= 0 && at < pixels && !isVisited[static_cast<size_t>(at)] &&
               std::memcmp(buffer.At(3 * at), "\0\0", 3) == 0;
    };
    int64_t at = pixels - 1;
    while (at >= 0 && !isOpen(at)) --at;
    Points points;
    int16_t left = 0;
    for (int64_t column = at % width, row = at / width; isOpen(at);) {
        isVisited[static_cast<size_t>(at)] = true;
        if (++left == step) {
            for (const int64_t value : {column + 1, buffer.header.biHeight - 1 - row})
                points.push_back(static_cast<int16_t>(value));
            left = 0;
        }
        constexpr int kWays[][2] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}};
        for (const auto &[right, down] : kWays) {
            if (!isOpen(at + right + down * width)) continue;
            at += right + down * width;
            column += right;
            row += down;
            break;
        }
    }
    points.push_back(left);
    return points;
}

// What the call writes, and what it leaves in the header. Nothing may change behind the list.
Points Trace(GuardedBuffer &buffer, int32_t step) {
    constexpr int16_t kUntouched = 0x7A7A;
    Points points(static_cast<size_t>(2 * buffer.Pixels() + 8), kUntouched);
    const int32_t bytes = PixelToMemory(buffer.Handle(), points.data(), step);
    EXPECT_EQ(buffer.header.biXPelsPerMeter, buffer.Pixels());
    EXPECT_EQ(buffer.header.biYPelsPerMeter, bytes);
    const auto end = points.begin() + bytes / 2;
    EXPECT_EQ(std::count(end, points.end(), kUntouched), points.end() - end);
    *end = static_cast<int16_t>(buffer.header.biClrUsed);
    return Points(points.begin(), end + 1);
}

using LineTracing = FXLevels;

// From single dots to all black; other pixels differ from black in one bit.
TEST_P(LineTracing, GoesWhereTheDefinitionGoes) {
    for (int scene = 0; scene < 3000; ++scene) {
        GuardedBuffer buffer = dice.AnyNoise();
        const int32_t density = dice.Between(0, 99), step = dice.Between(-1, 7);
        for (int64_t i = 0; i < buffer.Pixels(); ++i) {
            std::fill_n(buffer.At(3 * i), 3, uint8_t{0});
            if (dice.Between(0, 99) > density)
                *buffer.At(3 * i + dice.Between(0, 2)) = static_cast<uint8_t>(1 << dice.Between(0, 7));
        }
        const Bytes kept = buffer.bytes;
        ASSERT_EQ(Trace(buffer, step), Follow(buffer, step)) << "scene " << scene << " step " << step;
        ASSERT_EQ(buffer.bytes, kept);
    }
}

// Black where the drawing has '#'.
GuardedBuffer Drawn(const std::vector<std::string> &rows) {
    GuardedBuffer buffer(static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()));
    uint8_t *pixel = buffer.At(0);
    for (const std::string &row : rows)
        for (const char mark : row)
            pixel = std::fill_n(pixel, 3, static_cast<uint8_t>(mark == '#' ? 0 : 200));
    return buffer;
}

// Traced by hand; the pixels behind the last point come last.
TEST_P(LineTracing, GivesThePointsOfDrawings) {
    const struct {
        std::vector<std::string> rows;
        int32_t step;
        Points points;
    } drawings[] = {
        {{"....", "...."}, 1, {0}},
        {{"....", ".#.."}, 1, {2, 0, 0}},
        {{"....", ".#.."}, 2, {1}},
        {{"............", ".##########.", "............"}, 3, {9, 1, 6, 1, 3, 1, 1}},
        // A fork: left and up comes before up. The other branch is left out.
        {{"#.#...", ".##...", "..#...", "...#.."}, 1, {4, 0, 3, 1, 2, 2, 1, 3, 0}},
        // Off the left edge the line goes on at the right end of the row above.
        {{"...##", "##...", "....."}, 1, {2, 1, 1, 1, 0, 1, -1, 1, 0}},
        {{"#..", "...", "..#"}, 1, {3, 0, 0}},
    };
    for (const auto &[rows, step, points] : drawings) {
        GuardedBuffer buffer = Drawn(rows);
        EXPECT_EQ(Trace(buffer, step), points) << rows[0];
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

INSTANTIATE_TEST_SUITE_P(Levels, LineTracing, kEachLevel);

}  // namespace
}  // namespace fenlight::test
