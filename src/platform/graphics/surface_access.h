// SPDX-License-Identifier: Zlib
// The way to a context's pixels for the rest of the house: contexts with a picture of their own (windows), a
// counter of the changes to a picture, and access to many pixels under one lock.
//
// All of it may be called on any thread, and from the library as well as from the platform layer. A surface
// is the bitmap that is selected into a context.
#pragma once

#include <cstdint>

#include "fenlight/platform/graphics.h"
#include "platform/raster/pixel_view.h"

namespace fenlight::platform {

class Bitmap;

// A context with a black 32-bit picture of its own, as a window has one. Bitmaps cannot be selected into it
// and DeleteDC refuses it; pens, brushes and everything that draws work. 0 for sizes below 1 or too large,
// and where memory ran out.
FENLIGHT_API HDC CreateSurfaceContext(int32_t width, int32_t height) noexcept;
// Ends such a context, and only such a one. Drawing that is under way on another thread ends first.
FENLIGHT_API bool DeleteSurfaceContext(HDC context) noexcept;

// Grows with each operation that writes to the context's surface, and wraps. Takes no lock. 0 for a dead
// context. Writes through the address of a DIB section are not seen.
FENLIGHT_API uint32_t SurfaceChanges(HDC context) noexcept;

// What a lock of a surface gives. Kept by SurfaceAccess.
struct SurfaceGrip {
    Bitmap *bitmap = nullptr;  // nullptr: the context is not alive
    PixelView view;
};
FENLIGHT_API SurfaceGrip LockSurface(HDC context) noexcept;
FENLIGHT_API void UnlockSurface(Bitmap &bitmap, bool hasChanged) noexcept;
// The same for two contexts at once. Kept by SurfacePairAccess.
struct SurfacePairGrip {
    SurfaceGrip target, source;
};
FENLIGHT_API SurfacePairGrip LockSurfaces(HDC target, HDC source) noexcept;
FENLIGHT_API void UnlockSurfaces(const SurfacePairGrip &grip, bool hasTargetChanged) noexcept;
FENLIGHT_API COLORREF ReadSurfacePixel(const PixelView &view, int32_t x, int32_t y) noexcept;
FENLIGHT_API void WriteSurfacePixel(const PixelView &view, int32_t x, int32_t y, COLORREF colour) noexcept;

// Pictures between a context and memory of the caller's, in one transfer; rows may have any pitch.
//
// Draws `pixels` with its top left corner at (x, y), clipped; converts as SetDIBitsToDevice does. False for a
// dead context.
FENLIGHT_API bool DrawPixels(HDC context, int32_t x, int32_t y, const PixelView &pixels) noexcept;
// Fills `pixels` from the top left corner of the context's picture, in whatever format that is; monochrome
// comes out black and white, what a smaller picture does not have as 0. False with nothing written for a dead
// context.
FENLIGHT_API bool FetchPixels(HDC context, const PixelView &pixels) noexcept;

// Holds the lock of a context's surface as long as it stands. Meanwhile the same thread must not call an
// operation on that context, take a second access, sleep or wait: it would wait for itself, or make all
// others wait. Keep it for a frame's worth of pixels, not longer.
class SurfaceAccess {
  public:
    // Empty for a dead context.
    explicit SurfaceAccess(HDC context) noexcept : grip_(LockSurface(context)) {}
    SurfaceAccess(const SurfaceAccess &) = delete;
    SurfaceAccess &operator=(const SurfaceAccess &) = delete;
    ~SurfaceAccess() {
        if (grip_.bitmap != nullptr) UnlockSurface(*grip_.bitmap, hasChanged_);
    }

    explicit operator bool() const noexcept { return grip_.bitmap != nullptr; }
    const PixelView &View() const noexcept { return grip_.view; }
    // To be called by who writes through View().
    void MarkChanged() noexcept { hasChanged_ = true; }

    bool Contains(int32_t x, int32_t y) const noexcept {
        return x >= 0 && y >= 0 && x < grip_.view.width && y < grip_.view.height;
    }
    // As the published GetPixel and SetPixel: CLR_INVALID outside, and nothing written there.
    COLORREF GetPixel(int32_t x, int32_t y) const noexcept {
        if (!Contains(x, y)) return CLR_INVALID;
        if (grip_.view.format != PixelFormat::Bgrx32) return ReadSurfacePixel(grip_.view, x, y);
        return SwapRedBlue(*Word(x, y));
    }
    void SetPixel(int32_t x, int32_t y, COLORREF colour) noexcept {
        if (!Contains(x, y)) return;
        hasChanged_ = true;
        if (grip_.view.format != PixelFormat::Bgrx32) return WriteSurfacePixel(grip_.view, x, y, colour);
        *Word(x, y) = SwapRedBlue(colour);
    }

  private:
    uint32_t *Word(int32_t x, int32_t y) const noexcept {
        return reinterpret_cast<uint32_t *>(grip_.view.Row(y)) + x;
    }

    SurfaceGrip grip_;
    bool hasChanged_ = false;
};

// Holds the locks of two contexts' surfaces, taken in the order of transfers; both may be one context. The
// rules of SurfaceAccess hold.
class SurfacePairAccess {
  public:
    // A dead context has an empty view; the source also beside a dead target.
    SurfacePairAccess(HDC target, HDC source) noexcept : grip_(LockSurfaces(target, source)) {}
    SurfacePairAccess(const SurfacePairAccess &) = delete;
    SurfacePairAccess &operator=(const SurfacePairAccess &) = delete;
    ~SurfacePairAccess() { UnlockSurfaces(grip_, hasTargetChanged_); }

    const PixelView &TargetView() const noexcept { return grip_.target.view; }
    const PixelView &SourceView() const noexcept { return grip_.source.view; }
    // To be called by who writes through TargetView().
    void MarkTargetChanged() noexcept { hasTargetChanged_ = true; }

  private:
    const SurfacePairGrip grip_;
    bool hasTargetChanged_ = false;
};

}  // namespace fenlight::platform
