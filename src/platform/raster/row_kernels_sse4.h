// SPDX-License-Identifier: Zlib
// The row loops that gain most from vectors of 4 pixels, for processors without AVX2. The table takes the
// plain version of all others: copies and scaling are at the memory's speed with the compiler's own code.
#pragma once

#include "platform/raster/row_kernels.h"

namespace fenlight::platform {

// As the members of RowKernels of the same name.
void KeyFrom32Sse4(const RowBlock &block, uint32_t key);
void KeyFrom24Sse4(const RowBlock &block, uint32_t key);

}  // namespace fenlight::platform
