// SPDX-License-Identifier: Zlib
// The path search as it is defined, cell by cell, with its whole trail and a scan back over it for each
// point.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "fx/fx_buffer.h"

namespace fenlight::test {

// A white map whose pixels end where their memory ends, so that a sanitizer sees a byte read too many.
struct TestMap {
    TestMap(int32_t width, int32_t height, bool isPadded)
        : rowBytes(isPadded ? PaddedRowBytes(width) : 3 * int64_t{width}),
          pixels(new uint8_t[static_cast<size_t>(rowBytes * height)]) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(rowBytes * height);
        header.Pixels = pixels.get();
        for (uint32_t i = 0; i < header.biSizeImage; ++i) pixels[i] = 255;
    }
    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(&header); }
    // A byte of the pixel at (x, y), y counted from the end of the block.
    uint8_t &Byte(int32_t x, int32_t y, int32_t channel = 0) const {
        return pixels[header.biSizeImage - 3u * static_cast<uint32_t>(header.biWidth * (y + 1) - x) +
                      static_cast<uint32_t>(channel)];
    }
    void BlockCell(int32_t column, int32_t row, int32_t cellSize) const {
        for (int32_t i = 0; i < cellSize * cellSize; ++i)
            for (int32_t channel = 0; channel < 3; ++channel)
                Byte(column * cellSize + i % cellSize, row * cellSize + i / cellSize, channel) = 0;
    }

    FXHeader header{};
    int64_t rowBytes;
    std::unique_ptr<uint8_t[]> pixels;
};

struct Query {
    int32_t cellSize, startX, startY, endX, endY, flags;
};

class PathJudge {
  public:
    PathJudge(const TestMap &map, int32_t cellSize, int32_t flags)
        : columns_(map.header.biWidth / cellSize),
          rows_(map.header.biHeight / cellSize),
          width_(columns_ + 2),
          visits(static_cast<size_t>(width_ * (rows_ + 2)), 255) {
        ForEachCell([&](int cell, int, int) { At(cell) = 0; });
        ForEachCell([&](int cell, int column, int row) {
            int64_t sum = 0;
            for (int32_t y = row * cellSize; y < (row + 1) * cellSize; ++y)
                for (int32_t x = column * cellSize; x < (column + 1) * cellSize; ++x)
                    for (int32_t channel = 0; channel < 3; ++channel) sum += map.Byte(x, y, channel);
            if (sum / (int64_t{3} * cellSize * cellSize) > 254) return;
            At(cell) = 255;
            for (int offset : {1, -1, width_, -width_, width_ + 1, width_ - 1, -width_ - 1, -width_ + 1})
                if ((flags & 1) != 0) At(cell + offset) = 255;
        });
    }

    // The array; empty where the walk fails. Grid visits are left as the walk leaves them.
    std::vector<int16_t> Find(const Query &query) {
        const auto cellAt = [&](int32_t x, int32_t y) {
            return (y / query.cellSize + 1) * width_ + x / query.cellSize + 1;
        };
        if (!Walk(cellAt(query.startX, query.startY), cellAt(query.endX, query.endY))) return {};
        std::vector<int16_t> path;
        const auto add = [&](int32_t x, int32_t y) {
            path.push_back(static_cast<int16_t>(x));
            path.push_back(static_cast<int16_t>(y));
        };
        add(query.startX, query.startY);
        for (size_t i = 0; i < trail.size(); ++i) {
            const int current = trail[i];
            size_t last = trail.size() - 1;
            while (last > i && !AreNear(trail[last], current)) --last;
            i = last;
            add((trail[i] % width_ - 1) * query.cellSize, (trail[i] / width_ - 1) * query.cellSize);
        }
        add(query.endX, query.endY);
        return path;
    }

    bool IsBlocked(int column, int row) const {
        return visits[static_cast<size_t>((row + 1) * width_ + column + 1)] == 255;
    }

    // Column and row of each entry.
    std::vector<std::array<int, 2>> TrailCells() const {
        std::vector<std::array<int, 2>> cells;
        for (const int entry : trail) cells.push_back({entry % width_ - 1, entry / width_ - 1});
        return cells;
    }

  private:
    uint8_t &At(int cell) { return visits[static_cast<size_t>(cell)]; }

    template <typename Action>
    void ForEachCell(Action action) {
        for (int row = 0; row < rows_; ++row)
            for (int column = 0; column < columns_; ++column)
                action((row + 1) * width_ + 1 + column, column, row);
    }

    bool AreNear(int one, int other) const {
        for (int offset : {0, 1, width_ - 1, width_, width_ + 1})
            if (one - other == offset || other - one == offset) return true;
        return false;
    }

    bool Walk(int cell, const int end) {
        const int four[] = {1, width_, -1, -width_};
        const std::vector<int> table = {four[0], four[1], four[2], four[3], four[0], four[1],
                                        four[2], four[3], four[0], four[1], four[2], four[3]};
        for (size_t k = 1;; ++k) {
            uint8_t best = At(cell);
            int move = 0;
            for (size_t place = k % 8; place < k % 8 + 4; ++place) {
                if (At(cell + table[place]) > best) continue;
                best = At(cell + table[place]);
                move = table[place];
            }
            if (At(cell) >= 32) return false;
            ++At(cell);
            cell += move;
            trail.push_back(cell);
            if (cell == end) return true;
        }
    }

    const int columns_, rows_, width_;

  public:
    std::vector<uint8_t> visits;
    std::vector<int> trail;
};

}  // namespace fenlight::test
