// SPDX-License-Identifier: Zlib
#include "platform/graphics/surface_access.h"

#include <utility>

#include "platform/graphics/context.h"
#include "platform/graphics/screen_context.h"
#include "platform/graphics/surface_painting.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

HDC PublishSurface(int32_t width, int32_t height) {
    Picture picture = MakePicture({.width = width, .height = height});
    return picture.memory != nullptr ? PublishContext(std::move(picture), true) : 0;
}

}  // namespace

HDC ScreenContext() noexcept {
    static std::atomic<HDC> screen{0};
    static constinit std::mutex making;
    HDC context = screen.load(std::memory_order_acquire);
    if (context != 0) return context;
    const std::lock_guard guard(making);
    context = screen.load(std::memory_order_relaxed);
    if (context == 0) {
        context = PublishSurface(kScreenWidth, kScreenHeight);
        screen.store(context, std::memory_order_release);
    }
    return context;
}

HDC CreateSurfaceContext(int32_t width, int32_t height) noexcept {
    PassSuspendGate();
    return OperationFails(Operation::Context) ? 0 : PublishSurface(width, height);
}

bool DeleteSurfaceContext(HDC context) noexcept {
    PassSuspendGate();
    return context != ScreenContext() && EndContext(context, true);
}

uint32_t SurfaceChanges(HDC handle) noexcept {
    const Context *context = FindContext(handle);
    return context != nullptr
               ? context->surface.load(std::memory_order_acquire)->changes.load(std::memory_order_relaxed)
               : 0;
}

SurfaceGrip LockSurface(HDC handle) noexcept {
    PassSuspendGate();
    LockedContext context(handle);
    if (!context) return {};
    const PixelView view = context.View();
    return {context.Release(), view};
}

void UnlockSurface(Bitmap &bitmap, bool hasChanged) noexcept {
    if (hasChanged) bitmap.CountChange();
    bitmap.lock.Unlock();
}

SurfacePairGrip LockSurfaces(HDC target, HDC source) noexcept {
    PassSuspendGate();
    LockedPair pair(target, source);
    if (pair) {
        const PixelView targetView = pair.TargetView(), sourceView = pair.SourceView();
        const auto [targetSurface, sourceSurface] = pair.Release();
        return {{targetSurface, targetView}, {sourceSurface, sourceView}};
    }
    LockedContext context(target);
    if (!context) return {};
    const PixelView view = context.View();
    return {{context.Release(), view}, {}};
}

void UnlockSurfaces(const SurfacePairGrip &grip, bool hasTargetChanged) noexcept {
    Bitmap *target = grip.target.bitmap, *source = grip.source.bitmap;
    if (target == nullptr) return;
    if (hasTargetChanged) target->CountChange();
    UnlockBoth(target, source != nullptr ? source : target);
}

COLORREF ReadSurfacePixel(const PixelView &view, int32_t x, int32_t y) noexcept {
    return ReadPixel(view, x, y);
}

void WriteSurfacePixel(const PixelView &view, int32_t x, int32_t y, COLORREF colour) noexcept {
    WritePixel(view, x, y, colour);
}

void PaintOnSurface(const PixelView &surface, int32_t x, int32_t y, const PixelView &pixels) noexcept {
    BlitBlock(surface, &pixels, {x, y, pixels.width, pixels.height, 0, 0}, SRCCOPY, TransferColours());
}

bool DrawPixels(HDC handle, int32_t x, int32_t y, const PixelView &pixels) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    if (!context) return false;
    TransferColours colours;
    colours.targetText = context->text;
    colours.targetBackground = context->background;
    colours.sourceBackground = context->background;
    context.Surface().CountChange();
    return BlitBlock(context.View(), &pixels, {x, y, pixels.width, pixels.height, 0, 0}, SRCCOPY, colours);
}

bool FetchPixels(HDC handle, const PixelView &pixels) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    if (!context) return false;
    const PixelView &picture = context.View();
    const Block whole{0, 0, pixels.width, pixels.height, 0, 0};
    if (picture.width < pixels.width || picture.height < pixels.height)
        BlitBlock(pixels, nullptr, whole, BLACKNESS, TransferColours());
    return BlitBlock(pixels, &picture, whole, SRCCOPY, TransferColours());
}

}  // namespace fenlight::platform
