// SPDX-License-Identifier: Zlib
#include "packing/depacker.h"

#include "packing/careful_depacker.h"
#include "packing/fast_depacker.h"

namespace fenlight {
namespace {

uint32_t GatherEveryOtherPlain(uint64_t bits) {
    bits = bits >> 1 & 0x5555555555555555;
    bits = (bits | bits >> 1) & 0x3333333333333333;
    bits = (bits | bits >> 2) & 0x0F0F0F0F0F0F0F0F;
    bits = (bits | bits >> 4) & 0x00FF00FF00FF00FF;
    bits = (bits | bits >> 8) & 0x0000FFFF0000FFFF;
    return static_cast<uint32_t>(bits | bits >> 16);
}

DepackCursor RunFastPlain(const DepackCursor &cursor) noexcept {
    return FastDepacker<GatherEveryOtherPlain>(cursor).Run();
}

constexpr DepackKernels kPlainDepack{RunFastPlain};

constexpr KernelVersions<DepackKernels> kDepackers{&kPlainDepack, nullptr, FENLIGHT_ON_X86(kAvx2Depack)};

}  // namespace

uint32_t Depack(std::span<const uint8_t> stream, std::span<uint8_t> room) noexcept {
    if (stream.empty() || room.empty()) return 0;
    const DepackKernels &kernels = ChooseKernels(kDepackers);
    room[0] = stream[0];
    DepackCursor cursor{stream.data() + 1, stream.data() + stream.size(), room.data() + 1,
                        room.data(),       room.data() + room.size(),     {}};
    DepackState state;
    do {
        cursor = kernels.runFast(cursor);
        state = DepackItemCarefully(cursor);
    } while (state == DepackState::Going);
    return state == DepackState::Ended ? static_cast<uint32_t>(cursor.Written()) : 0;
}

}  // namespace fenlight
