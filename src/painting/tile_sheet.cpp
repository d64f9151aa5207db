// SPDX-License-Identifier: Zlib
#include "painting/tile_sheet.h"

#include <algorithm>
#include <span>

namespace fenlight {
namespace {

// Rows that far apart fall into the same lines of the cache; one tile more than 16 rows high would not fit.
constexpr int32_t kBadWidth = 1024;  // pixels

BITMAPINFO TopDownHeader(int32_t width, int32_t height) noexcept {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    return info;
}

}  // namespace

TileSheet::~TileSheet() {
    DeleteDC(context_);
    DeleteObject(bitmap_);
}

bool TileSheet::Make(const TileArguments &map, int first, int last) noexcept {
    first_ = first;
    tileWidth_ = map.tileWidth;
    tileHeight_ = map.tileHeight;
    const int32_t width = tileWidth_ * (last - first + 1);
    const int32_t sheetWidth = width % kBadWidth == 0 ? width + 16 : width;
    const BITMAPINFO info = TopDownHeader(sheetWidth, tileHeight_);
    void *bits = nullptr;
    bitmap_ = CreateDIBSection(0, &info, DIB_RGB_COLORS, &bits, 0, 0);
    context_ = CreateCompatibleDC(0);
    if (SelectObject(context_, bitmap_) == 0) return false;
    pixels_ = static_cast<const uint8_t *>(bits);
    pitch_ = ptrdiff_t{sheetWidth} * 4;
    return BitBlt(context_, 0, 0, width, tileHeight_, map.tileDC, tileWidth_ * first, map.tileY, SRCCOPY) !=
           0;
}

TileBatch::TileBatch(const platform::PixelView &target, const TileSheet &sheet, bool isKeyed) noexcept
    : target_(target),
      sheet_(sheet),
      shape_{sheet.TileWidth(), sheet.TileHeight(), target.pitch, sheet.Pitch()},
      copy_(isKeyed ? ChooseTileKernels().copyKeyed : ChooseTileKernels().copy),
      isKeyed_(isKeyed) {}

void TileBatch::PaintPart(int64_t x, int64_t y, uint8_t tile) const noexcept {
    const int64_t left = std::max<int64_t>(-x, 0), right = std::min<int64_t>(shape_.width, target_.width - x);
    const int64_t top = std::max<int64_t>(-y, 0),
                  bottom = std::min<int64_t>(shape_.height, target_.height - y);
    if (left >= right || top >= bottom) return;
    TileShape shape = shape_;
    shape.width = static_cast<int32_t>(right - left);
    shape.height = static_cast<int32_t>(bottom - top);
    const TilePlace part{PixelAt(x + left, y + top), sheet_.TileAt(tile) + top * shape.sourcePitch + left * 4,
                         KeyOf(tile)};
    copy_(shape, {&part, 1});
}

void TileBatch::Flush() noexcept {
    copy_(shape_, std::span(places_).first(count_));
    count_ = 0;
}

}  // namespace fenlight
