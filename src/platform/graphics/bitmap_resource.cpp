// SPDX-License-Identifier: Zlib
#include "platform/graphics/bitmap_resource.h"

#include <cstring>

#include "fenlight/platform/system.h"
#include "platform/graphics/dib_layout.h"

namespace fenlight::platform {
namespace {

constexpr uintptr_t kBitmapType = 2;
constexpr size_t kFileHeaderBytes = 14;
constexpr size_t kBitsOffsetAt = 10;

// A header with its colour table, and where the pixels begin behind the header's first byte.
struct PackedBitmap {
    std::span<const uint8_t> bytes;
    size_t bitsOffset = 0;  // 0: right behind the colour table
};

bool HasFileHeader(std::span<const uint8_t> bytes) {
    return bytes.size() >= kFileHeaderBytes && bytes[0] == 'B' && bytes[1] == 'M';
}

PackedBitmap Unwrap(std::span<const uint8_t> bytes) {
    if (!HasFileHeader(bytes)) return {bytes, 0};
    uint32_t offset = 0;
    std::memcpy(&offset, bytes.data() + kBitsOffsetAt, sizeof(offset));
    // An offset that points into the file header is none.
    return {bytes.subspan(kFileHeaderBytes), offset > kFileHeaderBytes ? offset - kFileHeaderBytes : 0};
}

// The rows of the picture in the order of memory, empty where the bytes end too early. Where they do not, the
// colour table is there too.
std::span<const uint8_t> FindRows(const PackedBitmap &packed, const DibLayout &layout) {
    const size_t behindTable = layout.headerBytes + static_cast<size_t>(layout.colours) * sizeof(RGBQUAD);
    const size_t start = packed.bitsOffset != 0 ? packed.bitsOffset : behindTable;
    const auto needed = static_cast<size_t>(layout.Pitch() * layout.height);
    if (start < behindTable || start > packed.bytes.size() || packed.bytes.size() - start < needed) return {};
    return packed.bytes.subspan(start, needed);
}

bool IsBlackAndWhite(const DibLayout &layout, const Palette &palette) {
    return layout.format == PixelFormat::Indexed1 && layout.colours == 2 && palette[0] == 0 &&
           palette[1] == 0xFFFFFF;
}

void CopyRows(const PixelView &view, const DibLayout &layout, std::span<const uint8_t> rows) {
    const auto pitch = static_cast<size_t>(layout.Pitch());
    const auto rowBytes = static_cast<size_t>(RowBytes(layout.width, layout.format, 1));
    for (int32_t line = 0; line < layout.height; ++line) {
        const int32_t y = layout.isTopDown ? line : layout.height - 1 - line;
        std::memcpy(view.Row(y), rows.data() + static_cast<size_t>(line) * pitch, rowBytes);
    }
}

}  // namespace

std::span<const uint8_t> FindBitmapResource(HINSTANCE module, const char *name) noexcept {
    const HRSRC resource = FindResourceA(module, name, reinterpret_cast<const char *>(kBitmapType));
    if (resource == 0) return {};
    const void *bytes = LockResource(LoadResource(module, resource));
    if (bytes == nullptr) return {};
    return {static_cast<const uint8_t *>(bytes), SizeofResource(module, resource)};
}

Picture ReadBitmapResource(std::span<const uint8_t> bytes) noexcept {
    const PackedBitmap packed = Unwrap(bytes);
    DibLayout layout;
    if (packed.bytes.size() < sizeof(BITMAPINFOHEADER)) return {};
    if (!ReadDibLayout(packed.bytes.data(), layout)) return {};
    const std::span<const uint8_t> rows = FindRows(packed, layout);
    if (rows.empty()) return {};
    const Palette palette = ReadColourTable(packed.bytes.data(), layout);
    PictureShape shape{.width = layout.width, .height = layout.height, .format = layout.format};
    if (IsBlackAndWhite(layout, palette)) shape.format = PixelFormat::Mono;
    shape.palette = std::span(palette).first(static_cast<size_t>(layout.colours));
    Picture picture = MakePicture(shape);
    if (picture.memory != nullptr) CopyRows(picture.view, layout, rows);
    return picture;
}

}  // namespace fenlight::platform
