// SPDX-License-Identifier: Zlib
// Transfers whose source and target share memory: which order is right, or a copy of the source.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/raster/pixel_view.h"
#include "platform/raster/raster.h"

namespace fenlight::platform {

enum class Overlap : uint8_t {
    None,       // no byte that is read is written
    OneLayout,  // the same bitmap, or one laid out alike: an order of rows and pixels makes it right
    Mixed,      // other layouts over the same memory: only a copy of the source makes it right
};

// For a clipped block of equal sizes.
Overlap FindOverlap(const PixelView &target, const PixelView &source, const Block &part) noexcept;
// For two clipped rectangles of different sizes: may bytes be shared at all?
bool SharesMemory(const PixelView &target, int32_t targetTop, int32_t targetRows, const PixelView &source,
                  int32_t sourceTop, int32_t sourceRows) noexcept;

// A private copy of a rectangle of a view, which must lie inside it.
class SourceCopy {
  public:
    // False if there is no memory; the copy is empty then.
    [[nodiscard]] bool Make(const PixelView &source, int32_t x, int32_t y, int32_t width,
                            int32_t height) noexcept;
    // Valid as long as the copy lives. The rectangle starts at (OffsetX(), 0).
    const PixelView &View() const { return view_; }
    int32_t OffsetX() const { return offsetX_; }

  private:
    struct Free {
        void operator()(uint8_t *memory) const { std::free(memory); }
    };
    std::unique_ptr<uint8_t, Free> memory_;
    PixelView view_;
    int32_t offsetX_ = 0;
};

// The order in which a block is walked, so that nothing is overwritten before it is read.
struct WalkOrder {
    bool isUpwards = false;
    bool isLeftwards = false;
    bool isWithinRows = false;  // rows overlap themselves, so that the order within a row matters
};

inline WalkOrder OrderFor(Overlap overlap, const Block &part) {
    if (overlap != Overlap::OneLayout) return {};
    const bool isWithinRows = part.sourceY == part.targetY;
    return {part.sourceY < part.targetY, isWithinRows && part.sourceX < part.targetX, isWithinRows};
}

// action(sourceY, targetY) for each row of the block.
template <typename RowAction>
void ForEachRow(const Block &part, WalkOrder order, RowAction action) {
    for (int32_t i = 0; i < part.height; ++i) {
        const int32_t y = order.isUpwards ? part.height - 1 - i : i;
        action(part.sourceY + y, part.targetY + y);
    }
}

// Runs transfer(source, part, order) for a clipped block, with a copy of the source where no order would be
// right. False if there was no memory for the copy; nothing is transferred then.
template <typename Transfer>
[[nodiscard]] bool WithSafeSource(const PixelView &target, const PixelView &source, const Block &part,
                                  Transfer transfer) {
    const Overlap overlap = FindOverlap(target, source, part);
    if (overlap != Overlap::Mixed) {
        transfer(source, part, OrderFor(overlap, part));
        return true;
    }
    SourceCopy copy;
    if (!copy.Make(source, part.sourceX, part.sourceY, part.width, part.height)) return false;
    Block moved = part;
    moved.sourceX = copy.OffsetX();
    moved.sourceY = 0;
    transfer(copy.View(), moved, WalkOrder{});
    return true;
}

}  // namespace fenlight::platform
