// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "painting/tile_rows.h"

namespace fenlight {

const TileKernels kAvx2TileKernels{CopyTiles<8, false>, CopyTiles<8, true>};

}  // namespace fenlight
#endif
