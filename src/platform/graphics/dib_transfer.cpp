// SPDX-License-Identifier: Zlib
// Pixels between bitmaps and the caller's memory. The caller's buffer becomes a pixel view, and the raster
// code does the rest.
#include <algorithm>
#include <cstring>

#include "platform/graphics/context.h"
#include "platform/graphics/dib_layout.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

int64_t ImageBytes(int32_t width, int32_t height, PixelFormat format) {
    return RowBytes(width, format, 4) * height;
}

bool AsksForHeader(const void *info) {
    BITMAPINFOHEADER header;
    std::memcpy(&header.biSize, info, sizeof(header.biSize));
    if (header.biSize < sizeof(header)) return false;
    std::memcpy(&header, info, sizeof(header));
    return header.biBitCount == 0;
}

// The header keeps its own size field. The height is positive for bitmaps of both orders: the size of a
// picture does not depend on it.
void DescribeBitmap(const PixelView &view, void *info) {
    BITMAPINFOHEADER header{};
    std::memcpy(&header.biSize, info, sizeof(header.biSize));
    header.biWidth = view.width;
    header.biHeight = view.height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(BitsPerPixel(view.format));
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<DWORD>(ImageBytes(view.width, view.height, view.format));
    std::memcpy(info, &header, sizeof(header));
}

void StoreImageSize(void *info, const DibLayout &layout) {
    const auto bytes = static_cast<DWORD>(ImageBytes(layout.width, layout.height, layout.format));
    std::memcpy(static_cast<uint8_t *>(info) + offsetof(BITMAPINFOHEADER, biSizeImage), &bytes,
                sizeof(bytes));
}

// The colours of the lines that a caller gets: the bitmap's own where the depths agree, else the default
// ones.
Palette ColoursForCaller(const PixelView &view, const DibLayout &layout) {
    Palette palette{};
    const bool hasOwn = view.format == layout.format && view.palette != nullptr;
    const auto source =
        hasOwn ? std::span<const uint32_t>(view.palette, kPaletteSize) : DefaultPalette(layout.format);
    std::copy_n(source.begin(), std::min(source.size(), static_cast<size_t>(layout.colours)),
                palette.begin());
    return palette;
}

// What the picture does not cover is 0: the bytes that fill up a row, and columns beyond the bitmap.
void ClearBehindPicture(const DibLayout &layout, int32_t columns, int32_t lines, void *bits) {
    const auto pitch = static_cast<size_t>(layout.Pitch());
    const auto covered = static_cast<size_t>(int64_t{columns} * BitsPerPixel(layout.format) / 8);
    auto *row = static_cast<uint8_t *>(bits);
    for (int32_t line = 0; line < lines; ++line, row += pitch) std::memset(row + covered, 0, pitch - covered);
}

// Lines count from the bottom in a bottom-up buffer and from the top in a top-down one.
int32_t CopyLines(const PixelView &bitmap, const DibLayout &layout, const Palette &palette, UINT firstLine,
                  UINT lineCount, void *bits) {
    const int32_t most = std::min(bitmap.height, layout.height);
    if (firstLine >= static_cast<UINT>(most)) return 0;
    const auto first = static_cast<int32_t>(firstLine);
    const auto lines = static_cast<int32_t>(std::min(lineCount, static_cast<UINT>(most - first)));
    if (lines == 0) return 0;
    PixelView buffer = layout.View(bits, lines);
    buffer.palette = palette.data();
    buffer.paletteCount = layout.colours;
    const int32_t columns = std::min(layout.width, bitmap.width);
    ClearBehindPicture(layout, columns, lines, bits);
    const int32_t sourceY = layout.isTopDown ? first : bitmap.height - first - lines;
    BlitBlock(buffer, &bitmap, {0, 0, columns, lines, 0, sourceY}, SRCCOPY, TransferColours());
    return lines;
}

int32_t CopyBitmap(const PixelView &bitmap, UINT firstLine, UINT lineCount, void *bits, void *info) {
    DibLayout layout;
    if (!ReadDibLayout(info, layout)) return 0;
    const Palette palette = ColoursForCaller(bitmap, layout);
    const int32_t lines =
        bits != nullptr ? CopyLines(bitmap, layout, palette, firstLine, lineCount, bits) : bitmap.height;
    WriteColourTable(info, layout, palette);
    StoreImageSize(info, layout);
    return lines;
}

// A buffer of lines and the rectangle of it that is to be drawn, in rows from the top of the whole picture.
struct LineBuffer {
    int64_t top, bottom;  // the rows that the buffer holds
};

LineBuffer RowsOfBuffer(const DibLayout &layout, UINT firstLine, UINT lineCount) {
    const int64_t first = std::min<int64_t>(firstLine, layout.height);
    const int64_t end = std::min<int64_t>(first + lineCount, layout.height);
    return layout.isTopDown ? LineBuffer{first, end} : LineBuffer{layout.height - end, layout.height - first};
}

struct DibRectangle {
    int64_t x, y, width, height, sourceX, sourceY;  // sourceY from the picture's top
};

// Clipped to the buffer's rows and the picture's columns.
DibRectangle ClipToBuffer(DibRectangle rectangle, const DibLayout &layout, const LineBuffer &rows) {
    const int64_t left = std::clamp<int64_t>(rectangle.sourceX, 0, layout.width);
    const int64_t right = std::clamp<int64_t>(rectangle.sourceX + rectangle.width, left, layout.width);
    const int64_t top = std::clamp(rectangle.sourceY, rows.top, rows.bottom);
    const int64_t bottom = std::clamp(rectangle.sourceY + rectangle.height, top, rows.bottom);
    return {rectangle.x + left - rectangle.sourceX,
            rectangle.y + top - rectangle.sourceY,
            right - left,
            bottom - top,
            left,
            top};
}

bool FitsCoordinate(int64_t number) { return number == static_cast<int32_t>(number); }

void DrawLines(const PixelView &target, const DibRectangle &rectangle, const PixelView &buffer,
               const LineBuffer &rows, const Context &context) {
    // Beyond 2^31 there is no target.
    if (!FitsCoordinate(rectangle.x) || !FitsCoordinate(rectangle.y)) return;
    TransferColours colours;
    colours.targetText = context.text;
    colours.targetBackground = context.background;
    colours.sourceBackground = context.background;
    const Block block{
        static_cast<int32_t>(rectangle.x),       static_cast<int32_t>(rectangle.y),
        static_cast<int32_t>(rectangle.width),   static_cast<int32_t>(rectangle.height),
        static_cast<int32_t>(rectangle.sourceX), static_cast<int32_t>(rectangle.sourceY - rows.top)};
    BlitBlock(target, &buffer, block, SRCCOPY, colours);
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

int32_t GetDIBits(HDC context, HBITMAP bitmapHandle, UINT firstLine, UINT lineCount, void *bits,
                  BITMAPINFO *info, UINT usage) noexcept {
    PassSuspendGate();
    if (info == nullptr || usage != DIB_RGB_COLORS || FindContext(context) == nullptr) return 0;
    const LockedBitmap bitmap(bitmapHandle);
    if (!bitmap) return 0;
    if (bits != nullptr || !AsksForHeader(info))
        return CopyBitmap(bitmap.View(), firstLine, lineCount, bits, info);
    DescribeBitmap(bitmap.View(), info);
    return bitmap.View().height;
}

int32_t SetDIBitsToDevice(HDC handle, int32_t x, int32_t y, DWORD width, DWORD height, int32_t sourceX,
                          int32_t sourceY, UINT firstLine, UINT lineCount, const void *bits,
                          const BITMAPINFO *info, UINT usage) noexcept {
    PassSuspendGate();
    DibLayout layout;
    if (bits == nullptr || usage != DIB_RGB_COLORS || !ReadDibLayout(info, layout)) return 0;
    const LineBuffer rows = RowsOfBuffer(layout, firstLine, lineCount);
    const int64_t sourceTop = layout.isTopDown ? sourceY : int64_t{layout.height} - sourceY - height;
    const DibRectangle rectangle = ClipToBuffer({x, y, width, height, sourceX, sourceTop}, layout, rows);
    const LockedContext context(handle);
    if (!context || rectangle.height == 0) return 0;
    const Palette palette = ReadColourTable(info, layout);
    PixelView buffer = layout.View(const_cast<void *>(bits), static_cast<int32_t>(rows.bottom - rows.top));
    buffer.palette = palette.data();
    buffer.paletteCount = layout.colours;
    DrawLines(context.View(), rectangle, buffer, rows, *context);
    context.Surface().CountChange();
    return static_cast<int32_t>(rectangle.height);
}
