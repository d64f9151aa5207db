// SPDX-License-Identifier: Zlib
// The hot loops of mirrors and turns, in the widths that processors have. They see addresses and counts only
// and keep nothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/vector_level.h"

namespace fenlight {

// Where pixels of one source row land, one after the other: pixel i at byte
//   origin + (x + i * stepX >> 10) * pixelBytes + (y + i * stepY >> 10) * pitch
// of the target, in 32 bits throughout, with shifts that keep the sign. Sums may pass through numbers that
// are too large; they come back.
struct LandingLine {
    uint32_t x, y;  // 1/1024 pixels
    uint32_t stepX, stepY;
    uint32_t pixelBytes;
    uint32_t pitch;
    uint32_t origin;

    LandingLine From(int64_t pixel) const {
        LandingLine line = *this;
        line.x += static_cast<uint32_t>(pixel) * stepX;
        line.y += static_cast<uint32_t>(pixel) * stepY;
        return line;
    }
};

inline constexpr uint32_t kLandingsAtOnce = 16;

struct GeometryKernels {
    // Swaps the three bytes at `begin` with the three before `end`, then works inwards as long as
    // half of the bytes in between, rounded down, is above 0: a row of pixels comes out mirrored. Where the
    // number of bytes is no multiple of 3, the last threes overlap and are swapped byte by byte, from the
    // first to the third. At least 3 bytes.
    void (*turnPixels)(uint8_t *begin, uint8_t *end) noexcept;
    // Blocks that do not overlap.
    void (*swapBytes)(uint8_t *first, uint8_t *second, int64_t bytes) noexcept;
    // Writes `count` offsets, rounded up to a multiple of kLandingsAtOnce.
    void (*findLandings)(const LandingLine &line, int32_t *offsets, int64_t count) noexcept;
};

extern const GeometryKernels kPlainGeometryKernels;
extern const GeometryKernels kAvx2GeometryKernels;
extern const GeometryKernels kAvx512GeometryKernels;

inline const GeometryKernels &CurrentGeometryKernels() noexcept {
    static constexpr KernelVersions<GeometryKernels> kVersions{&kPlainGeometryKernels, nullptr,
                                                               FENLIGHT_ON_X86(kAvx2GeometryKernels),
                                                               FENLIGHT_ON_X86(kAvx512GeometryKernels)};
    return ChooseKernels(kVersions);
}

}  // namespace fenlight
