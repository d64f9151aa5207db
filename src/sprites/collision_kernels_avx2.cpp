// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "sprites/collision_loops.h"

namespace fenlight {

constexpr CollisionKernels kAvx2CollisionKernels = kCollisionLoops;

}  // namespace fenlight
#endif
