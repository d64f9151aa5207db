// SPDX-License-Identifier: Zlib
// From the numbers of one bitmap's pixels to those of another's. A converter belongs to one transfer on one
// thread; it looks at the palettes of both views, which must outlive it.
#pragma once

#include <array>
#include <cstdint>

#include "platform/raster/pixel_view.h"
#include "platform/raster/raster.h"

namespace fenlight::platform {

constexpr uint32_t kColourBits = 0x00FFFFFF;
// What no pixel's colour equals: the word of CLR_INVALID, which therefore matches nothing.
constexpr uint32_t kNoColour = 0xFFFFFFFF;

constexpr uint32_t WordOfColour(COLORREF colour) {
    return colour == CLR_INVALID ? kNoColour : SwapRedBlue(colour);
}
constexpr bool HasPalette(PixelFormat format) {
    return format == PixelFormat::Indexed1 || format == PixelFormat::Indexed4 ||
           format == PixelFormat::Indexed8;
}

// The number that a bitmap stores for the colour 0x00RRGGBB: the nearest palette entry (the first of equals),
// black or white, or the colour itself.
uint32_t MatchColour(const PixelView &view, uint32_t colour) noexcept;
// The colour 0x00RRGGBB of a pixel's number; 1 in a monochrome bitmap is white.
uint32_t ColourOfValue(const PixelView &view, uint32_t value) noexcept;

// Do pixels of the source keep their numbers in the target?
bool KeepsNumbers(const PixelView &source, const PixelView &target) noexcept;

class ValueConverter {
  public:
    ValueConverter(const PixelView &source, const PixelView &target, const TransferColours &colours) noexcept;

    void Convert(uint32_t *values, int32_t count) noexcept;

  private:
    enum class Way : uint8_t { Identity, Palette, Table, DropUnusedByte, MatchBackground, Search };

    void ConvertByTable(uint32_t *values, int32_t count) noexcept;
    void ConvertBySearch(uint32_t *values, int32_t count) noexcept;

    const PixelView &source_;
    const PixelView &target_;
    Way way_;
    uint32_t background_;  // the word that becomes 1 in a monochrome target
    // Table: the target's number for each of the source's, kUnknown until it is first needed. Search: the
    // same for recent colours, at a place computed from the colour; `colours_` tells which colour stands
    // there.
    std::array<uint32_t, 256> table_;
    std::array<uint32_t, 256> colours_;
};

}  // namespace fenlight::platform
