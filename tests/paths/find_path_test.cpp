// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include "fenlight/paths.h"
#include "paths/grid_map.h"
#include "paths/grid_walk.h"
#include "paths/path_judge.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

constexpr int16_t kUntouched = 0x5AA5;
constexpr VectorLevel kLevels[] = {VectorLevel::Plain, VectorLevel::Sse4, VectorLevel::Avx2,
                                   VectorLevel::Avx512};

class PathSearch : public ::testing::Test {
  protected:
    void TearDown() override { ReleaseVectorLevel(); }
};

// The result, and the array as far as it was written: of exactly as many words as it may need, so that a
// sanitizer sees one too many.
struct Outcome {
    Outcome(const TestMap &map, const Query &query) {
        const int32_t size = std::max(query.cellSize, 1);
        const auto most = static_cast<size_t>((map.header.biWidth / size) * (map.header.biHeight / size) + 2);
        path.assign(2 * most, kUntouched);
        result = FindPath(path.data(), map.Handle(), query.cellSize, query.startX, query.startY, query.endX,
                          query.endY, query.flags);
        while (!path.empty() && path.back() == kUntouched) path.pop_back();
    }
    int32_t result;
    std::vector<int16_t> path;
};

// Words that need no start value, as the memory of a search has them.
std::vector<uint64_t> Noise(int64_t bytes) {
    return std::vector<uint64_t>(static_cast<size_t>(bytes / 8 + 1), ~uint64_t{0});
}

std::vector<uint8_t> FilledGrid(const CellMap &cells, bool thickens) {
    std::vector<uint8_t> grid(static_cast<size_t>(cells.GridCells() + kCellSlack), 77);
    FillGrid(cells, thickens, grid.data(), Noise(MapScratchBytes(cells)).data());
    grid.resize(static_cast<size_t>(cells.GridCells()));
    return grid;
}

// How often each cell was left, whether the walk arrived or not.
std::vector<uint8_t> VisitsOfWalk(const TestMap &map, const Query &query) {
    const CellMap cells = MapOf(map.header, query.cellSize);
    std::vector<uint8_t> visits = FilledGrid(cells, (query.flags & 1) != 0);
    std::vector<uint64_t> exits = Noise(8 * cells.GridCells());
    const auto cellAt = [&](int32_t x, int32_t y) {
        return (y / query.cellSize + 1) * cells.GridWidth() + x / query.cellSize + 1;
    };
    WalkToCell({visits.data(), exits.data(), cells.GridWidth(), cells.GridCells()},
               cellAt(query.startX, query.startY), cellAt(query.endX, query.endY));
    return visits;
}

int32_t ExpectAsDefined(const TestMap &map, const Query &query) {
    PathJudge judge(map, query.cellSize, query.flags);
    const std::vector<int16_t> expected = judge.Find(query);
    const Outcome outcome(map, query);
    EXPECT_EQ(outcome.result, static_cast<int32_t>(2 * expected.size()));
    EXPECT_EQ(outcome.path, expected);
    const std::vector<uint8_t> visits = VisitsOfWalk(map, query);
    const bool isCutOff = std::count(visits.begin(), visits.end(), kCutOffCell) > 0 ||
                          judge.IsBlocked(query.endX / query.cellSize, query.endY / query.cellSize);
    EXPECT_TRUE(isCutOff || visits == judge.visits);
    return outcome.result;
}

TEST_F(PathSearch, FollowsItsDefinitionOnRandomMaps) {
    std::mt19937 random(71);
    const auto below = [&](int32_t number) {
        return static_cast<int32_t>(random() % static_cast<unsigned>(number));
    };
    int found = 0, walked = 0;
    for (int turn = 0; turn < 12000 && !HasFailure(); ++turn) {
        const int32_t size = 1 + below(5), columns = 1 + below(20), rows = 1 + below(20);
        const TestMap map(columns * size + below(size), rows * size + below(size), turn % 2 == 0);
        const int32_t flags = turn % 5 == 0 ? below(4) : 2 * below(2);
        const int32_t wallsIn1000 = flags % 2 == 1 ? below(120) : below(450);
        const Query query{
            size, below(columns * size), below(rows * size), below(columns * size), below(rows * size),
            flags};
        for (int32_t cell = 0; cell < columns * rows; ++cell)
            if (below(1000) < wallsIn1000)
                map.Byte(cell % columns * size + below(size), cell / columns * size + below(size), below(3)) =
                    static_cast<uint8_t>(below(2) == 0 ? 254 : below(255));
        ForceVectorLevel(kLevels[turn % 4]);
        SCOPED_TRACE(testing::Message()
                     << "turn " << turn << ", " << columns << " x " << rows << " of " << size);
        const int32_t result = ExpectAsDefined(map, query);
        found += result > 0;
        walked += result > 20;
    }
    // The maps are no proof unless both answers are common.
    EXPECT_GT(found, 4000);
    EXPECT_GT(walked, 2000);
    EXPECT_LT(found, 10000);
}

TEST_F(PathSearch, ReadsEachCellOfAMapWhateverItsSize) {
    std::mt19937 random(72);
    for (const int32_t size : {1, 2, 3, 4, 7, 8, 9, 16, 21, 28, 29, 57, 58, 64, 115}) {
        for (int32_t columns = 1; columns <= (size < 5 ? 200 : 9); columns += columns < 5 ? 1 : 3) {
            const TestMap map(columns * size + columns % size, 3 * size + size / 2, columns % 2 == 0);
            for (int32_t cell = 0; cell < 3 * columns; ++cell)
                if (random() % 4 == 0)
                    map.Byte(cell % columns * size + static_cast<int32_t>(random() % 128) % size,
                             cell / columns * size + static_cast<int32_t>(random() % 128) % size,
                             static_cast<int32_t>(random() % 3)) = 254;
            for (const int32_t flags : {0, 1}) {
                const PathJudge judge(map, size, flags);
                for (const VectorLevel level : kLevels) {
                    ForceVectorLevel(level);
                    const std::vector<uint8_t> grid = FilledGrid(MapOf(map.header, size), flags != 0);
                    ASSERT_EQ(grid, judge.visits) << size << ' ' << columns << ' ' << flags;
                }
            }
        }
    }
}

TEST_F(PathSearch, GivesTheHandWorkedPaths) {
    using Path = std::vector<int16_t>;
    const TestMap corridor(50, 10, false);
    EXPECT_EQ(Outcome(corridor, {10, 0, 0, 40, 0, 0}).path, (Path{0, 0, 20, 0, 40, 0, 40, 0}));
    EXPECT_EQ(Outcome(corridor, {10, 0, 0, 40, 0, 0}).result, 16);
    EXPECT_EQ(Outcome(corridor, {10, 0, 0, 0, 0, 0}).path, (Path{0, 0, 0, 0, 0, 0}));

    const TestMap pillar(60, 40, true);
    for (const auto &[column, row] : {std::pair(2, 1), std::pair(3, 1), std::pair(2, 2), std::pair(3, 2)})
        pillar.BlockCell(column, row, 10);
    const Query query{10, 5, 5, 55, 35, 0};
    const Path round{5, 5, 0, 10, 10, 30, 30, 30, 50, 30, 55, 35};
    EXPECT_EQ(Outcome(pillar, query).path, round);
    EXPECT_EQ(Outcome(pillar, query).result, 24);
    PathJudge judge(pillar, 10, 0);
    EXPECT_EQ(judge.Find(query), round);
    const std::vector<std::array<int, 2>> trail = {{1, 0}, {1, 1}, {0, 1}, {0, 2}, {1, 2}, {1, 3}, {0, 3},
                                                   {0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}};
    EXPECT_EQ(judge.TrailCells(), trail) << "the judge itself";

    // Thickened, the pillar reaches all edges.
    EXPECT_EQ(Outcome(pillar, {10, 5, 5, 55, 35, 1}).result, 0);
    EXPECT_EQ(Outcome(pillar, {10, 15, 5, 5, 5, 1}).result, 0) << "the start is blocked";
    EXPECT_EQ(Outcome(pillar, {10, 5, 5, 55, 35, -2}).path, round) << "other flags mean nothing";
}

TEST_F(PathSearch, GivesUpWithTheArrayUntouched) {
    const TestMap wall(30, 30, true), white(30, 30, false), grey(30, 30, false);
    for (int32_t row = 0; row < 3; ++row) wall.BlockCell(1, row, 10);
    std::fill_n(grey.header.Pixels, grey.header.biSizeImage, uint8_t{254});
    FXHeader cutOff = white.header, noRow = white.header, endless = white.header, empty{};
    cutOff.biSizeImage -= 1;
    noRow.biHeight = -30;
    endless.biWidth = endless.biHeight = std::numeric_limits<int32_t>::max();
    endless.biSizeImage = std::numeric_limits<uint32_t>::max();
    const auto handle = [](const FXHeader &fx) { return reinterpret_cast<uintptr_t>(&fx); };
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max(), kLeast = -kMost - 1;

    const struct {
        uintptr_t fx;
        Query query;
    } cases[] = {
        {wall.Handle(), {10, 0, 0, 29, 0, 0}},    {wall.Handle(), {10, 10, 0, 10, 0, 0}},
        {wall.Handle(), {10, 0, 0, 10, 0, 0}},    {grey.Handle(), {1, 0, 0, 1, 1, 0}},
        {white.Handle(), {0, 0, 0, 9, 9, 0}},     {white.Handle(), {-1, 0, 0, 9, 9, 0}},
        {white.Handle(), {31, 0, 0, 9, 9, 0}},    {white.Handle(), {kLeast, 0, 0, 9, 9, 0}},
        {white.Handle(), {7, 28, 0, 9, 9, 0}},    {white.Handle(), {7, 0, 28, 9, 9, 0}},
        {white.Handle(), {7, 0, 0, 28, 9, 0}},    {white.Handle(), {7, 0, 0, 9, 28, 0}},
        {white.Handle(), {7, -1, 0, 9, 9, 0}},    {white.Handle(), {7, 0, kLeast, 9, 9, 0}},
        {white.Handle(), {7, 0, 0, kMost, 9, 0}}, {white.Handle(), {7, 0, 0, 9, -1, 0}},
        {handle(cutOff), {10, 0, 0, 9, 9, 0}},    {handle(noRow), {10, 0, 0, 9, 9, 0}},
        {handle(endless), {1, 0, 0, 9, 9, 1}},    {handle(endless), {kMost, 0, 0, 9, 9, 0}},
        {handle(empty), {1, 0, 0, 0, 0, 0}},      {0, {1, 0, 0, 0, 0, 0}},
    };
    for (const auto &[fx, q] : cases) {
        std::vector<int16_t> path(1024, kUntouched);
        EXPECT_EQ(FindPath(path.data(), fx, q.cellSize, q.startX, q.startY, q.endX, q.endY, q.flags), 0)
            << &q - &cases[0].query;
        EXPECT_EQ(std::count(path.begin(), path.end(), kUntouched), 1024);
    }
    EXPECT_EQ(FindPath(nullptr, white.Handle(), 1, 0, 0, 1, 1, 0), 0);

    const Query query{1, 0, 0, 29, 29, 0};
    platform::FailOnce(platform::Operation::Memory, 1);
    const Outcome refused(white, query);
    EXPECT_EQ(platform::CountOperations(platform::Operation::Memory), 1) << "further ones could fail too";
    platform::ForgetFailures();
    EXPECT_EQ(refused.result, -1);
    EXPECT_TRUE(refused.path.empty());
    // One row less than the header claims is enough where cells leave it over.
    cutOff.biSizeImage = white.header.biSizeImage - 2 * 90;
    std::vector<int16_t> path(2 * 18);
    EXPECT_EQ(FindPath(path.data(), handle(cutOff), 7, 0, 0, 27, 27, 0),
              Outcome(white, {7, 0, 0, 27, 27, 0}).result);
}

}  // namespace
}  // namespace fenlight::test
