// SPDX-License-Identifier: Zlib
// Exact mirrors of FX buffers, in place. Nothing here keeps state.
#pragma once

#include "fx/fx_buffer.h"

namespace fenlight {

// Each packed row from left to right.
void MirrorRows(const FXHeader &fx) noexcept;
// Packed rows from top to bottom; the lowest is the one that ends with the block.
void MirrorColumns(const FXHeader &fx) noexcept;
// All threes of bytes of the block from both ends, padding included.
void TurnHalf(const FXHeader &fx) noexcept;

}  // namespace fenlight
