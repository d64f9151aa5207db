// SPDX-License-Identifier: Zlib
// FindPath from corner to corner of a map with random walls beside an A* search of the same map, which is
// what a program would use instead; and SmoothPath beside the plain sweeps. The map is the first one of its
// kind on which both arrive. `--survey` instead of a benchmark's options tells how often each arrives, and
// how the paths compare in length.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <queue>
#include <random>
#include <string_view>
#include <vector>

#include "fenlight/paths.h"
#include "paths/grid_map.h"
#include "paths/grid_walk.h"

namespace fenlight {
namespace {

struct Map {
    Map(int32_t columnsIn, int32_t rowsIn, int32_t sizeIn)
        : columns(columnsIn),
          rows(rowsIn),
          size(sizeIn),
          pixels(static_cast<size_t>(3 * Width() * Height())) {
        header.biWidth = Width();
        header.biHeight = Height();
        header.biSizeImage = static_cast<uint32_t>(pixels.size());
        header.Pixels = pixels.data();
    }
    Map(const Map &) = delete;
    Map &operator=(const Map &) = delete;
    int32_t Width() const { return columns * size; }
    int32_t Height() const { return rows * size; }

    // Both corners and their neighbours stay free.
    void DrawWalls(unsigned seed, unsigned percent) {
        std::mt19937 random(seed);
        std::fill(pixels.begin(), pixels.end(), uint8_t{255});
        for (int32_t row = 0; row < rows; ++row)
            for (int32_t column = 0; column < columns; ++column) {
                const bool isCorner = row + column < 2 || row + column > rows + columns - 4;
                if (random() % 100 < percent && !isCorner) Block(column, row);
            }
    }
    // A maze of corridors one cell wide, with every 20th wall taken out; odd numbers of rows and columns.
    void DrawMaze(unsigned seed) {
        std::mt19937 random(seed);
        std::fill(pixels.begin(), pixels.end(), uint8_t{255});
        for (int32_t row = 0; row < rows; ++row)
            for (int32_t column = 0; column < columns; ++column) {
                const bool isPost = column % 2 == 1 && row % 2 == 1;
                if (isPost) Block(column, row);
                if (!isPost || random() % 20 == 0) continue;
                // A wall from each post in a random direction; only posts of the first row may build upwards.
                switch (random() % (row == 1 ? 4 : 3)) {
                    case 0:
                        Block(column + 1, row);
                        break;
                    case 1:
                        Block(column - 1, row);
                        break;
                    case 2:
                        Block(column, row + 1);
                        break;
                    default:
                        Block(column, row - 1);
                        break;
                }
            }
    }
    int32_t Find(int16_t *path) const {
        return FindPath(path, reinterpret_cast<uintptr_t>(&header), size, 0, 0, Width() - 1, Height() - 1, 0);
    }

    const int32_t columns, rows, size;
    FXHeader header{};
    std::vector<uint8_t> pixels;

  private:
    void Block(int32_t column, int32_t row) {
        for (int32_t y = row * size; y < (row + 1) * size; ++y)
            std::memset(&pixels[static_cast<size_t>(3 * ((Height() - 1 - y) * Width() + column * size))], 0,
                        static_cast<size_t>(3 * size));
    }
};

// A* over eight neighbours with costs 5 and 7, the octile distance to the end as heuristic and a binary heap
// whose outdated entries are skipped. It reads the map in the same way as the other search, widest vectors
// included, so that only the searches differ.
class AStar {
  public:
    // With 4 ways the straight ones.
    explicit AStar(const Map &map, size_t ways = 8)
        : map_(map), cells_(MapOf(map.header, map.size)), wayCount_(ways) {}

    // The cells of the path from the end to the start.
    const std::vector<int32_t> &Find(bool readsPlainly) {
        ReadMap(readsPlainly);
        const auto width = static_cast<int32_t>(cells_.GridWidth());
        const int32_t start = width + 1, end = map_.rows * width + map_.columns;
        Search(start, end, width);
        path_.clear();
        if (closed_[static_cast<size_t>(end)] == 0) return path_;
        for (int32_t cell = end; cell != start; cell = parents_[static_cast<size_t>(cell)])
            path_.push_back(cell);
        path_.push_back(start);
        return path_;
    }

  private:
    struct Open {
        int32_t estimate, cell;
        bool operator>(const Open &other) const { return estimate > other.estimate; }
    };

    void ReadMap(bool readsPlainly) {
        const auto count = static_cast<size_t>(cells_.GridCells());
        grid_.resize(count + kCellSlack);
        if (!readsPlainly) {
            scratch_.resize(static_cast<size_t>(MapScratchBytes(cells_) / 8 + 1));
            FillGrid(cells_, false, grid_.data(), scratch_.data());
        } else {
            ReadCells();
        }
        costs_.assign(count, std::numeric_limits<int32_t>::max());
        parents_.resize(count);
        closed_.assign(count, 0);
        open_.clear();
    }

    // As one would write it: a cell is free if all its bytes are 255.
    void ReadCells() {
        std::fill(grid_.begin(), grid_.end(), kBlockedCell);
        const size_t bytes = static_cast<size_t>(3 * map_.size);
        for (int32_t row = 0; row < map_.rows; ++row)
            for (int32_t column = 0; column < map_.columns; ++column) {
                bool isFree = true;
                for (int32_t y = row * map_.size; isFree && y < (row + 1) * map_.size; ++y) {
                    const uint8_t *first =
                        cells_.end - (y + 1) * cells_.pitch + 3 * int64_t{column} * map_.size;
                    for (size_t i = 0; i < bytes; ++i) isFree = isFree && first[i] == 255;
                }
                if (isFree) grid_[static_cast<size_t>((row + 1) * cells_.GridWidth() + column + 1)] = 0;
            }
    }

    int32_t Estimate(int32_t cell, int32_t width) const {
        const int32_t across = map_.columns - cell % width, down = map_.rows - cell / width;
        return 5 * std::max(across, down) + 2 * std::min(across, down);
    }

    void Push(int32_t estimate, int32_t cell) {
        open_.push_back({estimate, cell});
        std::push_heap(open_.begin(), open_.end(), std::greater<>());
    }

    void Search(int32_t start, int32_t end, int32_t width) {
        const struct {
            int32_t offset, cost;
        } ways[] = {{1, 5},         {-1, 5},        {width, 5},     {-width, 5},
                    {width + 1, 7}, {width - 1, 7}, {1 - width, 7}, {-1 - width, 7}};
        if (grid_[static_cast<size_t>(start)] != 0) return;
        costs_[static_cast<size_t>(start)] = 0;
        Push(Estimate(start, width), start);
        while (!open_.empty()) {
            std::pop_heap(open_.begin(), open_.end(), std::greater<>());
            const int32_t cell = open_.back().cell;
            open_.pop_back();
            if (closed_[static_cast<size_t>(cell)]) continue;
            closed_[static_cast<size_t>(cell)] = 1;
            if (cell == end) return;
            for (size_t way = 0; way < wayCount_; ++way) {
                const auto [offset, cost] = ways[way];
                const auto next = static_cast<size_t>(cell + offset);
                const int32_t total = costs_[static_cast<size_t>(cell)] + cost;
                if (grid_[next] != 0 || total >= costs_[next]) continue;
                costs_[next] = total;
                parents_[next] = cell;
                Push(total + Estimate(cell + offset, width), cell + offset);
            }
        }
    }

    const Map &map_;
    const CellMap cells_;
    const size_t wayCount_;
    std::vector<uint8_t> grid_, closed_;
    std::vector<uint64_t> scratch_;
    std::vector<int32_t> costs_, parents_, path_;
    std::vector<Open> open_;
};

std::vector<int16_t> PathRoom(const Map &map) {
    return std::vector<int16_t>(static_cast<size_t>(2 * (map.columns * map.rows + 2)));
}

// With walls on a fifth of the cells.
Map &FirstMapWithAWay(Map &map) {
    std::vector<int16_t> path = PathRoom(map);
    for (unsigned seed = 1; seed < 10000; ++seed) {
        map.DrawWalls(seed, 20);
        if (map.Find(path.data()) > 0 && !AStar(map).Find(false).empty()) break;
    }
    return map;
}

struct Scene {
    explicit Scene(const benchmark::State &state)
        : map(static_cast<int32_t>(state.range(0)), static_cast<int32_t>(state.range(0)),
              static_cast<int32_t>(state.range(1))) {
        FirstMapWithAWay(map);
    }
    Map map;
};

FinishedWalk WalkOnce(const Map &map, std::vector<uint8_t> &visits, std::vector<uint64_t> &exits) {
    const CellMap cells = MapOf(map.header, map.size);
    const WalkGrid grid{visits.data(), exits.data(), cells.GridWidth(), cells.GridCells()};
    return WalkToCell(grid, cells.GridWidth() + 1, map.rows * cells.GridWidth() + map.columns);
}

void Find(benchmark::State &state) {
    const Scene scene(state);
    std::vector<int16_t> path = PathRoom(scene.map);
    for (auto _ : state) {
        benchmark::DoNotOptimize(scene.map.Find(path.data()));
        benchmark::ClobberMemory();
    }
    state.counters["points"] = scene.map.Find(path.data()) / 4;
}

template <bool kReadsPlainly>
void FindAStar(benchmark::State &state) {
    const Scene scene(state);
    AStar search(scene.map);
    for (auto _ : state) benchmark::DoNotOptimize(search.Find(kReadsPlainly).data());
    state.counters["points"] = static_cast<double>(search.Find(false).size());
}

void ReadMapOnly(benchmark::State &state) {
    const Scene scene(state);
    const CellMap cells = MapOf(scene.map.header, scene.map.size);
    std::vector<uint8_t> grid(static_cast<size_t>(cells.GridCells() + kCellSlack));
    std::vector<uint64_t> scratch(static_cast<size_t>(MapScratchBytes(cells) / 8 + 1));
    for (auto _ : state) {
        FillGrid(cells, false, grid.data(), scratch.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * scene.map.header.biSizeImage);
}

// With the copy of the grid that each walk needs anew.
void WalkOnly(benchmark::State &state) {
    const Scene scene(state);
    const CellMap cells = MapOf(scene.map.header, scene.map.size);
    std::vector<uint8_t> grid(static_cast<size_t>(cells.GridCells() + kCellSlack)), visits;
    std::vector<uint64_t> scratch(static_cast<size_t>(MapScratchBytes(cells) / 8 + 1));
    std::vector<uint64_t> exits(grid.size());
    FillGrid(cells, false, grid.data(), scratch.data());
    int64_t steps = 0;
    for (auto _ : state) {
        visits = grid;
        steps = WalkOnce(scene.map, visits, exits).steps;
    }
    state.counters["steps"] = static_cast<double>(steps);
    state.SetItemsProcessed(state.iterations() * steps);
}

std::vector<int16_t> NoisyPath(int64_t points) {
    std::mt19937 random(9);
    std::vector<int16_t> path(static_cast<size_t>(2 * points));
    for (int16_t &word : path) word = static_cast<int16_t>(random());
    return path;
}

// Each run starts from the same path; the copy is part of both.
template <typename Sweeps>
void Smoothing(benchmark::State &state, Sweeps sweeps) {
    const std::vector<int16_t> noisy = NoisyPath(state.range(0));
    std::vector<int16_t> path;
    for (auto _ : state) {
        path = noisy;
        sweeps(path.data(), static_cast<int32_t>(2 * path.size()), static_cast<int32_t>(state.range(1)));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}

void Smooth(benchmark::State &state) { Smoothing(state, SmoothPath); }

void SmoothPlain(benchmark::State &state) {
    Smoothing(state, [](int16_t *path, int32_t byteCount, int32_t passes) {
        auto *words = reinterpret_cast<uint16_t *>(path);
        for (; passes > 0; --passes) {
            for (int32_t i = 0; 4 * i < byteCount - 12; ++i)
                words[2 * i + 2] =
                    static_cast<uint16_t>((words[2 * i] + words[2 * i + 2] + words[2 * i + 4]) / 3);
            for (int32_t i = 0; 4 * i + 2 < byteCount - 8; ++i)
                words[2 * i + 3] =
                    static_cast<uint16_t>((words[2 * i + 1] + words[2 * i + 3] + words[2 * i + 5]) / 3);
        }
    });
}

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Args({64, 1})->Args({64, 8})->Args({256, 1})->Args({256, 4})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Find)->Apply(Sizes);
BENCHMARK(FindAStar<true>)->Name("FindAStar")->Apply(Sizes);
BENCHMARK(FindAStar<false>)->Name("FindAStarOurMapReader")->Apply(Sizes);
BENCHMARK(ReadMapOnly)->Apply(Sizes);
BENCHMARK(WalkOnly)->Apply(Sizes);
BENCHMARK(Smooth)->Args({4096, 4})->Args({4096, 1})->Args({100, 4})->Unit(benchmark::kMicrosecond);
BENCHMARK(SmoothPlain)->Args({4096, 4})->Args({4096, 1})->Args({100, 4})->Unit(benchmark::kMicrosecond);

// Octile length in cells; the two ends as given are left out.
double Length(const int16_t *path, int32_t bytes) {
    double length = 0;
    for (int32_t i = 1; i + 2 < bytes / 4; ++i)
        length += std::hypot(path[2 * i + 2] - path[2 * i], path[2 * i + 3] - path[2 * i + 1]);
    return length;
}

double Length(const std::vector<int32_t> &cells, int32_t width) {
    double length = 0;
    for (size_t i = 1; i < cells.size(); ++i)
        length +=
            std::hypot(cells[i] % width - cells[i - 1] % width, cells[i] / width - cells[i - 1] / width);
    return length;
}

template <typename Work>
double MicrosecondsOf(Work work) {
    using Clock = std::chrono::steady_clock;
    double best = 1e9;
    for (int run = 0; run < 5; ++run) {
        const Clock::time_point start = Clock::now();
        work();
        best = std::min(best, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    return best;
}

struct Survey {
    int ways = 0, found = 0;
    std::vector<double> ratios;
    double ours = 0, peer = 0;

    void Add(const Map &map) {
        AStar search(map);
        std::vector<int16_t> path = PathRoom(map);
        int32_t bytes = 0;
        const std::vector<int32_t> shortest = search.Find(true);
        if (AStar(map, 4).Find(true).empty()) return;
        ++ways;
        peer += MicrosecondsOf([&] { search.Find(true); });
        ours += MicrosecondsOf([&] { bytes = map.Find(path.data()); });
        if (bytes == 0) return;
        ++found;
        ratios.push_back(Length(path.data(), bytes) / Length(shortest, map.columns + 2));
    }
    void Print(const char *kind, int32_t cells) {
        std::sort(ratios.begin(), ratios.end());
        const size_t count = ratios.size();
        std::printf("| %s | %d x %d | %d of %d | %.2f | %.2f | %.0f | %.0f |\n", kind, cells, cells, found,
                    ways, count ? ratios[count / 2] : 0.0, count ? ratios[count * 9 / 10] : 0.0, ours / ways,
                    peer / ways);
    }
};

void PrintSurvey() {
    std::puts("| map | cells | found | length, median | length, 9 of 10 | us | A* us |\n|-|-|-|-|-|-|-|");
    for (const int32_t cells : {17, 33, 65, 129, 257}) {
        for (const unsigned percent : {0u, 10u, 20u, 30u, 100u}) {
            Survey survey;
            Map map(cells, cells, 1);
            for (unsigned seed = 1; seed <= 200; ++seed) {
                percent == 100 ? map.DrawMaze(seed) : map.DrawWalls(seed, percent);
                survey.Add(map);
            }
            char kind[32];
            std::snprintf(kind, sizeof kind, percent == 100 ? "maze" : "%u %% walls", percent);
            survey.Print(kind, cells);
        }
    }
}

}  // namespace
}  // namespace fenlight

int main(int argumentCount, char **arguments) {
    if (argumentCount == 2 && std::string_view(arguments[1]) == "--survey") {
        fenlight::PrintSurvey();
        return 0;
    }
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
