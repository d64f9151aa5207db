// SPDX-License-Identifier: Zlib
// The pixels of a frame of particles. Each particle gives its old pixel back and lights a new one; strokes
// are gathered and drawn a few hundred at a time, with the same outcome as single GetPixel and SetPixel calls
// in the order of the strokes, but with two locks for a batch instead of three for each stroke.
//
// At most one surface is locked at a time, so no order of contexts can make two threads wait for each other,
// and others get their turn between two batches. A thread that is stopped comes to rest there too.
#pragma once

#include <array>
#include <cstdint>

#include "fenlight/platform/graphics.h"

namespace fenlight {

// A place off every context: nothing is read or written there.
inline constexpr int32_t kNowhere = -111;

struct StrokeSurfaces {
    HDC dest = 0;
    HDC background = 0;             // may be the same context, or a dead one: then CLR_INVALID lies behind
    bool isBlackBehind = false;     // black lies behind; `background` is not used
    bool showsOnBlackOnly = false;  // no new pixel where something else than black lies behind the old one
};

class StrokeBatch {
  public:
    // 256: drawing them holds a lock for about a microsecond, and they stay in the first cache.
    static constexpr size_t kCapacity = 256;

    explicit StrokeBatch(const StrokeSurfaces &surfaces) noexcept : surfaces_(surfaces) {
        if (surfaces.isBlackBehind) behind_.fill(0);
    }
    StrokeBatch(const StrokeBatch &) = delete;
    StrokeBatch &operator=(const StrokeBatch &) = delete;

    // The old place gets back what lies behind it; the new one gets the colour.
    void Put(size_t index, int32_t oldX, int32_t oldY, int32_t newX, int32_t newY, COLORREF colour) noexcept {
        old_.x[index] = oldX;
        old_.y[index] = oldY;
        new_.x[index] = newX;
        new_.y[index] = newY;
        colours_[index] = colour;
    }
    // Draws the first `count` strokes. All of them must have been put since the last time.
    void Draw(size_t count) noexcept;

  private:
    template <class Value>
    using Column = std::array<Value, kCapacity>;
    // By columns, for vectors.
    struct Places {
        Column<int32_t> x, y;
    };
    class WordPixels;
    class AnyPixels;

    template <class Work>
    static void WorkOn(HDC context, const Work &work) noexcept;
    void DrawInTurn(size_t count) noexcept;
    void FindBehind(size_t count) noexcept;
    void HideNew(size_t count) noexcept;
    void Paint(size_t count) noexcept;

    const StrokeSurfaces surfaces_;
    Places old_, new_;
    Column<COLORREF> colours_;
    Column<COLORREF> behind_;
};

}  // namespace fenlight
