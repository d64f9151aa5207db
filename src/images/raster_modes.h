// SPDX-License-Identifier: Zlib
// The small numbers by which callers name raster operations.
#pragma once

#include <cstdint>

#include "fenlight/platform/types.h"

namespace fenlight {

// The raster operation code of modes 0 to 14. Any other number is taken for a code itself, -1 too: who gives
// it a meaning of its own asks before.
DWORD RasterCodeOfMode(int32_t mode) noexcept;

}  // namespace fenlight
