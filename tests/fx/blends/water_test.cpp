// SPDX-License-Identifier: Zlib
#include "fx/blends/water.h"

#include <algorithm>
#include <thread>

#include "fenlight/fx_blends.h"
#include "fx/blends/wave_tables.h"
#include "fx/fx_picture.h"
#include "fx/guarded_buffer.h"
#include "platform/system/failure_point.h"

namespace fenlight::test {
namespace {

using platform::Operation;

// 1 doubles a row, 2 drops one, 255 ends the table.
int RowStepAt(size_t at) {
    for (const size_t doubled : {8, 13, 37, 43, 61, 66, 90, 99})
        if (at == doubled) return 1;
    for (const size_t dropped : {0, 28, 47, 54, 83})
        if (at == dropped) return 2;
    return at < 108 ? 0 : 255;
}

// The definition: two passes over whole blocks, a pixel at a time. Its phases go along with those of the
// process, so every call of this program has to be told to it.
class Judge {
  public:
    // Blocks are those of the definition; without memory for one they stay empty.
    struct Frames {
        Bytes shifted, stepped;
    };

    Frames Next(const FXHeader &fx, std::vector<int32_t> table, int calmRows, int memory = 2) {
        if (std::find(table.begin(), table.end(), 255) == table.end()) table.push_back(255);
        const size_t start = NextWave(table);
        if (memory < 1) return {};
        const Bytes shifted = Shift(fx, table, start);
        const size_t rowStart = rowStep_++;
        if (RowStepAt(rowStep_) != 255)
            return {shifted, memory < 2 ? Bytes{} : Step(fx, shifted, calmRows, rowStart)};
        rowStep_ = 1;
        return {shifted, memory < 2 ? Bytes{} : Step(fx, shifted, calmRows, 0)};
    }

  private:
    size_t NextWave(const std::vector<int32_t> &table) {
        const auto n = std::find(table.begin(), table.end(), 255) - table.begin();
        --wave_;
        if (wave_ == -1 || wave_ > n) wave_ = n;
        return table[static_cast<size_t>(wave_)] == 255 ? 0 : static_cast<size_t>(wave_ + 1);
    }

    static Bytes Shift(const FXHeader &fx, const std::vector<int32_t> &table, size_t p) {
        Bytes result(fx.biSizeImage);
        const int64_t width = fx.biWidth, ends = std::min<int64_t>(15, 3 * width);
        for (int64_t r = 0; r < fx.biHeight; ++r) {
            int64_t k = table[p++];
            if (k == 255) k = 0, p = 0;
            for (const int64_t calm : {64, 32, 16})
                if (r < calm) k = (k + 1) / 2;
            const uint8_t *source = fx.Pixels + 3 * width * r;
            uint8_t *target = result.data() + 3 * width * r;
            std::copy_n(source, ends, target);
            for (int64_t x = 0; x < width; ++x)
                if (x + k >= 0 && x + k < width) std::copy_n(source + 3 * x, 3, target + 3 * (x + k));
            std::copy_n(source + 3 * width - ends, ends, target + 3 * width - ends);
        }
        return result;
    }

    static Bytes Step(const FXHeader &fx, const Bytes &shifted, int calmRows, size_t q) {
        Bytes result(shifted.size());
        const int64_t rowSize = int64_t{3} * fx.biWidth;
        int64_t s = 0, d = 0;
        for (int n = 1; n <= fx.biHeight; ++n) {
            std::copy_n(shifted.data() + rowSize * s, rowSize, result.data() + rowSize * d);
            int t = RowStepAt(q++);
            if (t == 255) q = 0, t = RowStepAt(0);
            if (n < calmRows) t = 0;
            s += t == 0 ? 1 : t == 1 ? 0 : 2;
            ++d;
            if (s * rowSize >= fx.biSizeImage - rowSize) break;
        }
        return result;
    }

    int64_t wave_ = 0;
    size_t rowStep_ = 0;
};

Judge judge;

std::vector<int32_t> DefaultTable() { return {kDefaultWave.begin(), kDefaultWave.end()}; }

class WaterEffect : public ::testing::Test {
  protected:
    // One call, painted or not, held against the judge: the picture, its guards, the context, the result.
    void Call(const GuardedBuffer &fx, const std::vector<int32_t> &table, uintptr_t address, int calmRows,
              bool isPainted, int memory = 2) {
        const Judge::Frames frames = judge.Next(fx.header, table, calmRows, memory);
        GuardedBuffer expected = fx;
        if (!isPainted && memory == 2) expected.Set(frames.stepped);
        const auto call = [&](HDC dc) {
            if (memory < 2) platform::FailOnce(Operation::Memory, memory + 1);
            const auto *waveTable = reinterpret_cast<const int32_t *>(address);
            const int32_t result = Water(dc, 3, -4, fx.Handle(), waveTable, calmRows);
            platform::ForgetFailures();
            return result;
        };
        if (isPainted)
            ASSERT_TRUE(Paints(fx.header, memory == 1 ? frames.shifted : frames.stepped, {32, 3, -4}, call));
        else
            EXPECT_EQ(call(0), 0);
        ASSERT_TRUE(SameBuffer(fx, expected));
    }

    Dice dice{77};
};

// Tables change from call to call: longer and shorter than where the waves stand, empty, with shifts of any
// size. Pictures are low and narrow, or so high that the steps of the rows begin again.
TEST_F(WaterEffect, GivesTheFramesOfTheDefinitionOverManyCalls) {
    for (int number = 0; number < 900; ++number) {
        const int32_t height = number % 3 == 0 ? dice.Between(100, 260) : dice.Between(1, 35);
        const GuardedBuffer fx = dice.Noise(dice.Between(1, number % 4 == 0 ? 12 : 67), height);
        std::vector<int32_t> table(
            static_cast<size_t>(number % 5 == 0 ? dice.Between(0, 3) : dice.Between(0, 300)));
        for (int32_t &entry : table) {
            entry = dice.Between(0, 5) == 0 ? dice.Between(-70, 70) : dice.Between(-6, 6);
            if (number % 6 == 0 && dice.Between(0, 3) == 0) entry = dice.Toss() ? kMost : kLeast;
        }
        table.push_back(255);
        const int calmRows = number % 2 == 0    ? dice.Between(-2, height + 3)
                             : number % 50 == 1 ? kLeast
                             : number % 50 == 3 ? kMost
                                                : 0;
        const bool isDefault = number > 300 && number < 600;
        const uintptr_t address = isDefault ? static_cast<uintptr_t>(dice.Between(0, 15))
                                            : reinterpret_cast<uintptr_t>(table.data());
        SCOPED_TRACE(testing::Message() << "call " << number << ": " << fx.header.biWidth << " x " << height
                                        << ", " << table.size() << " entries, calm " << calmRows);
        Call(fx, isDefault ? DefaultTable() : table, address, calmRows, dice.Toss(),
             number % 8 == 0 ? dice.Between(0, 1) : 2);
        if (HasFatalFailure()) return;
    }
}

TEST_F(WaterEffect, ReadsATableWithoutAnEndOnlySoFar) {
    const GuardedBuffer fx = dice.Noise(20, 30);
    std::vector<int32_t> table(kMostWaveEntries);
    for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<int32_t>(i % 7) - 3;
    for (int call = 0; call < 3; ++call)
        Call(fx, table, reinterpret_cast<uintptr_t>(table.data()), 0, call == 0);
}

TEST_F(WaterEffect, CalmsTheRowsAtTheTopUnevenly) {
    const int32_t both[] = {-5, 5, 255};
    std::vector<int32_t> shifts(120);
    PlanShifts(shifts.data(), 67, 100, WaveOf(both), 0);
    constexpr std::pair<size_t, int32_t> kShifts[] = {{0, 0},  {1, 1},   {18, 0}, {19, 2}, {33, -2},
                                                      {34, 3}, {63, -2}, {64, 5}, {66, -5}};
    for (const auto &[row, shift] : kShifts) EXPECT_EQ(shifts[row], shift) << row;
    PlanShifts(shifts.data(), 120, 100, WaveOf(nullptr), 0);
    EXPECT_EQ(std::vector({shifts[9], shifts[79], shifts[118], shifts[119]}), std::vector({1, -2, 0, 0}));
    EXPECT_EQ(WaveOf(nullptr).count, 119);
}

// As many turns as bring both phases back to where they were, unless one is lost.
TEST_F(WaterEffect, LosesNoTurnOnTwoThreads) {
    const GuardedBuffer fx = dice.Noise(40, 120);
    Call(fx, DefaultTable(), 0, 0, true);
    const auto takeTurns = [] {
        for (int i = 0; i < 50 * 120 * 107; ++i) TakeWaveStart(119), TakeRowStepStart();
    };
    std::thread beside(takeTurns);
    takeTurns();
    beside.join();
    EXPECT_EQ(Water(0, 0, 0, 0, nullptr, 0), 0);  // takes none
    Call(fx, DefaultTable(), 0, 0, true);
}

}  // namespace
}  // namespace fenlight::test
