// SPDX-License-Identifier: Zlib
#include "sprites/rectangle_batch.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "fenlight/platform/system.h"

namespace fenlight {

namespace {

int32_t EndOf(int32_t start, int32_t size) noexcept {
    return static_cast<int32_t>(
        std::min<int64_t>(int64_t{start} + size, std::numeric_limits<int32_t>::max()));
}

}  // namespace

void RectangleBatch::SelectContexts(HDC target, HDC source) noexcept {
    if (target == target_ && source == source_) return;
    Flush();
    target_ = target;
    source_ = source;
}

void RectangleBatch::Add(int32_t x, int32_t y, int32_t width, int32_t height) noexcept {
    if (width <= 0 || height <= 0) return;
    // Without memory for more, several smaller copies do the same.
    if (count_ == capacity_ && !Grow()) Flush();
    RECT *rectangles = block_ != nullptr ? block_ : first_;
    rectangles[count_++] = {x, y, EndOf(x, width), EndOf(y, height)};
}

void RectangleBatch::Flush() noexcept {
    if (count_ != 0) CopyRectangles(target_, source_, block_ != nullptr ? block_ : first_, count_);
    count_ = 0;
}

void RectangleBatch::Release() noexcept {
    Flush();
    GlobalFree(block_);
    block_ = nullptr;
    capacity_ = kFirstCapacity;
}

bool RectangleBatch::Grow() noexcept {
    if (capacity_ > std::numeric_limits<int32_t>::max() / 2) return false;
    auto *block =
        static_cast<RECT *>(GlobalAlloc(GMEM_FIXED, 2 * sizeof(RECT) * static_cast<size_t>(capacity_)));
    if (block == nullptr) return false;
    std::memcpy(block, block_ != nullptr ? block_ : first_, sizeof(RECT) * static_cast<size_t>(count_));
    GlobalFree(block_);
    block_ = block;
    capacity_ *= 2;
    return true;
}

}  // namespace fenlight
