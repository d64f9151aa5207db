// SPDX-License-Identifier: Zlib
#include "platform/raster/stretch.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "platform/raster/clipping.h"
#include "platform/raster/overlap.h"
#include "platform/raster/raster_codes.h"
#include "platform/raster/row_kernels.h"

namespace fenlight::platform {
namespace {

// Pieces of plain copies are wider: walking a big bitmap by columns of 2048 instead of by whole rows took
// twice the time.
constexpr int32_t kWordPieceWidth = 4096;
constexpr int32_t kWordPieceHeight = 256;
// From this size on a target outlives no cache, and is stored past it.
constexpr int64_t kStreamedBytes = 12 << 20;

struct Axes {
    ScaledAxis columns;
    ScaledAxis rows;
};

// So many source pixels at most do `count` neighbours of the target span: between two of them lie
// (count - 1) * source / target pixels, rounded up or down.
int64_t ReachOf(int64_t count, int64_t sourceSize, int64_t targetSize) {
    sourceSize = std::abs(sourceSize);
    targetSize = std::abs(targetSize);
    return ((count - 1) * sourceSize + targetSize - 1) / targetSize + 1;
}

// The scaled rows of one piece of columns, as numbers.
class ScaledPiece {
  public:
    ScaledPiece(const PixelView &source, const Axes &axes, int32_t x, int32_t count, const ScaledBlock &block)
        : format_(source.format), count_(count) {
        axes.columns.FillSources(x, count, columns_.data());
        first_ = std::min(columns_.front(), Last());
        const int32_t range = std::max(columns_.front(), Last()) - first_ + 1;
        if (range > std::min(kRange, 2 * count)) return;
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) columns_[i] -= first_;
        range_ = range;
        reach8_ = ReachOf(8, block.sourceWidth, block.targetWidth);
        reach16_ = ReachOf(16, block.sourceWidth, block.targetWidth);
    }

    void Load(const uint8_t *row, uint32_t *values) const {
        if (range_ == 0) return LoadScattered(format_, row, columns_.data(), count_, values);
        std::array<uint32_t, kRange> words;
        LoadValues(format_, row, first_, range_, words.data());
        const int32_t line = 0;
        Kernels().scale32({reinterpret_cast<uint8_t *>(values),
                           0,
                           reinterpret_cast<uint8_t *>(words.data()),
                           0,
                           {columns_.data(), static_cast<size_t>(count_)},
                           {&line, 1},
                           range_,
                           reach8_,
                           reach16_,
                           false});
    }

  private:
    // Up to a reduction by two it is faster to turn all pixels between into numbers and choose then.
    static constexpr int32_t kRange = 2 * kPieceWidth;

    int32_t Last() const { return columns_[static_cast<size_t>(count_ - 1)]; }

    PixelFormat format_;
    int32_t count_;
    int32_t first_ = 0;
    int32_t range_ = 0;  // pixels from first_ on that are needed, or 0 if they are loaded one by one
    int64_t reach8_ = 0;
    int64_t reach16_ = 0;
    std::array<int32_t, kPieceWidth> columns_;
};

// Columns in pieces outside, rows inside: the source columns of a piece are worked out once for all rows. A
// row whose source row has just been copied is copied from the target above it.
void WriteScaled(PieceWriter &writer, const PixelView &target, const PixelView &source, const Axes &axes,
                 const ScaledBlock &block, int32_t top) {
    std::array<uint32_t, kPieceWidth> values;
    const int64_t pixelBytes = BitsPerPixel(target.format) / 8;
    const bool repeatsRows = writer.IsPlainCopy() && pixelBytes != 0;
    const int32_t firstRow = axes.rows.First();
    for (int32_t done = 0; done < axes.columns.Count(); done += kPieceWidth) {
        const int32_t x = axes.columns.First() + done;
        const int32_t count = std::min(kPieceWidth, axes.columns.Count() - done);
        const ScaledPiece piece(source, axes, x, count, block);
        ScaledAxis::Walk walk(axes.rows, firstRow);
        int32_t lastSource = -1;
        for (int32_t y = firstRow; y < firstRow + axes.rows.Count(); ++y, walk.Step()) {
            uint8_t *row = target.Row(y);
            if (repeatsRows && walk.Source() == lastSource) {
                std::memcpy(row + x * pixelBytes, row - target.pitch + x * pixelBytes,
                            static_cast<size_t>(count * pixelBytes));
                continue;
            }
            lastSource = walk.Source();
            piece.Load(source.Row(lastSource - top), values.data());
            writer.Write(row, x, count, values.data());
        }
    }
}

// Plain copies between 32-bit bitmaps that share no memory.
void ScaleWords(const PixelView &target, const PixelView &source, const Axes &axes, const ScaledBlock &block,
                int32_t top) {
    std::array<int32_t, kWordPieceWidth> columns;
    std::array<int32_t, kWordPieceHeight> lines;
    ScaledRows piece{};
    piece.targetPitch = target.pitch;
    piece.source = source.Row(0);
    piece.sourcePitch = source.pitch;
    piece.sourceWidth = source.width;
    piece.reach8 = ReachOf(8, block.sourceWidth, block.targetWidth);
    piece.reach16 = ReachOf(16, block.sourceWidth, block.targetWidth);
    piece.isStreamed = int64_t{axes.columns.Count()} * axes.rows.Count() * 4 >= kStreamedBytes;
    for (int32_t right = 0; right < axes.columns.Count(); right += kWordPieceWidth) {
        const int32_t width = std::min(kWordPieceWidth, axes.columns.Count() - right);
        const int32_t x = axes.columns.First() + right;
        axes.columns.FillSources(x, width, columns.data());
        piece.columns = {columns.data(), static_cast<size_t>(width)};
        for (int32_t down = 0; down < axes.rows.Count(); down += kWordPieceHeight) {
            const int32_t height = std::min(kWordPieceHeight, axes.rows.Count() - down);
            const int32_t y = axes.rows.First() + down;
            axes.rows.FillSources(y, height, lines.data());
            for (int32_t i = 0; i < height; ++i) lines[static_cast<size_t>(i)] -= top;
            piece.lines = {lines.data(), static_cast<size_t>(height)};
            piece.target = target.Row(y) + 4 * int64_t{x};
            Kernels().scale32(piece);
        }
    }
}

// Runs action(source, axes, top) if anything is visible; row `top` of the axes is row 0 of that source, which
// is a copy where memory is shared. False if there was no memory for the copy.
template <typename Action>
[[nodiscard]] bool WithScaledSource(const PixelView &target, const PixelView &source,
                                    const ScaledBlock &block, Action action) {
    const Axes axes{
        {block.targetX, block.targetWidth, block.sourceX, block.sourceWidth, target.width, source.width},
        {block.targetY, block.targetHeight, block.sourceY, block.sourceHeight, target.height, source.height}};
    if (axes.columns.Count() == 0 || axes.rows.Count() == 0) return true;
    // Most bitmaps are apart altogether, which costs no division to find out.
    if (!SharesMemory(target, 0, target.height, source, 0, source.height)) {
        action(source, axes, 0);
        return true;
    }
    const int32_t top = axes.rows.LowestSource();
    const int32_t height = axes.rows.HighestSource() - top + 1;
    if (!SharesMemory(target, axes.rows.First(), axes.rows.Count(), source, top, height)) {
        action(source, axes, 0);
        return true;
    }
    SourceCopy copy;
    if (!copy.Make(source, 0, top, source.width, height)) return false;
    action(copy.View(), axes, top);
    return true;
}

bool AreWords(const PixelView &target, const PixelView &source) {
    return target.format == PixelFormat::Bgrx32 && source.format == PixelFormat::Bgrx32;
}

// The rectangle of a code that needs no source, as an ordinary block.
Block TargetPart(const PixelView &target, const ScaledBlock &block) {
    const ScaledAxis columns(block.targetX, block.targetWidth, 0, 1, target.width, 1);
    const ScaledAxis rows(block.targetY, block.targetHeight, 0, 1, target.height, 1);
    return {columns.First(), rows.First(), columns.Count(), rows.Count(), 0, 0};
}

}  // namespace

bool ScaleInto(PieceWriter &writer, const PixelView &target, const PixelView &source,
               const ScaledBlock &block) noexcept {
    return WithScaledSource(target, source, block, [&](const PixelView &from, const Axes &axes, int32_t top) {
        WriteScaled(writer, target, from, axes, block, top);
    });
}

bool StretchBlock(const PixelView &target, const PixelView *source, const ScaledBlock &block,
                  DWORD rasterCode, const TransferColours &colours) noexcept {
    if (!NeedsSource(rasterCode)) {
        return BlitBlock(target, nullptr, TargetPart(target, block), rasterCode, colours);
    }
    if (source == nullptr) return false;
    if (HasEqualSizes(block)) return BlitBlock(target, source, PlainBlock(block), rasterCode, colours);
    if (TruthTable(rasterCode) == TruthTable(SRCCOPY) && AreWords(target, *source)) {
        return WithScaledSource(target, *source, block,
                                [&](const PixelView &from, const Axes &axes, int32_t top) {
                                    ScaleWords(target, from, axes, block, top);
                                });
    }
    PieceWriter writer(*source, target, rasterCode, colours);
    return ScaleInto(writer, target, *source, block);
}

}  // namespace fenlight::platform
