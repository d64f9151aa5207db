// SPDX-License-Identifier: Zlib
// The second half of a frame: the pixels that particles give back and light, one by one in the order of the
// records: with the same outcome as single GetPixel and SetPixel calls, but with one lock of both surfaces
// for a thousand particles.
//
// The two are locked in the order of transfers, so no order of contexts can make two threads wait for each
// other, and others get their turn between two locks. A thread that is stopped comes to rest there too.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "fenlight/platform/graphics.h"
#include "particles/particle_steps.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {

struct ParticleSurfaces {
    HDC dest = 0;
    HDC background = 0;          // may be the same context, or a dead one: then CLR_INVALID lies behind
    bool isBlackBehind = false;  // black lies behind; `background` is not used

    // What lies behind places that are not on the background.
    COLORREF Outside() const noexcept { return isBlackBehind ? 0 : CLR_INVALID; }
};

// Two surfaces of 32 bits and one shape, what particles meet nearly always: one offset leads to both pixels.
// The background may also be an empty view.
class WordPixels {
  public:
    using Place = PixelOffset;

    WordPixels(const platform::SurfacePairAccess &surfaces, COLORREF outside) noexcept
        : topRow_(surfaces.TargetView().topRow),
          background_(surfaces.SourceView().topRow),
          shape_{static_cast<uint32_t>(surfaces.TargetView().pitch),
                 static_cast<uint32_t>(surfaces.TargetView().width),
                 static_cast<uint32_t>(surfaces.TargetView().height)},
          outside_(platform::SwapRedBlue(outside)) {}

    const SurfaceShape &Shape() const noexcept { return shape_; }
    Place PlaceOf(int32_t x, int32_t y) const noexcept {
        const auto column = static_cast<uint32_t>(x), row = static_cast<uint32_t>(y);
        const bool isOnSurface = column < shape_.width && row < shape_.height;
        return isOnSurface ? static_cast<Place>(row * shape_.pitch + column * 4) : kNoOffset;
    }
    static uint32_t JobColour(COLORREF colour) noexcept { return platform::SwapRedBlue(colour); }

    bool IsBlackBehind(Place place) const noexcept { return WordBehind(place) == 0; }
    // Nothing is done off the surfaces.
    void GiveBack(Place place) noexcept { Light(place, WordBehind(place)); }
    void Light(Place place, uint32_t colour) noexcept {
        if (place != kNoOffset) *reinterpret_cast<uint32_t *>(topRow_ + place) = colour;
    }
    // A pixel that is lit and gives back at once only gives back, where that cannot be seen by what comes
    // behind it. A branch for it in the middle of the jobs would be foretold wrongly each time.
    void SettleLasts(PixelJobs<Place> &jobs) const noexcept {
        if (background_ == topRow_) return;
        for (const uint32_t last : std::span(jobs.last.numbers, jobs.last.count))
            jobs.colours[last] = WordBehind(jobs.drawn[last]);
        jobs.last.count = 0;
    }

  private:
    // Without the unused byte.
    uint32_t WordBehind(Place place) const noexcept {
        if (background_ == nullptr) return outside_;
        const bool isOnSurface = place != kNoOffset;
        return (isOnSurface ? *reinterpret_cast<const uint32_t *>(background_ + place) : outside_) & 0xFFFFFF;
    }

    uint8_t *topRow_;
    const uint8_t *background_;
    SurfaceShape shape_;
    uint32_t outside_;
};

// The same for all other pairs of formats.
class AnyPixels {
  public:
    struct Place {
        int32_t x, y;
    };

    AnyPixels(const platform::SurfacePairAccess &surfaces, COLORREF outside) noexcept
        : dest_(surfaces.TargetView()), background_(surfaces.SourceView()), outside_(outside) {}

    static Place PlaceOf(int32_t x, int32_t y) noexcept { return {x, y}; }
    static uint32_t JobColour(COLORREF colour) noexcept { return colour; }

    bool IsBlackBehind(Place place) const noexcept { return ColourBehind(place) == 0; }
    void GiveBack(Place place) const noexcept { Light(place, ColourBehind(place)); }
    void Light(Place place, COLORREF colour) const noexcept {
        if (!Contains(dest_, place)) return;
        if (dest_.format == platform::PixelFormat::Bgrx32)
            *WordAt(dest_, place) = platform::SwapRedBlue(colour);
        else
            platform::WriteSurfacePixel(dest_, place.x, place.y, colour);
    }
    static void SettleLasts(const PixelJobs<Place> &) noexcept {}

  private:
    static bool Contains(const platform::PixelView &view, Place place) noexcept {
        return place.x >= 0 && place.y >= 0 && place.x < view.width && place.y < view.height;
    }
    static uint32_t *WordAt(const platform::PixelView &view, Place place) noexcept {
        return reinterpret_cast<uint32_t *>(view.Row(place.y)) + place.x;
    }
    COLORREF ColourBehind(Place place) const noexcept {
        if (!Contains(background_, place)) return outside_;
        if (background_.format == platform::PixelFormat::Bgrx32)
            return platform::SwapRedBlue(*WordAt(background_, place));
        return platform::ReadSurfacePixel(background_, place.x, place.y);
    }

    const platform::PixelView dest_, background_;
    const COLORREF outside_;
};

// Can WordPixels stand for them?
inline bool AreOfOneShape(const platform::PixelView &dest, const platform::PixelView &background) noexcept {
    using platform::PixelFormat;
    if (dest.format != PixelFormat::Bgrx32) return false;
    return background.topRow == nullptr ||
           (background.format == PixelFormat::Bgrx32 && background.pitch == dest.pitch &&
            background.width == dest.width && background.height == dest.height);
}

// Does one job after the other.
//
// Where pixels show on black only, what lies behind is looked at after the old pixel has got it back: if both
// are one context with a palette, the nearest colour may be another one than was read.
template <bool isOnBlackOnly, class Pixels>
void DoJobs(const PixelJobs<typename Pixels::Place> &jobs, Pixels &pixels) noexcept {
    size_t i = 0;
    const auto doUntil = [&](size_t end) {
        for (; i < end; ++i) {
            pixels.GiveBack(jobs.erased[i]);
            if (!isOnBlackOnly || pixels.IsBlackBehind(jobs.erased[i]))
                pixels.Light(jobs.drawn[i], jobs.colours[i]);
        }
    };
    for (const uint32_t last : std::span(jobs.last.numbers, jobs.last.count)) {
        doUntil(last + 1);
        pixels.GiveBack(jobs.drawn[last]);
    }
    doUntil(jobs.count);
}

template <bool isOnBlackOnly, class Pixels, class Record, class Move>
void WorkOnPart(Pixels pixels, std::span<Record> part, const Move &move) {
    PixelJobs<typename Pixels::Place> jobs;
    move(part, pixels, jobs);
    pixels.SettleLasts(jobs);
    DoJobs<isOnBlackOnly>(jobs, pixels);
}

// Calls `move(part, pixels, jobs)` for one part of the records after the other, in order, which adds their
// jobs, and does those in order, with the surfaces locked for each part.
template <bool isOnBlackOnly = false, class Record, class Move>
void WorkOnPixels(const ParticleSurfaces &surfaces, std::span<Record> records, const Move &move) {
    while (!records.empty()) {
        const std::span<Record> part = records.first(std::min(records.size(), kRecordsAtATime));
        platform::SurfacePairAccess pair(surfaces.dest, surfaces.isBlackBehind ? 0 : surfaces.background);
        if (AreOfOneShape(pair.TargetView(), pair.SourceView()))
            WorkOnPart<isOnBlackOnly>(WordPixels(pair, surfaces.Outside()), part, move);
        else
            WorkOnPart<isOnBlackOnly>(AnyPixels(pair, surfaces.Outside()), part, move);
        pair.MarkTargetChanged();
        records = records.subspan(part.size());
    }
}

}  // namespace fenlight
