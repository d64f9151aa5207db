// SPDX-License-Identifier: Zlib
// Lines and curves of one pixel's width. Points may be anywhere in the 32-bit range; only what lies on the
// picture is walked, and it is what an unclipped walk would give.
#pragma once

#include <span>

#include "fenlight/platform/graphics.h"
#include "platform/raster/pixel_view.h"

namespace fenlight::platform {

// From one point to another, without the end point. One pixel for each step along the longer axis; of two
// pixels equally near, the one with the smaller coordinate, so that a line and its way back are the same
// pixels (but for the end points).
void DrawLine(const PixelView &view, POINT from, POINT to, COLORREF colour) noexcept;

// A cubic curve without its end point: a chain of lines through points that lie on the curve, rounded to
// whole pixels. Lines are so many that none leaves the curve by more than a quarter of a pixel before that
// rounding.
void DrawBezier(const PixelView &view, std::span<const POINT, 4> points, COLORREF colour) noexcept;

}  // namespace fenlight::platform
