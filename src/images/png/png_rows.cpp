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
        : kernels_(filters.rows[static_cast<size_t>(format.layout)]), position_(context.rawData) {}

    bool Next(uint8_t *row, const uint8_t *previous, size_t rowBytes) noexcept {
        const uint8_t filter = *position_;
        if (filter >= kFilterTypes) return false;
        kernels_[filter](row, previous, position_ + 1, rowBytes);
        position_ += rowBytes + 1;
        return true;
    }

  private:
    const LayoutKernels &kernels_;
    const uint8_t *position_;
};

// The unfiltered row is the bitmap's row, so each row serves as the previous one of the next where it lies.
bool StoreDirectly(const PngContext &context, size_t rowBytes, RowReader &reader, const WorkRows &work,
                   const BitmapRows &target) {
    const uint8_t *previous = work.Previous();
    for (uint32_t y = 0; y < context.height; ++y) {
        uint8_t *const row = target.Row(y);
        if (!reader.Next(row, previous, rowBytes)) return false;
        previous = row;
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
