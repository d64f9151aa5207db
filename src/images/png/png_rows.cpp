// SPDX-License-Identifier: Zlib
#include "images/png/png_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "fenlight/platform/system.h"
#include "images/png/png_scatter.h"

namespace fenlight {

namespace {

// Two rows of the picture, zero at first: the row above the first one reads as zeros.
class WorkRows {
  public:
    explicit WorkRows(size_t rowBytes) noexcept
        : rowBytes_(rowBytes), block_(static_cast<uint8_t *>(GlobalAlloc(GMEM_ZEROINIT, 2 * rowBytes))) {
        present_ = block_;
        previous_ = block_ + rowBytes;
    }
    WorkRows(const WorkRows &) = delete;
    WorkRows &operator=(const WorkRows &) = delete;
    ~WorkRows() { GlobalFree(block_); }

    explicit operator bool() const noexcept { return block_ != nullptr; }
    uint8_t *Present() const noexcept { return present_; }
    const uint8_t *Previous() const noexcept { return previous_; }
    void Advance() noexcept { std::swap(present_, previous_); }
    void ClearPrevious() noexcept { std::memset(previous_, 0, rowBytes_); }

  private:
    size_t rowBytes_;
    uint8_t *block_;
    uint8_t *present_ = nullptr;
    uint8_t *previous_ = nullptr;
};

// Walks rawData row by row and undoes the filters.
class RowReader {
  public:
    RowReader(const PngContext &context, const PngFormat &format, const FilterKernels &filters) noexcept
        : kernels_(filters.layouts[static_cast<size_t>(format.layout)]),
          position_(context.rawData),
          end_(context.rawData + context.rawSize) {}

    bool Next(uint8_t *row, const uint8_t *previous, size_t rowBytes) noexcept {
        const uint8_t filter = *position_;
        if (filter >= kFilterTypes) return false;
        kernels_.rows[filter](row, previous, position_ + 1, rowBytes);
        position_ += rowBytes + 1;
        return true;
    }

    // Several Paeth rows at once where that is faster. The rows done: 0, 2 or 4.
    uint32_t NextPaethRows(uint8_t *row, size_t pitch, const uint8_t *previous, size_t rowBytes) noexcept {
        if (kernels_.twoPaeth == nullptr) return 0;
        const uint32_t count = CountPaethRows(rowBytes + 1) & ~1u;
        if (count == 0) return 0;
        const UnfilterPaethRows unfilter = count == 4 ? kernels_.fourPaeth : kernels_.twoPaeth;
        unfilter({row, pitch, previous, position_ + 1, rowBytes});
        position_ += count * (rowBytes + 1);
        return count;
    }

  private:
    // Up to four.
    uint32_t CountPaethRows(size_t step) const noexcept {
        uint32_t count = 0;
        for (const uint8_t *filter = position_; count < 4 && filter != end_; filter += step, ++count) {
            if (*filter != static_cast<uint8_t>(PngFilter::Paeth)) break;
        }
        return count;
    }

    const LayoutKernels &kernels_;
    const uint8_t *position_;
    const uint8_t *end_;
};

// The unfiltered row is the bitmap's row, so each row serves as the previous one of the next where it lies.
bool StoreDirectly(const PngContext &context, size_t rowBytes, RowReader &reader, const WorkRows &work,
                   const BitmapRows &target) {
    const uint8_t *previous = work.Previous();
    uint32_t y = 0;
    while (y < context.height) {
        uint32_t count = reader.NextPaethRows(target.Row(y), target.pitch, previous, rowBytes);
        if (count == 0) {
            if (!reader.Next(target.Row(y), previous, rowBytes)) return false;
            count = 1;
        }
        y += count;
        previous = target.Row(y - 1);
    }
    return true;
}

bool StorePass(const PngPass &pass, const PngFormat &format, RowReader &reader, WorkRows &work,
               const BitmapRows &target) {
    const ScatterRow scatter = ScatterFor(format);
    const size_t rowBytes = RowBytes(format, pass.width);
    const RowColumns columns{pass.firstColumn, pass.columnStep, pass.width};
    work.ClearPrevious();
    for (uint32_t y = 0; y < pass.height; ++y) {
        if (!reader.Next(work.Present(), work.Previous(), rowBytes)) return false;
        scatter(target.Row(pass.firstRow + y * pass.rowStep), work.Present(), columns);
        work.Advance();
    }
    return true;
}

bool StorePasses(const PngContext &context, const PngFormat &format, RowReader &reader, WorkRows &work,
                 const BitmapRows &target) {
    for (int i = 0; i < kPasses; ++i) {
        const PngPass pass = InterlacePass(context, i);
        if (pass.width == 0 || pass.height == 0) continue;
        if (!StorePass(pass, format, reader, work, target)) return false;
    }
    return true;
}

bool StoreAll(const PngContext &context, const PngFormat &format, WorkRows &work, const BitmapRows &target,
              const FilterKernels &filters) {
    RowReader reader(context, format, filters);
    const bool isWhole = context.interlace == 0;
    if (isWhole && format.conversion == RowConversion::Copy)
        return StoreDirectly(context, RowBytes(format, context.width), reader, work, target);
    // Pixels of less than a byte are OR-ed in.
    if (format.bitCount < 8) std::memset(target.bits, 0, target.pitch * context.height);
    if (isWhole) return StorePass(WholePicture(context), format, reader, work, target);
    return StorePasses(context, format, reader, work, target);
}

}  // namespace

RowsResult StoreRows(const PngContext &context, const PngFormat &format, const BitmapRows &target,
                     const FilterKernels &filters) noexcept {
    WorkRows work(RowBytes(format, context.width));
    if (!work) return RowsResult::NoMemory;
    return StoreAll(context, format, work, target, filters) ? RowsResult::Done : RowsResult::BadFilter;
}

}  // namespace fenlight
