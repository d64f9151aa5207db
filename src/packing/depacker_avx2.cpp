// SPDX-License-Identifier: Zlib
// Gathers a gamma value's bits in one step.
#if defined(__x86_64__)
#include <immintrin.h>

#include "packing/depacker.h"
#include "packing/fast_depacker.h"

namespace fenlight {
namespace {

uint32_t GatherEveryOtherAvx2(uint64_t bits) { return static_cast<uint32_t>(_pext_u64(bits, ~kGoOnBits)); }

DepackCursor RunFastAvx2(const DepackCursor &cursor) noexcept {
    return FastDepacker<GatherEveryOtherAvx2>(cursor).Run();
}

}  // namespace

const DepackKernels kAvx2Depack{RunFastAvx2};

}  // namespace fenlight
#endif
