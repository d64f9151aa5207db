// SPDX-License-Identifier: Zlib
// The pixels of a frame of particles. Each particle takes its old pixel back and lights a new one; strokes
// are gathered and drawn a few hundred at a time, with the same outcome as single GetPixel and SetPixel calls
// in the order of the strokes, but with two locks for a batch instead of three for each stroke.
//
// At most one surface is locked at a time, so no order of contexts can make two threads wait for each other,
// and others get their turn between two batches. A thread that is stopped comes to rest there too.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "fenlight/platform/graphics.h"

namespace fenlight {

// A place off every context: nothing is read or written there.
inline constexpr int32_t kNowhere = -111;

struct Stroke {
    int32_t oldX, oldY;  // gets back what lies behind it
    int32_t newX, newY;
    COLORREF colour;  // of the new pixel
};

struct StrokeSurfaces {
    HDC dest = 0;
    HDC background = 0;             // may be the same context, or a dead one: then CLR_INVALID lies behind
    bool isBlackBehind = false;     // black lies behind; `background` is not used
    bool showsOnBlackOnly = false;  // no new pixel where something else than black lies behind the old one
};

class StrokeBatch {
  public:
    explicit StrokeBatch(const StrokeSurfaces &surfaces) noexcept : surfaces_(surfaces) {}
    StrokeBatch(const StrokeBatch &) = delete;
    StrokeBatch &operator=(const StrokeBatch &) = delete;
    ~StrokeBatch() { Draw(); }

    void Add(const Stroke &stroke) noexcept {
        if (count_ == kCapacity) Draw();
        strokes_[count_++] = stroke;
    }

  private:
    // 256: drawing them holds a lock for about a microsecond, and they stay in the first cache.
    static constexpr size_t kCapacity = 256;
    using Colours = std::array<COLORREF, kCapacity>;

    void Draw() noexcept;
    void DrawInTurn() const noexcept;
    void FindBehind(Colours &behind) const noexcept;
    void Paint(const Colours &behind) const noexcept;
    std::span<const Stroke> Strokes() const noexcept { return {strokes_.data(), count_}; }

    const StrokeSurfaces surfaces_;
    size_t count_ = 0;
    std::array<Stroke, kCapacity> strokes_;  // only the first count_ mean anything
};

}  // namespace fenlight
