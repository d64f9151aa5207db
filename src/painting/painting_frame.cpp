// SPDX-License-Identifier: Zlib
#include <algorithm>

#include "fenlight/painting.h"
#include "fenlight/platform/graphics.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

// A pen of one colour, selected as long as this stands.
class SelectedPen {
  public:
    SelectedPen(HDC context, COLORREF colour) noexcept
        : context_(context), pen_(CreatePen(PS_SOLID, 1, colour)) {
        if (pen_ != 0) before_ = SelectObject(context_, pen_);
    }
    SelectedPen(const SelectedPen &) = delete;
    SelectedPen &operator=(const SelectedPen &) = delete;
    ~SelectedPen() {
        if (before_ != 0) SelectObject(context_, before_);
        DeleteObject(pen_);
    }
    explicit operator bool() const noexcept { return before_ != 0; }

  private:
    HDC context_;
    HPEN pen_;
    HGDIOBJ before_ = 0;
};

// Coordinates in 64 bits: thick borders leave the 32-bit range.
struct Border {
    int64_t left, top, right, bottom, thickness;
};

struct Size {
    int64_t width, height;
};

struct Range {
    int64_t first, end;
};

// 0 x 0 for a dead context.
Size SizeOf(HDC context) noexcept {
    const platform::SurfaceAccess access(context);
    if (!access) return {0, 0};
    return {access.View().width, access.View().height};
}

// The steps outward at which a side that starts at `start` lies on the surface. Only those are walked, for
// there may be two thousand million of the others.
Range StepsDown(int64_t start, int64_t size, int64_t thickness) noexcept {
    return {std::max<int64_t>(start - size + 1, 0), std::min(start + 1, thickness)};
}
Range StepsUp(int64_t start, int64_t size, int64_t thickness) noexcept {
    return {std::max<int64_t>(-start, 0), std::min(size - start, thickness)};
}

// A line along an axis. What clipping takes away lies outside the surface.
void DrawLine(HDC context, Size size, int64_t fromX, int64_t fromY, int64_t toX, int64_t toY) noexcept {
    const auto clip = [](int64_t position, int64_t limit) {
        return static_cast<int32_t>(std::clamp<int64_t>(position, -1, limit));
    };
    MoveToEx(context, clip(fromX, size.width), clip(fromY, size.height), nullptr);
    LineTo(context, clip(toX, size.width), clip(toY, size.height));
}

void DrawTopLeft(HDC context, Size size, const Border &b) noexcept {
    const Range rows = StepsDown(b.top, size.height, b.thickness);
    for (int64_t i = rows.first; i < rows.end; ++i)
        DrawLine(context, size, b.left - i, b.top - i, b.right + i, b.top - i);
    const Range columns = StepsDown(b.left, size.width, b.thickness);
    for (int64_t i = columns.first; i < columns.end; ++i)
        DrawLine(context, size, b.left - i, b.top - i, b.left - i, b.bottom + i);
}

// Lines leave out their end; the right side goes one further, so that the corner is there.
void DrawBottomRight(HDC context, Size size, const Border &b) noexcept {
    const Range rows = StepsUp(b.bottom, size.height, b.thickness);
    for (int64_t i = rows.first; i < rows.end; ++i)
        DrawLine(context, size, b.left - i, b.bottom + i, b.right + i, b.bottom + i);
    const Range columns = StepsUp(b.right, size.width, b.thickness);
    for (int64_t i = columns.first; i < columns.end; ++i)
        DrawLine(context, size, b.right + i, b.top - i, b.right + i, b.bottom + i + 1);
}

template <class Draw>
bool WithPen(HDC context, COLORREF colour, Draw draw) noexcept {
    const SelectedPen pen(context, colour);
    if (pen) draw();
    return static_cast<bool>(pen);
}

}  // namespace
}  // namespace fenlight

void Frame(uintptr_t dc, uint32_t colourTopLeft, uint32_t colourBottomRight, int32_t left, int32_t top,
           int32_t right, int32_t bottom, int32_t thickness) noexcept {
    using namespace fenlight;
    if (thickness < 1) return;
    const Border border{left, top, right, bottom, thickness};
    const Size size = SizeOf(dc);
    if (!WithPen(dc, colourTopLeft, [&] { DrawTopLeft(dc, size, border); })) return;
    WithPen(dc, colourBottomRight, [&] { DrawBottomRight(dc, size, border); });
}
