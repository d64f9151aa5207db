// SPDX-License-Identifier: Zlib
#include "painting/tile_rows.h"

namespace fenlight {
namespace {

// Vectors of four are plain code everywhere.
constexpr TileKernels kPlainTileKernels{CopyTiles<4, false>, CopyTiles<4, true>};
#if defined(__x86_64__)
constexpr KernelVersions<TileKernels> kVersions{&kPlainTileKernels, nullptr, &kAvx2TileKernels};
#else
constexpr KernelVersions<TileKernels> kVersions{&kPlainTileKernels};
#endif

}  // namespace

const TileKernels &ChooseTileKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
