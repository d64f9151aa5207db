// SPDX-License-Identifier: Zlib
#include "platform/raster/overlap.h"

#include <algorithm>
#include <cstring>

#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

struct Bytes {
    uintptr_t first;
    uintptr_t end;
};

// The bytes of whole rows; pixels' own columns do not matter for a first test.
Bytes BytesOfRows(const PixelView &view, int32_t top, int32_t rows) {
    const auto first = reinterpret_cast<uintptr_t>(view.Row(top));
    const auto last = reinterpret_cast<uintptr_t>(view.Row(top + rows - 1));
    const auto rowBytes = static_cast<uintptr_t>((int64_t{view.width} * BitsPerPixel(view.format) + 7) / 8);
    return {std::min(first, last), std::max(first, last) + rowBytes};
}

bool Intersects(int32_t a, int32_t b, int32_t size) {
    const int64_t distance = int64_t{a} - b;
    return distance < size && -distance < size;
}

}  // namespace

bool SharesMemory(const PixelView &target, int32_t targetTop, int32_t targetRows, const PixelView &source,
                  int32_t sourceTop, int32_t sourceRows) noexcept {
    const Bytes written = BytesOfRows(target, targetTop, targetRows);
    const Bytes read = BytesOfRows(source, sourceTop, sourceRows);
    return written.first < read.end && read.first < written.end;
}

Overlap FindOverlap(const PixelView &target, const PixelView &source, const Block &part) noexcept {
    if (!SharesMemory(target, part.targetY, part.height, source, part.sourceY, part.height)) {
        return Overlap::None;
    }
    const bool sameLayout = target.topRow == source.topRow && target.pitch == source.pitch &&
                            BitsPerPixel(target.format) == BitsPerPixel(source.format);
    if (!sameLayout) return Overlap::Mixed;
    const bool meets = Intersects(part.targetX, part.sourceX, part.width) &&
                       Intersects(part.targetY, part.sourceY, part.height);
    return meets ? Overlap::OneLayout : Overlap::None;
}

bool SourceCopy::Make(const PixelView &source, int32_t x, int32_t y, int32_t width, int32_t height) noexcept {
    const int64_t bits = BitsPerPixel(source.format);
    const int64_t firstByte = x * bits / 8;
    const int64_t pitch = ((x + int64_t{width}) * bits + 7) / 8 - firstByte;
    if (OperationFails(Operation::Memory)) return false;
    memory_.reset(static_cast<uint8_t *>(std::malloc(static_cast<size_t>(pitch * height))));
    if (memory_ == nullptr) return false;
    for (int32_t row = 0; row < height; ++row) {
        std::memcpy(memory_.get() + row * pitch, source.Row(y + row) + firstByte, static_cast<size_t>(pitch));
    }
    view_ = source;
    view_.topRow = memory_.get();
    view_.pitch = pitch;
    offsetX_ = static_cast<int32_t>(x - firstByte * 8 / bits);
    view_.width = offsetX_ + width;
    view_.height = height;
    return true;
}

}  // namespace fenlight::platform
