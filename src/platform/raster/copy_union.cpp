// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/raster/colour_conversion.h"
#include "platform/raster/overlap.h"
#include "platform/raster/piece_writer.h"
#include "platform/raster/raster.h"
#include "platform/raster/row_kernels.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

// The part of a rectangle at equal coordinates that both bitmaps have; empty: right <= left or bottom <= top.
RECT ClipRectangle(const PixelView &target, const PixelView &source, const RECT &rectangle) {
    return {std::max(rectangle.left, 0), std::max(rectangle.top, 0),
            std::min({rectangle.right, target.width, source.width}),
            std::min({rectangle.bottom, target.height, source.height})};
}

bool IsEmpty(const RECT &rectangle) {
    return rectangle.right <= rectangle.left || rectangle.bottom <= rectangle.top;
}

bool AreWords(const PixelView &target, const PixelView &source) {
    return target.format == PixelFormat::Bgrx32 && source.format == PixelFormat::Bgrx32;
}

// Equal rectangles that are moved against each other by less than their size: the old and the new place of a
// sprite.
bool AreOverlappingPlaces(const RECT &one, const RECT &other) {
    const int64_t width = int64_t{one.right} - one.left;
    const int64_t height = int64_t{one.bottom} - one.top;
    return other.right - other.left == width && other.bottom - other.top == height &&
           std::abs(one.left - other.left) < width && std::abs(one.top - other.top) < height;
}

// In three bands of whole rows, so that what both cover comes once. In the rows of the middle band the two
// overlap, so each of them is one piece.
template <typename Action>
void SplitPlaces(RECT upper, RECT lower, Action action) {
    if (lower.top < upper.top) std::swap(upper, lower);
    if (upper.top < lower.top) action(RECT{upper.left, upper.top, upper.right, lower.top});
    action(
        RECT{std::min(upper.left, lower.left), lower.top, std::max(upper.right, lower.right), upper.bottom});
    if (upper.bottom < lower.bottom) action(RECT{lower.left, upper.bottom, lower.right, lower.bottom});
}

// Hands on the clipped rectangles, those that are empty left out, and the old and new place of a sprite in
// bands.
template <typename Action>
void ForEachBand(const PixelView &target, const PixelView &source, std::span<const RECT> rectangles,
                 Action action) {
    RECT part{};
    for (const RECT &rectangle : rectangles) {
        const RECT next = ClipRectangle(target, source, rectangle);
        if (IsEmpty(next)) continue;
        if (!IsEmpty(part) && AreOverlappingPlaces(part, next)) {
            SplitPlaces(part, next, action);
            part = {};
            continue;
        }
        if (!IsEmpty(part)) action(part);
        part = next;
    }
    if (!IsEmpty(part)) action(part);
}

// What all bands together span, and how many pixels they have when each is counted for itself.
struct Extent {
    RECT bounds{INT32_MAX, INT32_MAX, 0, 0};
    int64_t pixels = 0;

    void Add(const RECT &band) {
        bounds = {std::min(bounds.left, band.left), std::min(bounds.top, band.top),
                  std::max(bounds.right, band.right), std::max(bounds.bottom, band.bottom)};
        pixels += (int64_t{band.right} - band.left) * (int64_t{band.bottom} - band.top);
    }
};

// One bit for each pixel of the bounds, rows of whole words, the leftmost pixel in bit 0.
class PixelMarks {
  public:
    explicit PixelMarks(const RECT &bounds) noexcept
        // Words begin at a multiple of 16 pixels, so that copies of whole words meet whole cache lines.
        : left_(bounds.left & ~15),
          top_(bounds.top),
          wordsPerRow_((int64_t{bounds.right} - left_ + 63) / 64),
          rows_(bounds.bottom - bounds.top),
          words_(OperationFails(Operation::Memory)
                     ? nullptr
                     : static_cast<uint64_t *>(
                           std::calloc(static_cast<size_t>(wordsPerRow_ * rows_), sizeof(uint64_t)))) {}

    bool IsValid() const { return words_ != nullptr; }
    int32_t Left() const { return left_; }
    std::span<const uint64_t> Row(int32_t y) const {
        return {words_.get() + (y - top_) * wordsPerRow_, static_cast<size_t>(wordsPerRow_)};
    }

    void Mark(const RECT &part) noexcept {
        const int64_t first = (part.left - left_) / 64;
        const int64_t last = (part.right - 1 - left_) / 64;
        const uint64_t head = ~uint64_t{0} << ((part.left - left_) % 64);
        const uint64_t tail = ~uint64_t{0} >> (63 - (part.right - 1 - left_) % 64);
        uint64_t *row = words_.get() + (part.top - top_) * wordsPerRow_;
        if (first == last) {
            for (int32_t y = part.top; y < part.bottom; ++y, row += wordsPerRow_) row[first] |= head & tail;
            return;
        }
        for (int32_t y = part.top; y < part.bottom; ++y, row += wordsPerRow_) {
            row[first] |= head;
            for (int64_t word = first + 1; word < last; ++word) row[word] = ~uint64_t{0};
            row[last] |= tail;
        }
    }

  private:
    struct Free {
        void operator()(uint64_t *memory) const { std::free(memory); }
    };
    int32_t left_;
    int32_t top_;
    int64_t wordsPerRow_;
    int64_t rows_;
    std::unique_ptr<uint64_t, Free> words_;
};

// action(first, count) for each run of set bits, counted from the row's first bit.
template <typename Action>
void ForEachRun(std::span<const uint64_t> marks, Action action) {
    for (size_t i = 0; i < marks.size(); ++i) {
        for (uint64_t word = marks[i]; word != 0;) {
            const int first = std::countr_zero(word);
            const int count = std::countr_one(word >> first);
            action(static_cast<int32_t>(64 * i) + first, count);
            word = first + count == 64 ? 0 : word & ~uint64_t{0} << (first + count);
        }
    }
}

void CopyMarks(const PixelView &target, const PixelView &source, const RECT &bounds, const PixelMarks &marks,
               const TransferColours &colours) {
    PieceWriter writer(source, target, SRCCOPY, colours);
    std::array<uint32_t, 64> values;
    for (int32_t y = bounds.top; y < bounds.bottom; ++y) {
        uint8_t *to = target.Row(y);
        const uint8_t *from = source.Row(y);
        if (AreWords(target, source)) {
            Kernels().copyMarked32(to + 4 * int64_t{marks.Left()}, from + 4 * int64_t{marks.Left()},
                                   marks.Row(y));
            continue;
        }
        ForEachRun(marks.Row(y), [&](int32_t first, int32_t count) {
            LoadValues(source.format, from, marks.Left() + first, count, values.data());
            writer.Write(to, marks.Left() + first, count, values.data());
        });
    }
}

// 32-bit pixels between bitmaps that share no memory.
void CopyWords(const PixelView &target, const PixelView &source, const RECT &part) {
    const int64_t offset = 4 * int64_t{part.left};
    Kernels().copyBytes({target.Row(part.top) + offset, target.pitch, source.Row(part.top) + offset,
                         source.pitch, 4 * (int64_t{part.right} - part.left),
                         int64_t{part.bottom} - part.top});
}

bool CopyEach(const PixelView &target, const PixelView &source, std::span<const RECT> rectangles,
              const TransferColours &colours) {
    bool isDone = true;
    for (const RECT &rectangle : rectangles) {
        const RECT part = ClipRectangle(target, source, rectangle);
        if (IsEmpty(part)) continue;
        const Block block{part.left, part.top, part.right - part.left, part.bottom - part.top,
                          part.left, part.top};
        isDone = BlitBlock(target, &source, block, SRCCOPY, colours) && isDone;
    }
    return isDone;
}

bool IsUnionCheaper(const Extent &extent) {
    const int64_t area = (int64_t{extent.bounds.right} - extent.bounds.left) *
                         (int64_t{extent.bounds.bottom} - extent.bounds.top);
    return extent.pixels > area * Kernels().unionPercent / 100;
}

}  // namespace

bool CopyUnion(const PixelView &target, const PixelView &source, std::span<const RECT> rectangles,
               const TransferColours &colours) noexcept {
    Extent extent;
    ForEachBand(target, source, rectangles, [&](const RECT &band) { extent.Add(band); });
    if (extent.pixels == 0) return true;
    const RECT &bounds = extent.bounds;
    const int32_t height = bounds.bottom - bounds.top;
    if (SharesMemory(target, bounds.top, height, source, bounds.top, height))
        return CopyEach(target, source, rectangles, colours);
    if (IsUnionCheaper(extent)) {
        PixelMarks marks(bounds);
        if (marks.IsValid()) {
            ForEachBand(target, source, rectangles, [&](const RECT &band) { marks.Mark(band); });
            CopyMarks(target, source, bounds, marks, colours);
            return true;
        }
    }
    if (!AreWords(target, source)) return CopyEach(target, source, rectangles, colours);
    ForEachBand(target, source, rectangles, [&](const RECT &band) { CopyWords(target, source, band); });
    return true;
}

}  // namespace fenlight::platform
