// SPDX-License-Identifier: Zlib
#include "particles/particle_steps.h"

namespace fenlight {
namespace {

// Records that no vector version takes are moved one by one, which their owners can do for any surface.
constexpr ParticleKernels kNoKernels{nullptr, nullptr};
constexpr KernelVersions<ParticleKernels> kVersions{
    &kNoKernels, nullptr, FENLIGHT_ON_X86(kAvx2ParticleKernels), FENLIGHT_ON_X86(kAvx512ParticleKernels)};

}  // namespace

const ParticleKernels &ChooseParticleKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
