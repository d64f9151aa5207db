// SPDX-License-Identifier: Zlib
// The calls that make and load bitmaps.
#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/graphics/bitmap_resource.h"
#include "platform/graphics/context.h"
#include "platform/graphics/dib_layout.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

constexpr PictureShape kOneMonochromePixel{.width = 1, .height = 1, .format = PixelFormat::Mono};

// In the format of what is selected into the context, with its colours. The locks end before the handle is
// given, because giving it takes the object mutex.
Picture MakeCompatiblePicture(HDC handle, int32_t width, int32_t height) {
    const LockedContext context(handle);
    if (!context) return {};
    if (width == 0 || height == 0) return MakePicture(kOneMonochromePixel);
    const PixelView &view = context.View();
    const std::span<const uint32_t> palette(view.palette, static_cast<size_t>(view.paletteCount));
    return MakePicture({.width = width, .height = height, .format = view.format, .palette = palette});
}

// One bit without a colour table is monochrome.
bool ReadDeviceFormat(UINT bitCount, PixelFormat &format) {
    if (!ReadFormat(bitCount, format)) return false;
    if (format == PixelFormat::Indexed1) format = PixelFormat::Mono;
    return true;
}

// The bits of CreateBitmap: rows from the top, each on two bytes.
void CopyDeviceBits(const PixelView &view, const void *bits) {
    const auto sourcePitch = static_cast<size_t>(RowBytes(view.width, view.format, 2));
    const auto rowBytes = static_cast<size_t>(RowBytes(view.width, view.format, 1));
    const auto *row = static_cast<const uint8_t *>(bits);
    for (int32_t y = 0; y < view.height; ++y, row += sourcePitch) std::memcpy(view.Row(y), row, rowBytes);
}

Picture MakeSection(const BITMAPINFO *info) {
    DibLayout layout;
    if (!ReadDibLayout(info, layout)) return {};
    const Palette palette = ReadColourTable(info, layout);
    return MakePicture({.width = layout.width,
                        .height = layout.height,
                        .format = layout.format,
                        .isTopDown = layout.isTopDown,
                        .hasPackedRows = true,
                        .palette = std::span(palette).first(static_cast<size_t>(layout.colours))});
}

uint8_t *LowestRow(const PixelView &view) { return std::min(view.Row(0), view.Row(view.height - 1)); }

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HBITMAP CreateCompatibleBitmap(HDC context, int32_t width, int32_t height) noexcept {
    PassSuspendGate();
    if (OperationFails(Operation::Bitmap)) return 0;
    return PublishBitmap(MakeCompatiblePicture(context, width, height));
}

HBITMAP CreateBitmap(int32_t width, int32_t height, UINT planes, UINT bitCount, const void *bits) noexcept {
    PassSuspendGate();
    PictureShape shape = kOneMonochromePixel;
    if (planes != 1 || !ReadDeviceFormat(bitCount, shape.format)) return 0;
    if (OperationFails(Operation::Bitmap)) return 0;
    if (width == 0 || height == 0) return PublishBitmap(MakePicture(kOneMonochromePixel));
    shape.width = width;
    shape.height = height;
    shape.palette = DefaultPalette(shape.format);
    Picture picture = MakePicture(shape);
    if (picture.memory != nullptr && bits != nullptr) CopyDeviceBits(picture.view, bits);
    return PublishBitmap(std::move(picture));
}

HBITMAP CreateDIBSection(HDC context, const BITMAPINFO *info, UINT usage, void **bits, HANDLE section,
                         DWORD offset) noexcept {
    PassSuspendGate();
    if (bits != nullptr) *bits = nullptr;
    if (usage != DIB_RGB_COLORS || section != 0 || offset != 0) return 0;
    if (context != 0 && FindContext(context) == nullptr) return 0;
    if (OperationFails(Operation::Bitmap)) return 0;
    Picture picture = MakeSection(info);
    if (picture.memory == nullptr) return 0;
    uint8_t *lowestRow = LowestRow(picture.view);
    const HBITMAP bitmap = PublishBitmap(std::move(picture));
    if (bitmap != 0 && bits != nullptr) *bits = lowestRow;
    return bitmap;
}

HBITMAP LoadBitmapA(HINSTANCE module, const char *name) noexcept {
    PassSuspendGate();
    const std::span<const uint8_t> resource = FindBitmapResource(module, name);
    if (resource.empty() || OperationFails(Operation::Bitmap)) return 0;
    return PublishBitmap(ReadBitmapResource(resource));
}
