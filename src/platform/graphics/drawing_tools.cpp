// SPDX-License-Identifier: Zlib
#include "platform/graphics/drawing_tools.h"

#include <new>
#include <utility>

#include "platform/graphics/bitmap.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

// One monochrome black pixel, never selected as such: contexts show their own in its place.
HBITMAP MakeStockBitmap() {
    return PublishBitmap(MakePicture({.width = 1, .height = 1, .format = PixelFormat::Mono}));
}

StockObjects MakeStock() {
    return {MakeStockBitmap(), PublishTool(HandleKind::Pen, 0, true),
            PublishTool(HandleKind::Brush, 0xFFFFFF, true)};
}

DrawingTool *FindTool(HandleKind kind, HGDIOBJ handle) {
    // The pin ends here, but the object mutex that the caller holds keeps the tool alive.
    if (kind == HandleKind::Pen) {
        const PinnedPen pen(handle);
        return pen ? &*pen : nullptr;
    }
    const PinnedBrush brush(handle);
    return brush ? &*brush : nullptr;
}

HGDIOBJ CreateTool(HandleKind kind, COLORREF colour) {
    PassSuspendGate();
    if (OperationFails(Operation::Memory)) return 0;
    return PublishTool(kind, colour & 0xFFFFFF, false);
}

}  // namespace

const StockObjects &Stock() noexcept {
    static const StockObjects stock = MakeStock();
    return stock;
}

HGDIOBJ PublishTool(HandleKind kind, COLORREF colour, bool isStock) noexcept {
    auto *tool = new (std::nothrow) DrawingTool(colour, isStock);
    return tool != nullptr ? InsertHandle(kind, tool) : 0;
}

bool DeleteTool(HandleKind kind, HGDIOBJ handle) noexcept {
    const std::lock_guard guard(ObjectMutex());
    const DrawingTool *tool = FindTool(kind, handle);
    if (tool == nullptr || tool->selections != 0) return false;
    return tool->isStock || RemoveHandle(kind, handle);
}

void CountSelection(HandleKind kind, HGDIOBJ handle, int change) noexcept {
    DrawingTool *tool = FindTool(kind, handle);
    if (tool != nullptr) tool->selections += change;
}

}  // namespace fenlight::platform

using namespace fenlight::platform;

HPEN CreatePen(int32_t style, int32_t width, COLORREF colour) noexcept {
    if (style != PS_SOLID || width < 0 || width > 1) return 0;
    return CreateTool(HandleKind::Pen, colour);
}

HBRUSH CreateSolidBrush(COLORREF colour) noexcept { return CreateTool(HandleKind::Brush, colour); }
