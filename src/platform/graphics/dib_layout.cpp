// SPDX-License-Identifier: Zlib
#include "platform/graphics/dib_layout.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace fenlight::platform {
namespace {

constexpr uint32_t kPlainHeader = sizeof(BITMAPINFOHEADER);
constexpr uint32_t kVersion4Header = 108;
constexpr uint32_t kVersion5Header = 124;

// In formats without a table the field may hold anything.
int32_t CountColours(const BITMAPINFOHEADER &header, PixelFormat format) {
    if (!IsIndexed(format)) return 0;
    const auto most = static_cast<uint32_t>(uint64_t{1} << BitsPerPixel(format));
    return static_cast<int32_t>(header.biClrUsed == 0 ? most : std::min<uint32_t>(header.biClrUsed, most));
}

bool HasReadableSize(const BITMAPINFOHEADER &header) {
    if (header.biHeight == std::numeric_limits<int32_t>::min()) return false;
    return IsBitmapSize(header.biWidth, header.biHeight < 0 ? -header.biHeight : header.biHeight);
}

}  // namespace

PixelView DibLayout::View(void *bits, int32_t lines) const {
    const auto pitch = static_cast<ptrdiff_t>(Pitch());
    PixelView view;
    auto *first = static_cast<uint8_t *>(bits);
    view.topRow = isTopDown ? first : first + pitch * (lines - 1);
    view.pitch = isTopDown ? pitch : -pitch;
    view.width = width;
    view.height = lines;
    view.format = format;
    return view;
}

bool ReadFormat(UINT bitCount, PixelFormat &format) noexcept {
    switch (bitCount) {
        case 1:
            format = PixelFormat::Indexed1;
            return true;
        case 4:
            format = PixelFormat::Indexed4;
            return true;
        case 8:
            format = PixelFormat::Indexed8;
            return true;
        case 24:
            format = PixelFormat::Bgr24;
            return true;
        case 32:
            format = PixelFormat::Bgrx32;
            return true;
        default:
            return false;
    }
}

bool ReadDibLayout(const void *headerAddress, DibLayout &layout) noexcept {
    if (headerAddress == nullptr) return false;
    BITMAPINFOHEADER header;
    std::memcpy(&header.biSize, headerAddress, sizeof(header.biSize));
    if (header.biSize != kPlainHeader && header.biSize != kVersion4Header && header.biSize != kVersion5Header)
        return false;
    std::memcpy(&header, headerAddress, sizeof(header));
    if (header.biPlanes != 1 || header.biCompression != BI_RGB) return false;
    if (!ReadFormat(header.biBitCount, layout.format) || !HasReadableSize(header)) return false;
    layout.width = header.biWidth;
    layout.isTopDown = header.biHeight < 0;
    layout.height = layout.isTopDown ? -header.biHeight : header.biHeight;
    layout.headerBytes = header.biSize;
    layout.colours = CountColours(header, layout.format);
    return true;
}

Palette ReadColourTable(const void *header, const DibLayout &layout) noexcept {
    Palette palette{};
    const uint8_t *entry = static_cast<const uint8_t *>(header) + layout.headerBytes;
    for (int32_t index = 0; index < layout.colours; ++index, entry += sizeof(RGBQUAD))
        palette[static_cast<size_t>(index)] =
            static_cast<uint32_t>(entry[2]) << 16 | static_cast<uint32_t>(entry[1]) << 8 | entry[0];
    return palette;
}

void WriteColourTable(void *header, const DibLayout &layout, std::span<const uint32_t> colours) noexcept {
    uint8_t *entry = static_cast<uint8_t *>(header) + layout.headerBytes;
    const size_t count = std::min(colours.size(), static_cast<size_t>(layout.colours));
    for (const uint32_t colour : colours.first(count)) {
        const RGBQUAD quad{static_cast<BYTE>(colour), static_cast<BYTE>(colour >> 8),
                           static_cast<BYTE>(colour >> 16), 0};
        std::memcpy(entry, &quad, sizeof(quad));
        entry += sizeof(quad);
    }
}

}  // namespace fenlight::platform
