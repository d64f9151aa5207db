// SPDX-License-Identifier: Zlib
#include "sprites/collision_kernels.h"

#include "frame/vector_level.h"
#include "sprites/collision_loops.h"

namespace fenlight {
namespace {

constexpr KernelVersions<CollisionKernels> kVersions{&kPlainCollisionKernels, nullptr,
                                                     FENLIGHT_ON_X86(kAvx2CollisionKernels),
                                                     FENLIGHT_ON_X86(kAvx512CollisionKernels)};

}  // namespace

constexpr CollisionKernels kPlainCollisionKernels = kCollisionLoops;

const CollisionKernels &ChooseCollisionKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
