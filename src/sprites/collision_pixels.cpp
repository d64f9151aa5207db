// SPDX-License-Identifier: Zlib
// Two sprites pixel by pixel. What counts is defined by two lists of points: the opaque pixels of the coarse
// sprite, thinned out, and all of the fine one, column by column, each closed by a mark; sprites collide if a
// point stands in both. Here only the overlap is looked at, and no list is made.
#include <algorithm>
#include <array>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/surface_access.h"
#include "sprites/collision.h"
#include "sprites/collision_kernels.h"

namespace fenlight {

namespace {

using platform::PixelFormat;
using platform::PixelView;

// A list of points ends before the first one with this X, so a sprite that reaches over it is cut off there.
constexpr int32_t kPointListEnd = 111111;
// Rows of less than 32 bits are widened in pieces of this many pixels.
constexpr int32_t kPiece = 256;

struct Span {
    int64_t first, end;

    bool Contains(int64_t place) const noexcept { return place >= first && place < end; }
};

struct Area {
    Span x, y;
};

Span Intersect(Span a, Span b) noexcept { return {std::max(a.first, b.first), std::min(a.end, b.end)}; }

struct Steps {
    int64_t x, y;
};

// The first place from `place` on that is a multiple of the step. Nothing here is negative.
int64_t NextSample(int64_t place, int64_t step) noexcept { return (place + step - 1) / step * step; }
bool HasSample(Span span, int64_t step) noexcept { return NextSample(span.first, step) < span.end; }

// The words of a record that play a part, each read once: the sprite thread may change them at any moment.
struct Frame {
    HDC image;
    int32_t x, y, width, height, sourceX, sourceY;

    int64_t Size() const noexcept { return int64_t{width} * height; }
};

Frame LoadFrame(const SpriteRecord &record) noexcept {
    const int32_t width = record.Width;
    const auto shift = (static_cast<uint32_t>(record.Frame) - 1) * static_cast<uint32_t>(width);
    return {record.ImageDC, record.X,      record.Y,
            width,          record.Height, WrapAdd(record.SourceX, static_cast<int32_t>(shift)),
            record.SourceY};
}

// The colours 0x00RRGGBB of some pixels of a row, for pictures of less than 32 bits.
void LoadColours(const PixelView &view, int64_t x, int64_t y, int32_t count, uint32_t *colours) noexcept {
    const uint8_t *row = view.Row(static_cast<int32_t>(y));
    const auto bits = static_cast<int32_t>(BitsPerPixel(view.format));
    if (view.format == PixelFormat::Bgr24) {
        for (const uint8_t *pixel = row + 3 * x; count > 0; --count, pixel += 3)
            *colours++ = static_cast<uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
        return;
    }
    static constexpr uint32_t kBlackAndWhite[2] = {0, kColourBits};
    const uint32_t *palette = view.format == PixelFormat::Mono ? kBlackAndWhite : view.palette;
    const uint32_t lowest = (1u << bits) - 1;
    for (int64_t bit = x * bits; count > 0; --count, bit += bits)
        *colours++ = palette[row[bit / 8] >> (8 - bits - bit % 8) & lowest] & kColourBits;
}

// A sprite's frame as it lies in its picture, seen from a common point: pixel (u, v) from there is pixel
// (left + u, top + v) of the picture. Outside the picture a pixel has the colour CLR_INVALID, as the key may
// have.
struct Side {
    const PixelView *view;
    int64_t left, top;
    uint32_t key;  // 0x00RRGGBB or CLR_INVALID

    Side(const PixelView &picture, const Frame &frame) noexcept
        : view(&picture), left(frame.sourceX), top(frame.sourceY), key(CLR_INVALID) {
        const int64_t corner = left + frame.width - 1;
        if (Inside().x.Contains(frame.width - 1) && Inside().y.Contains(0))
            key = platform::SwapRedBlue(
                platform::ReadSurfacePixel(picture, static_cast<int32_t>(corner), static_cast<int32_t>(top)));
    }

    void ShiftBy(int64_t x, int64_t y) noexcept {
        left += x;
        top += y;
    }
    Area Inside() const noexcept { return {{-left, view->width - left}, {-top, view->height - top}}; }
    bool IsInside(int64_t u, int64_t v) const noexcept {
        return Inside().x.Contains(u) && Inside().y.Contains(v);
    }
    bool IsOpaqueOutside() const noexcept { return key != CLR_INVALID; }
    bool HasWords() const noexcept { return view->format == PixelFormat::Bgrx32; }

    PixelBlock BlockAt(int64_t u, int64_t v, int64_t stepY) const noexcept {
        const uint8_t *row = view->topRow + (top + v) * view->pitch;
        return {row + (left + u) * 4, view->pitch * static_cast<ptrdiff_t>(stepY), key};
    }
    // One row, in `colours` unless the picture has words of its own.
    PixelBlock RowAt(int64_t u, int64_t v, int32_t count, uint32_t *colours) const noexcept {
        if (HasWords()) return BlockAt(u, v, 0);
        LoadColours(*view, left + u, top + v, count, colours);
        return {reinterpret_cast<const uint8_t *>(colours), 0, key};
    }
};

bool IsOpaque(const PixelBlock &block, int64_t x) noexcept {
    return (reinterpret_cast<const uint32_t *>(block.firstRow)[x] & kColourBits) != block.key;
}

// Every row first as a whole: where nothing meets in it, no sample does.
bool DoBlocksMeet(PixelBlocks blocks, int64_t firstSample, int64_t stepX) noexcept {
    const CollisionKernels &kernels = ChooseCollisionKernels();
    while (true) {
        const int64_t row = kernels.findMeetingRow(blocks);
        if (row == blocks.rows) return false;
        if (stepX == 1) return true;
        blocks.a.firstRow += row * blocks.a.pitch;
        blocks.b.firstRow += row * blocks.b.pitch;
        for (int64_t x = firstSample; x < blocks.width; x += stepX)
            if (IsOpaque(blocks.a, x) && IsOpaque(blocks.b, x)) return true;
        blocks.rows -= row + 1;
        if (blocks.rows == 0) return false;
        blocks.a.firstRow += blocks.a.pitch;
        blocks.b.firstRow += blocks.b.pitch;
    }
}

bool DoRowsMeet(const Side &a, const Side &b, Span x, int64_t v, int64_t stepX) noexcept {
    uint32_t coloursA[kPiece], coloursB[kPiece];
    for (int64_t u = x.first; u < x.end; u += kPiece) {
        const auto count = static_cast<int32_t>(std::min<int64_t>(kPiece, x.end - u));
        const PixelBlocks row{a.RowAt(u, v, count, coloursA), b.RowAt(u, v, count, coloursB), count, 1};
        if (DoBlocksMeet(row, NextSample(u, stepX) - u, stepX)) return true;
    }
    return false;
}

// Both inside their pictures.
bool DoPicturesMeet(const Side &a, const Side &b, const Area &area, Steps steps) noexcept {
    int64_t v = NextSample(area.y.first, steps.y);
    if (a.HasWords() && b.HasWords()) {
        const int64_t u = area.x.first, rows = (area.y.end - v + steps.y - 1) / steps.y;
        const auto width = static_cast<int32_t>(area.x.end - u);
        return rows > 0 && DoBlocksMeet({a.BlockAt(u, v, steps.y), b.BlockAt(u, v, steps.y), width, rows},
                                        NextSample(u, steps.x) - u, steps.x);
    }
    for (; v < area.y.end; v += steps.y)
        if (DoRowsMeet(a, b, area.x, v, steps.x)) return true;
    return false;
}

// The area lies wholly inside or wholly outside each picture.
bool DoMeetInPart(const Side &a, const Side &b, const Area &area, Steps steps) noexcept {
    const bool isInA = a.IsInside(area.x.first, area.y.first), isInB = b.IsInside(area.x.first, area.y.first);
    if ((!isInA && !a.IsOpaqueOutside()) || (!isInB && !b.IsOpaqueOutside())) return false;
    if (!isInA && !isInB) return HasSample(area.x, steps.x) && HasSample(area.y, steps.y);
    // What is opaque all over leaves the matter to the other one.
    return DoPicturesMeet(isInA ? a : b, isInB ? b : a, area, steps);
}

// Where a span is cut by the edges of both pictures.
std::array<int64_t, 6> CutAt(Span span, Span a, Span b) noexcept {
    std::array<int64_t, 6> cuts{span.first, a.first, a.end, b.first, b.end, span.end};
    for (int64_t &cut : cuts) cut = std::clamp(cut, span.first, span.end);
    std::sort(cuts.begin(), cuts.end());
    return cuts;
}

bool DoMeetIn(const Side &a, const Side &b, const Area &area, Steps steps) noexcept {
    if (area.x.first >= area.x.end || area.y.first >= area.y.end) return false;
    const auto columns = CutAt(area.x, a.Inside().x, b.Inside().x);
    const auto rows = CutAt(area.y, a.Inside().y, b.Inside().y);
    for (size_t row = 0; row + 1 < rows.size(); ++row)
        for (size_t column = 0; column + 1 < columns.size(); ++column) {
            const Area part{{columns[column], columns[column + 1]}, {rows[row], rows[row + 1]}};
            const bool isEmpty = part.x.first == part.x.end || part.y.first == part.y.end;
            if (!isEmpty && DoMeetInPart(a, b, part, steps)) return true;
        }
    return false;
}

// The columns of a frame that get into its list of points: all of them, unless one with a point in it has the
// X of the mark at the list's end.
int64_t ListedColumns(const Side &side, const Frame &frame, Steps steps) noexcept {
    const int64_t column = int64_t{kPointListEnd} - frame.x;
    if (column < 0 || column >= frame.width) return frame.width;
    return DoMeetIn(side, side, {{column, column + 1}, {0, frame.height}}, steps) ? column : frame.width;
}

bool DoFramesMeet(const Frame &coarse, const Frame &fine, Steps steps) noexcept {
    const platform::SurfacePairAccess pictures(coarse.image, fine.image);
    if (pictures.TargetView().topRow == nullptr || pictures.SourceView().topRow == nullptr) return false;
    const Side coarseSide(pictures.TargetView(), coarse);
    Side fineSide(pictures.SourceView(), fine);
    const int64_t coarseColumns = ListedColumns(coarseSide, coarse, steps);
    const int64_t fineColumns = ListedColumns(fineSide, fine, {1, 1});
    const int64_t x = int64_t{fine.x} - coarse.x, y = int64_t{fine.y} - coarse.y;
    fineSide.ShiftBy(-x, -y);
    const Area overlap{Intersect({0, coarseColumns}, {x, x + fineColumns}),
                       Intersect({0, coarse.height}, {y, y + fine.height})};
    return DoMeetIn(coarseSide, fineSide, overlap, steps);
}

}  // namespace

bool DoPixelsMeet(const SpriteRecord &a, const SpriteRecord &b, int32_t stepX, int32_t stepY) noexcept {
    const Frame frameA = LoadFrame(a), frameB = LoadFrame(b);
    if (frameA.width < 1 || frameA.height < 1 || frameB.width < 1 || frameB.height < 1) return false;
    const bool isFirstCoarse = frameA.Size() > frameB.Size();
    return DoFramesMeet(isFirstCoarse ? frameA : frameB, isFirstCoarse ? frameB : frameA, {stepX, stepY});
}

}  // namespace fenlight
