// SPDX-License-Identifier: Zlib
// The row loops of small 32-bit tiles. A tile of 16 x 16 is done in a dozen nanoseconds: so many tiles are
// taken in one call, and the usual widths are fixed at compile time. The loops see memory and sizes, nothing
// else; source and target never overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "frame/vector_level.h"

namespace fenlight {

struct TileShape {
    int32_t width;  // pixels
    int32_t height;
    ptrdiff_t targetPitch;
    ptrdiff_t sourcePitch;
};

struct TilePlace {
    uint8_t *target;
    const uint8_t *source;
    uint32_t key;  // 0x00RRGGBB
};

struct TileKernels {
    // All 32 bits of all pixels.
    void (*copy)(const TileShape &shape, std::span<const TilePlace> places);
    // All 32 bits of the pixels whose low 24 bits are not the key.
    void (*copyKeyed)(const TileShape &shape, std::span<const TilePlace> places);
};
extern const TileKernels kAvx2TileKernels;

const TileKernels &ChooseTileKernels() noexcept;

namespace {

template <int kLanes>
struct TileVector {
    typedef uint32_t Pixels __attribute__((vector_size(4 * kLanes)));
};

template <int kLanes, bool kIsKeyed>
void CopyVector(uint8_t *target, const uint8_t *source, typename TileVector<kLanes>::Pixels keys) {
    using Pixels = typename TileVector<kLanes>::Pixels;
    Pixels pixels;
    std::memcpy(&pixels, source, sizeof pixels);
    if constexpr (kIsKeyed) {
        Pixels present;
        std::memcpy(&present, target, sizeof present);
        const auto isKey = reinterpret_cast<Pixels>((pixels & 0xFFFFFF) == keys);
        pixels = (present & isKey) | (pixels & ~isKey);
    }
    std::memcpy(target, &pixels, sizeof pixels);
}

// kWidth 0: as wide as the shape says. All by value, or for all the compiler knows the stores could change
// it.
template <int kLanes, bool kIsKeyed, int32_t kWidth>
void CopyTile(TileShape shape, TilePlace place) {
    const int32_t width = kWidth != 0 ? kWidth : shape.width;
    const auto keys = typename TileVector<kLanes>::Pixels{} + place.key;
    for (int32_t y = 0; y < shape.height; ++y) {
        int32_t x = 0;
        for (; x + kLanes <= width; x += kLanes)
            CopyVector<kLanes, kIsKeyed>(place.target + 4 * x, place.source + 4 * x, keys);
        for (; x < width; ++x) {
            uint32_t pixel;
            std::memcpy(&pixel, place.source + 4 * x, sizeof pixel);
            if (!kIsKeyed || (pixel & 0xFFFFFF) != place.key)
                std::memcpy(place.target + 4 * x, &pixel, sizeof pixel);
        }
        place.target += shape.targetPitch;
        place.source += shape.sourcePitch;
    }
}

template <int kLanes, bool kIsKeyed, int32_t kWidth>
void CopyEach(const TileShape &shape, std::span<const TilePlace> places) {
    for (const TilePlace &place : places) CopyTile<kLanes, kIsKeyed, kWidth>(shape, place);
}

template <int kLanes, bool kIsKeyed>
void CopyTiles(const TileShape &shape, std::span<const TilePlace> places) {
    switch (shape.width) {
        case 8:
            return CopyEach<kLanes, kIsKeyed, 8>(shape, places);
        case 16:
            return CopyEach<kLanes, kIsKeyed, 16>(shape, places);
        case 32:
            return CopyEach<kLanes, kIsKeyed, 32>(shape, places);
        default:
            return CopyEach<kLanes, kIsKeyed, 0>(shape, places);
    }
}

}  // namespace
}  // namespace fenlight
