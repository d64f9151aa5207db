// SPDX-License-Identifier: Zlib
// Device contexts, and how an operation gets hold of one or two of them.
//
// A bitmap is in one context at most, so the lock of a context's surface guards the context's drawing state
// too: an operation takes one lock per context. It finds the record, locks the surface, and then asks whether
// handle and surface are still what it found; who ends a context or changes its surface holds that lock.
#pragma once

#include <atomic>
#include <utility>

#include "platform/graphics/bitmap.h"
#include "platform/raster/raster.h"

namespace fenlight::platform {

struct Context {
    Context() noexcept;

    std::atomic<HDC> handle{0};              // 0: not alive
    std::atomic<Bitmap *> surface{nullptr};  // never null after construction

    // Under the lock of the surface.
    COLORREF background = 0xFFFFFF;
    COLORREF text = 0;
    COLORREF penColour = 0;
    COLORREF brushColour = 0xFFFFFF;
    int32_t stretchMode = BLACKONWHITE;
    POINT position{0, 0};

    // Under the object mutex.
    bool isFixed = false;  // a window's or the screen's: keeps its surface and is not deleted by DeleteDC
    HPEN pen = 0;
    HBRUSH brush = 0;
    Context *nextFree = nullptr;

    // The surface while nothing is selected: one monochrome pixel, or the picture of a window.
    Bitmap own;
    alignas(64) uint8_t ownPixel[64] = {};
};

// The record behind a live handle, or nullptr. Without a lock it may end at any moment, but never its memory.
Context *FindContext(HDC handle) noexcept;

// Black pen, white brush, white background and so on, on `own` as the surface; `picture` empty means one
// monochrome pixel. 0 where memory or handles ran out.
HDC PublishContext(Picture picture, bool isFixed) noexcept;
// Ends a context of that sort and releases what is selected into it. False for any other handle.
bool EndContext(HDC handle, bool isFixed) noexcept;

// A context with its surface locked, as long as this stands.
class LockedContext {
  public:
    explicit LockedContext(HDC handle) noexcept {
        Context *context = FindContext(handle);
        if (context == nullptr) return;
        for (;;) {
            Bitmap *surface = context->surface.load(std::memory_order_acquire);
            surface->lock.Lock();
            if (Holds(*context, handle, surface)) {
                context_ = context;
                surface_ = surface;
                return;
            }
            surface->lock.Unlock();
            if (context->handle.load(std::memory_order_relaxed) != handle) return;
        }
    }
    LockedContext(const LockedContext &) = delete;
    LockedContext &operator=(const LockedContext &) = delete;
    ~LockedContext() {
        if (surface_ != nullptr) surface_->lock.Unlock();
    }

    explicit operator bool() const noexcept { return context_ != nullptr; }
    Context *operator->() const noexcept { return context_; }
    Context &operator*() const noexcept { return *context_; }
    Bitmap &Surface() const noexcept { return *surface_; }
    const PixelView &View() const noexcept { return surface_->picture.view; }

    // Leaves the surface locked for who unlocks it later.
    Bitmap *Release() noexcept { return std::exchange(surface_, nullptr); }

    // Is this still the context and the surface that were looked up? To be asked with the surface locked.
    static bool Holds(const Context &context, HDC handle, const Bitmap *surface) noexcept {
        return context.handle.load(std::memory_order_relaxed) == handle &&
               context.surface.load(std::memory_order_relaxed) == surface;
    }

  private:
    Context *context_ = nullptr;
    Bitmap *surface_ = nullptr;
};

// Two bitmaps in the fixed order, or one bitmap once.
void LockBoth(Bitmap *one, Bitmap *other) noexcept;
void UnlockBoth(Bitmap *one, Bitmap *other) noexcept;

// Target and source of a transfer, both locked; they may be one context.
class LockedPair {
  public:
    LockedPair(HDC target, HDC source) noexcept;
    LockedPair(const LockedPair &) = delete;
    LockedPair &operator=(const LockedPair &) = delete;
    ~LockedPair() {
        if (targetSurface_ != nullptr) UnlockBoth(targetSurface_, sourceSurface_);
    }

    explicit operator bool() const noexcept { return targetSurface_ != nullptr; }
    const Context &Target() const noexcept { return *target_; }
    const Context &Source() const noexcept { return *source_; }
    const PixelView &TargetView() const noexcept { return targetSurface_->picture.view; }
    const PixelView &SourceView() const noexcept { return sourceSurface_->picture.view; }
    Bitmap &TargetSurface() const noexcept { return *targetSurface_; }

    // Leaves both locked for who unlocks them later.
    std::pair<Bitmap *, Bitmap *> Release() noexcept {
        return {std::exchange(targetSurface_, nullptr), sourceSurface_};
    }

  private:
    Context *target_ = nullptr;
    Context *source_ = nullptr;
    Bitmap *targetSurface_ = nullptr;  // nullptr: not locked
    Bitmap *sourceSurface_ = nullptr;
};

}  // namespace fenlight::platform
