// SPDX-License-Identifier: Zlib
#include "painting/tile_rows.h"

namespace fenlight {
namespace {

// Vectors of four are plain code everywhere.
constexpr TileKernels kPlainTileKernels{CopyTiles<4, false>, CopyTiles<4, true>};
constexpr KernelVersions<TileKernels> kVersions{&kPlainTileKernels, nullptr,
                                                FENLIGHT_ON_X86(kAvx2TileKernels)};

}  // namespace

const TileKernels &ChooseTileKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
