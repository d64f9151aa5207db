// SPDX-License-Identifier: Zlib
#include "data/memory_copies.h"

#include <algorithm>
#include <cstring>

namespace fenlight {
namespace {

// Repeated bytes are copied in pieces that stay in the first level cache, once there are so many.
constexpr int64_t kPiece = 16384;

// How far the target lies above the source, as a distance round the whole of memory.
uint64_t Distance(const uint8_t *target, const uint8_t *source) noexcept {
    return reinterpret_cast<uintptr_t>(target) - reinterpret_cast<uintptr_t>(source);
}

// The next piece of whole periods, of which `ready` bytes are there to be copied.
int64_t NextPiece(int64_t ready, int64_t piece) noexcept { return ready <= kPiece ? ready : piece; }

}  // namespace

void CopyUpwards(uint8_t *target, const uint8_t *source, int64_t bytes) noexcept {
    const uint64_t distance = Distance(target, source);
    if (distance == 0) return;
    if (distance >= static_cast<uint64_t>(bytes)) {
        std::memmove(target, source, static_cast<size_t>(bytes));
        return;
    }
    const auto period = static_cast<int64_t>(distance);
    if (period == 1) {
        std::memset(target, *source, static_cast<size_t>(bytes));
        return;
    }
    int64_t piece = period;
    for (int64_t done = 0; done < bytes;) {
        piece = NextPiece(period + done, piece);
        const int64_t size = std::min(piece, bytes - done);
        std::memcpy(target + done, source, static_cast<size_t>(size));
        done += size;
    }
}

void CopyDownwards(uint8_t *target, const uint8_t *source, int64_t bytes) noexcept {
    const uint64_t distance = Distance(source, target);
    if (distance == 0) return;
    if (distance >= static_cast<uint64_t>(bytes)) {
        std::memmove(target, source, static_cast<size_t>(bytes));
        return;
    }
    const auto period = static_cast<int64_t>(distance);
    const uint8_t *const end = source + bytes;
    int64_t piece = period;
    for (int64_t rest = bytes; rest > 0;) {
        piece = NextPiece(period + bytes - rest, piece);
        const int64_t size = std::min(piece, rest);
        std::memcpy(target + rest - size, end - size, static_cast<size_t>(size));
        rest -= size;
    }
}

}  // namespace fenlight
