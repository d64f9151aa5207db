// SPDX-License-Identifier: Zlib
// The two tables that water moves by.
#pragma once

#include <array>
#include <cstdint>

namespace fenlight {

// Behind the last entry of a wave table; never a shift.
inline constexpr int32_t kWaveEnd = 255;

// Pixels to the right, row by row.
inline constexpr std::array<int32_t, 120> kDefaultWave = {
    0,  1,  1,  3,  1,  1,  2,  3,  4,  5,  4,  3,  2,  1,  1,  2,  3,  2,  2,  3,        //
    4,  5,  4,  3,  2,  1,  3,  3,  4,  5,  4,  3,  3,  4,  5,  4,  3,  3,  4,  5,        //
    4,  3,  2,  2,  3,  4,  5,  4,  3,  2,  2,  3,  4,  5,  4,  3,  3,  3,  4,  5,        //
    4,  3,  3,  3,  2,  2,  2,  1,  1,  1,  0,  0,  0,  0,  -1, -1, -1, -1, -1, -2,       //
    -3, -4, -3, -2, -1, -1, -2, -2, -3, -4, -3, -2, -1, -1, -1, -1, 2,  -1, -1, -1,       //
    -2, -3, -3, -3, -4, -5, -4, -3, -4, -5, -4, -3, -2, -2, -1, -1, -1, -1, 0,  kWaveEnd  //
};

// How many rows of the picture the next row of the frame moves on: 1, but 2 where a row is dropped and 0
// where one is doubled.
inline constexpr size_t kRowSteps = 108;
inline constexpr size_t kDroppedRows[] = {0, 28, 47, 54, 83};
inline constexpr size_t kDoubledRows[] = {8, 13, 37, 43, 61, 66, 90, 99};

inline constexpr std::array<uint8_t, kRowSteps> kRowStep = [] {
    std::array<uint8_t, kRowSteps> steps{};
    steps.fill(1);
    for (const size_t at : kDroppedRows) steps[at] = 2;
    for (const size_t at : kDoubledRows) steps[at] = 0;
    return steps;
}();

}  // namespace fenlight
