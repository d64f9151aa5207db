// SPDX-License-Identifier: Zlib
// Single pixels, filled rectangles and lines on a context.
#include <algorithm>

#include "platform/graphics/context.h"
#include "platform/graphics/drawing_tools.h"
#include "platform/graphics/lines.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

bool Contains(const PixelView &view, int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && x < view.width && y < view.height;
}

// The one format that single pixels meet all the time goes without the detour through the formats.
uint32_t *WordAt(const PixelView &view, int32_t x, int32_t y) {
    return reinterpret_cast<uint32_t *>(view.Row(y)) + x;
}

COLORREF StorePixel(const PixelView &view, int32_t x, int32_t y, COLORREF colour) {
    if (view.format == PixelFormat::Bgrx32) {
        *WordAt(view, x, y) = SwapRedBlue(colour);
        return colour & 0xFFFFFF;
    }
    WritePixel(view, x, y, colour);
    return ReadPixel(view, x, y);
}

void FillRectangle(const PixelView &view, const RECT &rectangle, COLORREF colour) {
    // Clipped here, so that widths of more than 2^31 need no thought further down.
    const int32_t left = std::max(rectangle.left, 0);
    const int32_t top = std::max(rectangle.top, 0);
    const int32_t right = std::min(rectangle.right, view.width);
    const int32_t bottom = std::min(rectangle.bottom, view.height);
    if (left >= right || top >= bottom) return;
    TransferColours colours;
    colours.brush = colour;
    BlitBlock(view, nullptr, {left, top, right - left, bottom - top, 0, 0}, PATCOPY, colours);
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

COLORREF GetPixel(HDC handle, int32_t x, int32_t y) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    if (!context) return CLR_INVALID;
    const PixelView &view = context.View();
    if (!Contains(view, x, y)) return CLR_INVALID;
    return view.format == PixelFormat::Bgrx32 ? SwapRedBlue(*WordAt(view, x, y)) : ReadPixel(view, x, y);
}

COLORREF SetPixel(HDC handle, int32_t x, int32_t y, COLORREF colour) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    if (!context || !Contains(context.View(), x, y)) return CLR_INVALID;
    context.Surface().CountChange();
    return StorePixel(context.View(), x, y, colour);
}

int32_t FillRect(HDC handle, const RECT *rectangle, HBRUSH brushHandle) noexcept {
    PassSuspendGate();
    if (rectangle == nullptr) return 0;
    const PinnedBrush brush(brushHandle);
    const LockedContext context(handle);
    if (!brush || !context) return 0;
    FillRectangle(context.View(), *rectangle, brush->colour);
    context.Surface().CountChange();
    return 1;
}

BOOL MoveToEx(HDC handle, int32_t x, int32_t y, POINT *old) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    if (!context) return 0;
    if (old != nullptr) *old = context->position;
    context->position = {x, y};
    return 1;
}

BOOL LineTo(HDC handle, int32_t x, int32_t y) noexcept {
    PassSuspendGate();
    const LockedContext context(handle);
    if (!context) return 0;
    DrawLine(context.View(), context->position, {x, y}, context->penColour);
    context->position = {x, y};
    context.Surface().CountChange();
    return 1;
}

BOOL PolyBezier(HDC handle, const POINT *points, DWORD count) noexcept {
    PassSuspendGate();
    if (points == nullptr || count < 4 || count % 3 != 1) return 0;
    const LockedContext context(handle);
    if (!context) return 0;
    for (DWORD first = 0; first + 3 < count; first += 3)
        DrawBezier(context.View(), std::span<const POINT, 4>(points + first, 4), context->penColour);
    context.Surface().CountChange();
    return 1;
}

BOOL PtInRect(const RECT *rectangle, POINT point) noexcept {
    return rectangle != nullptr && point.x >= rectangle->left && point.x < rectangle->right &&
           point.y >= rectangle->top && point.y < rectangle->bottom;
}
