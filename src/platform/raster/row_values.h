// SPDX-License-Identifier: Zlib
// Pixels of one row as numbers, one 32-bit word each: bits, palette indices, or 0x??RRGGBB (the upper byte is
// 0 for 24-bit rows). Pure functions on the callers' memory.
#pragma once

#include <cstdint>

#include "platform/raster/pixel_view.h"

namespace fenlight::platform {

// Rows are worked on in pieces of this many pixels, so that their numbers stay in the first-level cache.
constexpr int32_t kPieceWidth = 512;

void LoadValues(PixelFormat format, const uint8_t *row, int32_t x, int32_t count, uint32_t *values) noexcept;
// The pixels at the given positions of the row.
void LoadScattered(PixelFormat format, const uint8_t *row, const int32_t *positions, int32_t count,
                   uint32_t *values) noexcept;
// Bits of a value that the format has no room for are dropped; neighbours in shared bytes stay as they are.
void StoreValues(PixelFormat format, uint8_t *row, int32_t x, int32_t count, const uint32_t *values) noexcept;
void FillValues(PixelFormat format, uint8_t *row, int32_t x, int32_t count, uint32_t value) noexcept;

uint32_t LoadValue(PixelFormat format, const uint8_t *row, int32_t x) noexcept;
void StoreValue(PixelFormat format, uint8_t *row, int32_t x, uint32_t value) noexcept;

}  // namespace fenlight::platform
