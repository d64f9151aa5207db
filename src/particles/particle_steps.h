// SPDX-License-Identifier: Zlib
// The first half of a frame: stars and particles move on and age, and what they have to do with pixels is
// noted as jobs, in the order of the records. The second half (particle_pixels.h) does the jobs. So the first
// half is free of pixels and can be done eight or sixteen records at a time, and the second is free of
// records.
//
// Only declarations here: this header is for the _avx2 file too.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fenlight/particles.h"
#include "frame/vector_level.h"

namespace fenlight {

// Records that are moved before their pixels are worked on, under one lock of the surfaces: it is held for a
// few microseconds, and the jobs stay in the first cache.
inline constexpr size_t kRecordsAtATime = 1024;

// Where a pixel lies on a surface of 32 bits: bytes from the start of the top row. A bitmap has less than
// 2^31 bytes.
using PixelOffset = int32_t;
inline constexpr PixelOffset kNoOffset = INT32_MIN;  // beside the surface

struct SurfaceShape {
    uint32_t pitch, width, height;  // pitch in bytes, modulo 2^32: it may be negative
};

// What vectors take: a multiple of this many records.
inline constexpr size_t kRecordsAtOnce = 16;

// Numbers of records or jobs, rising. Vectors write beyond the last.
struct NumberList {
    uint32_t numbers[kRecordsAtATime + kRecordsAtOnce];
    size_t count = 0;

    void Add(size_t number) { numbers[count++] = static_cast<uint32_t>(number); }
};

// A job: the pixel at `erased` gets back what lies behind it, then the one at `drawn` gets its colour. Where
// it is the particle's last, `drawn` gets back what lies behind at once. Vectors write beyond the last job.
template <class Place>
struct PixelJobs {
    static constexpr size_t kRoom = kRecordsAtATime + kRecordsAtOnce;
    alignas(64) Place erased[kRoom];
    alignas(64) Place drawn[kRoom];
    alignas(64) uint32_t colours[kRoom];
    size_t count = 0;
    NumberList last;

    void Add(const Place &toErase, const Place &toDraw, uint32_t colour) {
        erased[count] = toErase;
        drawn[count] = toDraw;
        colours[count++] = colour;
    }
};

// Stars live strictly inside.
struct StarRoom {
    int32_t left, top, right, bottom;
};
inline constexpr int32_t kLongestStarAge = 256;
// Both coordinates of a star that was not launched yet, and of a pixel that was not drawn yet: a place off
// every context.
inline constexpr int32_t kParkedAt = -111;

enum ColourMode : int32_t { kFading = 0, kSteady = 1, kRandom = 2 };

struct ParticleRules {
    int32_t lifeFrames, colourMode;
    uint32_t colour;
    int32_t gravityX, gravityY;
    const uint32_t *randomColours;  // one for each particle that is shown, where the mode asks for them
};

// Versions for surfaces of 32 bits, whose jobs hold pixel words as colours.
struct ParticleKernels {
    // A job for each star; `gone` gets those that have left the room or lived long enough.
    void (*moveStars)(StarRecord *stars, size_t count, const StarRoom &room, const SurfaceShape &shape,
                      PixelJobs<PixelOffset> &jobs, NumberList &gone) noexcept;
    // A job for each particle that is shown or ends. Returns how many are shown.
    size_t (*moveParticles)(PixelParticle *particles, size_t count, const ParticleRules &rules,
                            const SurfaceShape &shape, PixelJobs<PixelOffset> &jobs) noexcept;
};
extern const ParticleKernels kAvx2ParticleKernels, kAvx512ParticleKernels;

// Both are null where the processor has no vectors for it.
const ParticleKernels &ChooseParticleKernels() noexcept;

}  // namespace fenlight
