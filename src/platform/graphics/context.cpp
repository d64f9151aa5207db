// SPDX-License-Identifier: Zlib
#include "platform/graphics/context.h"

#include <array>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

#include "platform/graphics/drawing_tools.h"
#include "platform/graphics/record_pool.h"
#include "platform/system/handle_table.h"

namespace fenlight::platform {
namespace {

constinit RecordPool<Context> contextPool;  // under the object mutex

// What the handle table owns; the record outlives it.
struct ContextEntry final : HandleObject {
    explicit ContextEntry(Context &context) : record(context) {}
    Context &record;
};

// Records that were found lately, by the low bits of their handles: saves the two atomic additions of a pin.
// An entry may be out of date, for records are never returned; the record's own handle tells.
constexpr size_t kCacheEntries = 4096;
constinit std::array<std::atomic<Context *>, kCacheEntries> recentContexts{};

std::atomic<Context *> &CacheEntryOf(HDC handle) { return recentContexts[handle >> 1 & (kCacheEntries - 1)]; }

Context *FindInTable(HDC handle) {
    const Pinned<ContextEntry, HandleKind::Context> entry(handle);
    if (!entry) return nullptr;
    CacheEntryOf(handle).store(&entry->record, std::memory_order_release);
    return &entry->record;
}

PixelView OnePixelView(Context &context) {
    std::memset(context.ownPixel, 0, sizeof(context.ownPixel));
    PixelView view;
    view.topRow = context.ownPixel;
    view.pitch = sizeof(context.ownPixel);
    view.width = 1;
    view.height = 1;
    view.format = PixelFormat::Mono;
    return view;
}

// With the object mutex held.
void SetDefaults(Context &context, HDC handle, Picture picture, bool isFixed) {
    context.own.lock.Lock();
    context.own.picture = std::move(picture);
    if (context.own.picture.memory == nullptr) context.own.picture.view = OnePixelView(context);
    context.background = 0xFFFFFF;
    context.text = 0;
    context.penColour = 0;
    context.brushColour = 0xFFFFFF;
    context.stretchMode = BLACKONWHITE;
    context.position = {0, 0};
    context.handle.store(handle, std::memory_order_relaxed);
    context.own.lock.Unlock();
    context.isFixed = isFixed;
    context.pen = Stock().pen;
    context.brush = Stock().brush;
    CountSelection(HandleKind::Pen, context.pen, 1);
    CountSelection(HandleKind::Brush, context.brush, 1);
}

// With the object mutex held: nothing finds the context after this, and nobody works on it any more.
Picture CloseContext(Context &context) {
    Bitmap *surface = context.surface.load(std::memory_order_relaxed);
    LockBoth(surface, &context.own);
    context.handle.store(0, std::memory_order_relaxed);
    context.surface.store(&context.own, std::memory_order_release);
    Picture picture = std::exchange(context.own.picture, Picture());
    UnlockBoth(surface, &context.own);
    surface->owner = nullptr;
    return picture;
}

}  // namespace

Context::Context() noexcept { surface.store(&own, std::memory_order_relaxed); }

Context *FindContext(HDC handle) noexcept {
    Context *context = CacheEntryOf(handle).load(std::memory_order_acquire);
    if (context != nullptr && handle != 0 && context->handle.load(std::memory_order_relaxed) == handle)
        return context;
    return FindInTable(handle);
}

HDC PublishContext(Picture picture, bool isFixed) noexcept {
    Stock();  // takes the object mutex when it makes them
    const std::lock_guard guard(ObjectMutex());
    Context *context = contextPool.Take();
    if (context == nullptr) return 0;
    auto *entry = new (std::nothrow) ContextEntry(*context);
    const HDC handle = entry != nullptr ? InsertHandle(HandleKind::Context, entry) : 0;
    if (handle == 0) {
        contextPool.GiveBack(*context);
        return 0;
    }
    SetDefaults(*context, handle, std::move(picture), isFixed);
    return handle;
}

bool EndContext(HDC handle, bool isFixed) noexcept {
    Picture picture;  // ends behind the mutex
    const std::lock_guard guard(ObjectMutex());
    Context *context = FindContext(handle);
    if (context == nullptr || context->isFixed != isFixed) return false;
    picture = CloseContext(*context);
    CountSelection(HandleKind::Pen, context->pen, -1);
    CountSelection(HandleKind::Brush, context->brush, -1);
    RemoveHandle(HandleKind::Context, handle);
    contextPool.GiveBack(*context);
    return true;
}

void LockBoth(Bitmap *one, Bitmap *other) noexcept {
    if (std::less<>()(other, one)) std::swap(one, other);
    one->lock.Lock();
    if (other != one) other->lock.Lock();
}

void UnlockBoth(Bitmap *one, Bitmap *other) noexcept {
    one->lock.Unlock();
    if (other != one) other->lock.Unlock();
}

LockedPair::LockedPair(HDC target, HDC source) noexcept
    : target_(FindContext(target)), source_(FindContext(source)) {
    while (target_ != nullptr && source_ != nullptr) {
        Bitmap *targetSurface = target_->surface.load(std::memory_order_acquire);
        Bitmap *sourceSurface = source_->surface.load(std::memory_order_acquire);
        LockBoth(targetSurface, sourceSurface);
        if (LockedContext::Holds(*target_, target, targetSurface) &&
            LockedContext::Holds(*source_, source, sourceSurface)) {
            targetSurface_ = targetSurface;
            sourceSurface_ = sourceSurface;
            return;
        }
        UnlockBoth(targetSurface, sourceSurface);
        if (target_->handle.load(std::memory_order_relaxed) != target ||
            source_->handle.load(std::memory_order_relaxed) != source)
            return;
    }
}

}  // namespace fenlight::platform
