// SPDX-License-Identifier: Zlib
// Contexts as callers see them: birth and end, selection, drawing state.
#include <utility>

#include "platform/graphics/context.h"
#include "platform/graphics/drawing_tools.h"
#include "platform/graphics/screen_context.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

constexpr int32_t kDotsPerInch = 96;
constexpr int32_t kColourBits = 24;  // eight a channel; the fourth byte of a pixel has none

// A bitmap other than `context`'s own picture goes by its handle, the own one by that of the stock bitmap.
HBITMAP HandleOfSurface(const Context &context, const Bitmap &surface) {
    return &surface == &context.own ? Stock().bitmap : surface.handle.load(std::memory_order_relaxed);
}

// With the object mutex held. Both surfaces stay locked while the context changes from one to the other,
// because each guards the context's drawing state.
void ChangeSurface(Context &context, Bitmap *from, Bitmap *to) {
    LockBoth(from, to);
    context.surface.store(to, std::memory_order_release);
    UnlockBoth(from, to);
    from->owner = nullptr;
    if (to != &context.own) to->owner = &context;
}

HGDIOBJ SelectBitmap(HDC handle, HBITMAP object) {
    const HBITMAP stockBitmap = Stock().bitmap;
    const std::lock_guard guard(ObjectMutex());
    Context *context = FindContext(handle);
    if (context == nullptr || context->isFixed) return 0;
    Bitmap *bitmap = object == stockBitmap ? &context->own : FindBitmap(object);
    if (bitmap == nullptr || (bitmap->owner != nullptr && bitmap->owner != context)) return 0;
    Bitmap *surface = context->surface.load(std::memory_order_relaxed);
    const HBITMAP before = HandleOfSurface(*context, *surface);
    if (bitmap != surface) ChangeSurface(*context, surface, bitmap);
    return before;
}

template <HandleKind Kind>
HGDIOBJ SelectTool(HDC handle, HGDIOBJ object, HGDIOBJ Context::*selected, COLORREF Context::*colour) {
    const std::lock_guard guard(ObjectMutex());
    const Pinned<DrawingTool, Kind> tool(object);
    const LockedContext context(handle);
    if (!tool || !context) return 0;
    CountSelection(Kind, (*context).*selected, -1);
    CountSelection(Kind, object, 1);
    (*context).*colour = tool->colour;
    return std::exchange((*context).*selected, object);
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HDC CreateCompatibleDC(HDC context) noexcept {
    PassSuspendGate();
    if (context != 0 && FindContext(context) == nullptr) return 0;
    return OperationFails(Operation::Context) ? 0 : PublishContext(Picture(), false);
}

BOOL DeleteDC(HDC context) noexcept {
    PassSuspendGate();
    return EndContext(context, false);
}

HGDIOBJ SelectObject(HDC context, HGDIOBJ object) noexcept {
    PassSuspendGate();
    switch (KindOfHandle(object)) {
        case HandleKind::Bitmap:
            return SelectBitmap(context, object);
        case HandleKind::Pen:
            return SelectTool<HandleKind::Pen>(context, object, &Context::pen, &Context::penColour);
        case HandleKind::Brush:
            return SelectTool<HandleKind::Brush>(context, object, &Context::brush, &Context::brushColour);
        default:
            return 0;
    }
}

BOOL DeleteObject(HGDIOBJ object) noexcept {
    PassSuspendGate();
    const HandleKind kind = KindOfHandle(object);
    switch (kind) {
        case HandleKind::Bitmap:
            return object == Stock().bitmap || DeleteBitmap(object);
        case HandleKind::Pen:
        case HandleKind::Brush:
            return DeleteTool(kind, object);
        default:
            return 0;
    }
}

COLORREF SetBkColor(HDC handle, COLORREF colour) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    return context ? std::exchange(context->background, colour & 0xFFFFFF) : CLR_INVALID;
}

COLORREF SetTextColor(HDC handle, COLORREF colour) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    return context ? std::exchange(context->text, colour & 0xFFFFFF) : CLR_INVALID;
}

int32_t SetStretchBltMode(HDC handle, int32_t mode) noexcept {
    PassSuspendGate();
    if (mode != BLACKONWHITE && mode != COLORONCOLOR) return 0;
    const LockedContext context(handle);
    return context ? std::exchange(context->stretchMode, mode) : 0;
}

int32_t GetDeviceCaps(HDC context, int32_t index) noexcept {
    PassSuspendGate();
    if (FindContext(context) == nullptr) return 0;
    if (index == COLORRES) return kColourBits;
    return index == LOGPIXELSX || index == LOGPIXELSY ? kDotsPerInch : 0;
}

BOOL GdiFlush() noexcept {
    PassSuspendGate();
    return 1;  // nothing is ever batched
}
