// SPDX-License-Identifier: Zlib
// The pixels that particles give back and light, one by one in the order of the records: with the same
// outcome as single GetPixel and SetPixel calls, but with one lock of both surfaces for a few hundred
// particles.
//
// The two are locked in the order of transfers, so no order of contexts can make two threads wait for each
// other, and others get their turn between two locks. A thread that is stopped comes to rest there too.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {

// A place off every context: nothing is read or written there.
inline constexpr int32_t kNowhere = -111;

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
    WordPixels(const platform::SurfacePairAccess &surfaces, COLORREF outside) noexcept
        : topRow_(surfaces.TargetView().topRow),
          background_(surfaces.SourceView().topRow),
          pitch_(static_cast<uint32_t>(surfaces.TargetView().pitch)),
          width_(static_cast<uint32_t>(surfaces.TargetView().width)),
          height_(static_cast<uint32_t>(surfaces.TargetView().height)),
          outside_(platform::SwapRedBlue(outside)) {}

    bool IsBlackBehind(int32_t x, int32_t y) const noexcept {
        return (Contains(x, y) ? WordBehind(Offset(x, y)) : outside_) == 0;
    }
    // Both are false off the surfaces.
    bool GiveBack(int32_t x, int32_t y) const noexcept {
        if (!Contains(x, y)) return false;
        const ptrdiff_t offset = Offset(x, y);
        *reinterpret_cast<uint32_t *>(topRow_ + offset) = WordBehind(offset);
        return true;
    }
    bool Light(int32_t x, int32_t y, COLORREF colour) const noexcept {
        if (!Contains(x, y)) return false;
        *reinterpret_cast<uint32_t *>(topRow_ + Offset(x, y)) = platform::SwapRedBlue(colour);
        return true;
    }
    // Has the processor fetch what lies behind a place soon; any place will do.
    void Fetch(int32_t x, int32_t y) const noexcept {
        __builtin_prefetch(reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(background_) +
                                                          static_cast<uintptr_t>(Offset(x, y))));
    }

  private:
    bool Contains(int32_t x, int32_t y) const noexcept {
        return static_cast<uint32_t>(x) < width_ && static_cast<uint32_t>(y) < height_;
    }
    // A bitmap has less than 2^31 bytes.
    ptrdiff_t Offset(int32_t x, int32_t y) const noexcept {
        return static_cast<int32_t>(static_cast<uint32_t>(y) * pitch_ + static_cast<uint32_t>(x) * 4);
    }
    // Without the unused byte.
    uint32_t WordBehind(ptrdiff_t offset) const noexcept {
        if (background_ == nullptr) return outside_;
        return *reinterpret_cast<const uint32_t *>(background_ + offset) & 0xFFFFFF;
    }

    uint8_t *topRow_;
    const uint8_t *background_;
    uint32_t pitch_, width_, height_, outside_;
};

// The same for all other pairs of formats.
class AnyPixels {
  public:
    AnyPixels(const platform::SurfacePairAccess &surfaces, COLORREF outside) noexcept
        : dest_(surfaces.TargetView()), background_(surfaces.SourceView()), outside_(outside) {}

    bool IsBlackBehind(int32_t x, int32_t y) const noexcept { return ColourBehind(x, y) == 0; }
    bool GiveBack(int32_t x, int32_t y) const noexcept { return Light(x, y, ColourBehind(x, y)); }
    bool Light(int32_t x, int32_t y, COLORREF colour) const noexcept {
        if (!Contains(dest_, x, y)) return false;
        if (dest_.format == platform::PixelFormat::Bgrx32)
            *WordAt(dest_, x, y) = platform::SwapRedBlue(colour);
        else
            platform::WriteSurfacePixel(dest_, x, y, colour);
        return true;
    }
    void Fetch(int32_t, int32_t) const noexcept {}

  private:
    static bool Contains(const platform::PixelView &view, int32_t x, int32_t y) noexcept {
        return x >= 0 && y >= 0 && x < view.width && y < view.height;
    }
    static uint32_t *WordAt(const platform::PixelView &view, int32_t x, int32_t y) noexcept {
        return reinterpret_cast<uint32_t *>(view.Row(y)) + x;
    }
    COLORREF ColourBehind(int32_t x, int32_t y) const noexcept {
        if (!Contains(background_, x, y)) return outside_;
        if (background_.format == platform::PixelFormat::Bgrx32)
            return platform::SwapRedBlue(*WordAt(background_, x, y));
        return platform::ReadSurfacePixel(background_, x, y);
    }

    const platform::PixelView dest_, background_;
    const COLORREF outside_;
};

// Records under one lock, which is held for about a microsecond.
inline constexpr size_t kRecordsPerLock = 256;

// Can WordPixels stand for them?
inline bool AreOfOneShape(const platform::PixelView &dest, const platform::PixelView &background) noexcept {
    using platform::PixelFormat;
    if (dest.format != PixelFormat::Bgrx32) return false;
    return background.topRow == nullptr ||
           (background.format == PixelFormat::Bgrx32 && background.pitch == dest.pitch &&
            background.width == dest.width && background.height == dest.height);
}

// Has the processor fetch what lies behind a record some places ahead of `index`, or behind the last one.
template <class Record, class Pixels>
void FetchPixelAhead(std::span<Record> records, size_t index, const Pixels &pixels) noexcept {
    constexpr size_t kPlaces = 16;
    const Record &later = records[std::min(index + kPlaces, records.size() - 1)];
    pixels.Fetch(later.prevX, later.prevY);
}

// Calls `work(part, pixels)` for one part of the records after the other, in order, with the surfaces locked.
// It returns whether it has written a pixel.
template <class Record, class Work>
void WorkOnPixels(const ParticleSurfaces &surfaces, std::span<Record> records, const Work &work) {
    for (; !records.empty(); records = records.subspan(std::min(records.size(), kRecordsPerLock))) {
        const std::span<Record> part = records.first(std::min(records.size(), kRecordsPerLock));
        platform::SurfacePairAccess pair(surfaces.dest, surfaces.isBlackBehind ? 0 : surfaces.background);
        if (AreOfOneShape(pair.TargetView(), pair.SourceView())
                ? work(part, WordPixels(pair, surfaces.Outside()))
                : work(part, AnyPixels(pair, surfaces.Outside())))
            pair.MarkTargetChanged();
    }
}

}  // namespace fenlight
