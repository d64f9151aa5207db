// SPDX-License-Identifier: Zlib
#include "fx/geometry/memory_roll.h"

#include <cstddef>
#include <cstring>

#include "fenlight/fx_geometry.h"
#include "fx/geometry/geometry_kernels.h"

namespace fenlight {
namespace {

// Up to so many bytes are laid aside while the others move.
constexpr int64_t kAside = 16384;

void MoveUp(uint8_t *bytes, int64_t length, int64_t amount) {
    uint8_t aside[kAside];
    std::memcpy(aside, bytes + length - amount, static_cast<size_t>(amount));
    std::memmove(bytes + amount, bytes, static_cast<size_t>(length - amount));
    std::memcpy(bytes, aside, static_cast<size_t>(amount));
}

void MoveDown(uint8_t *bytes, int64_t length, int64_t amount) {
    uint8_t aside[kAside];
    std::memcpy(aside, bytes, static_cast<size_t>(amount));
    std::memmove(bytes, bytes + amount, static_cast<size_t>(length - amount));
    std::memcpy(bytes + length - amount, aside, static_cast<size_t>(amount));
}

}  // namespace

// The bytes are two blocks that change places. Swapping the shorter one with as many bytes at the far end of
// the longer one puts the shorter one right, and leaves two blocks that change places.
void RollBytes(uint8_t *bytes, int64_t length, int64_t amount) noexcept {
    const auto swapBytes = CurrentGeometryKernels().swapBytes;
    int64_t head = length - amount, tail = amount;
    while (head > kAside && tail > kAside) {
        if (head <= tail) {
            swapBytes(bytes, bytes + tail, head);
            tail -= head;
        } else {
            swapBytes(bytes, bytes + head, tail);
            bytes += tail;
            head -= tail;
        }
    }
    if (tail <= head) return MoveUp(bytes, head + tail, tail);
    MoveDown(bytes, head + tail, head);
}

}  // namespace fenlight

using namespace fenlight;

void RotateMem(void *base, int32_t offset, int32_t length, int32_t amount, int32_t direction) noexcept {
    if (base == nullptr || length <= 0) return;
    const int64_t upwards = direction == 0 ? int64_t{amount} : -int64_t{amount};
    if (upwards <= -length || upwards >= length) return;
    RollBytes(static_cast<uint8_t *>(base) + offset, length, upwards < 0 ? upwards + length : upwards);
}
