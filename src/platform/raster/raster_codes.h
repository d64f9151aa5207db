// SPDX-License-Identifier: Zlib
// The 256 ternary raster operations on rows. A truth table is bits 16 to 23 of a raster code; bit P*4 + S*2 +
// D is the result for those bits of pattern, source and target.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/raster/raster.h"

namespace fenlight::platform {

constexpr uint8_t TruthTable(DWORD rasterCode) { return static_cast<uint8_t>(rasterCode >> 16); }
constexpr bool NeedsPattern(uint8_t table) { return (table >> 4 & 15) != (table & 15); }
constexpr bool NeedsTarget(uint8_t table) { return ((table >> 1 ^ table) & 0x55) != 0; }

// One word; the pattern is a pixel's number like the others.
uint32_t CombineWord(uint8_t table, uint32_t pattern, uint32_t source, uint32_t target) noexcept;

// target[i] = table(pattern, source[i], target[i]). The two arrays are the same or do not overlap.
void CombineValues(uint8_t table, uint32_t pattern, const uint32_t *source, uint32_t *target,
                   int32_t count) noexcept;
// The same byte by byte for tables without a pattern. The rows are the same or do not overlap.
void CombineBytes(uint8_t table, const uint8_t *source, uint8_t *target, size_t count) noexcept;

}  // namespace fenlight::platform
