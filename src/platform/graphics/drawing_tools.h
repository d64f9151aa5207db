// SPDX-License-Identifier: Zlib
// Pens and brushes, and the objects that a fresh context has selected.
#pragma once

#include "fenlight/platform/graphics.h"
#include "platform/system/handle_table.h"

namespace fenlight::platform {

// A pen or a brush: a colour. A context copies it when it selects the tool.
struct DrawingTool final : HandleObject {
    DrawingTool(COLORREF toolColour, bool toolIsStock) : colour(toolColour), isStock(toolIsStock) {}

    const COLORREF colour;
    const bool isStock;  // the default objects of contexts: cannot be deleted
    int selections = 0;  // contexts that have selected it; under the object mutex
};
using PinnedPen = Pinned<DrawingTool, HandleKind::Pen>;
using PinnedBrush = Pinned<DrawingTool, HandleKind::Brush>;

// What SelectObject names as selected before in a fresh context. The bitmap's handle stands for the one pixel
// that each context has for itself.
struct StockObjects {
    HBITMAP bitmap;
    HPEN pen;
    HBRUSH brush;
};
const StockObjects &Stock() noexcept;

// `kind` is Pen or Brush. 0 where memory or handles ran out.
HGDIOBJ PublishTool(HandleKind kind, COLORREF colour, bool isStock) noexcept;
// False while the tool is selected into a context; nothing has changed then.
bool DeleteTool(HandleKind kind, HGDIOBJ handle) noexcept;
// One selection more or less of a tool. For who holds the object mutex.
void CountSelection(HandleKind kind, HGDIOBJ handle, int change) noexcept;

}  // namespace fenlight::platform
