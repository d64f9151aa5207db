// SPDX-License-Identifier: Zlib
#include "fx/geometry/geometry_kernels.h"

#include "fx/geometry/geometry_loops.h"

namespace fenlight {

extern const GeometryKernels kPlainGeometryKernels{TurnRest, SwapBytes, FindLandings};

}  // namespace fenlight
