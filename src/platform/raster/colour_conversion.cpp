// SPDX-License-Identifier: Zlib
#include "platform/raster/colour_conversion.h"

#include <algorithm>
#include <cstring>

namespace fenlight::platform {
namespace {

constexpr uint32_t kUnknown = 0xFFFFFFFF;
constexpr int32_t kPaletteSize = 256;
constexpr std::array<uint32_t, kPaletteSize> kBlackPalette{};

const uint32_t *PaletteOf(const PixelView &view) {
    return view.palette != nullptr ? view.palette : kBlackPalette.data();
}

int32_t SearchedColours(const PixelView &view) {
    return std::clamp(view.paletteCount, 0, 1 << BitsPerPixel(view.format));
}

int32_t Distance(uint32_t a, uint32_t b) {
    const auto channel = [=](int shift) {
        const int32_t difference =
            static_cast<int32_t>(a >> shift & 0xFF) - static_cast<int32_t>(b >> shift & 0xFF);
        return difference * difference;
    };
    return channel(0) + channel(8) + channel(16);
}

uint32_t NearestIndex(const PixelView &view, uint32_t colour) {
    const uint32_t *palette = PaletteOf(view);
    const int32_t count = SearchedColours(view);
    uint32_t best = 0;
    int32_t bestDistance = INT32_MAX;
    for (int32_t i = 0; i < count && bestDistance != 0; ++i) {
        const int32_t distance = Distance(palette[i], colour);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = static_cast<uint32_t>(i);
        }
    }
    return best;
}

bool SamePalette(const PixelView &a, const PixelView &b) {
    if (a.format != b.format) return false;
    const uint32_t *first = PaletteOf(a);
    const uint32_t *second = PaletteOf(b);
    const size_t entries = size_t{1} << BitsPerPixel(a.format);
    return first == second || std::memcmp(first, second, entries * sizeof *first) == 0;
}

}  // namespace

bool KeepsNumbers(const PixelView &source, const PixelView &target) noexcept {
    if (source.format == target.format) return !HasPalette(source.format) || SamePalette(source, target);
    return source.format == PixelFormat::Bgr24 && target.format == PixelFormat::Bgrx32;
}

uint32_t MatchColour(const PixelView &view, uint32_t colour) noexcept {
    colour &= kColourBits;
    if (view.format == PixelFormat::Mono) {
        return Distance(colour, kColourBits) < Distance(colour, 0) ? 1 : 0;
    }
    return HasPalette(view.format) ? NearestIndex(view, colour) : colour;
}

uint32_t ColourOfValue(const PixelView &view, uint32_t value) noexcept {
    if (view.format == PixelFormat::Mono) return value != 0 ? kColourBits : 0;
    return (HasPalette(view.format) ? PaletteOf(view)[value & 0xFF] : value) & kColourBits;
}

ValueConverter::ValueConverter(const PixelView &source, const PixelView &target,
                               const TransferColours &colours) noexcept
    : source_(source), target_(target), background_(WordOfColour(colours.sourceBackground)) {
    const bool toColour = target.format == PixelFormat::Bgr24 || target.format == PixelFormat::Bgrx32;
    if (KeepsNumbers(source, target)) {
        way_ = Way::Identity;
    } else if (source.format == PixelFormat::Mono) {
        way_ = Way::Table;
        table_[0] = MatchColour(target, SwapRedBlue(colours.targetText));
        table_[1] = MatchColour(target, SwapRedBlue(colours.targetBackground));
    } else if (HasPalette(source.format)) {
        way_ = toColour ? Way::Palette : Way::Table;
        if (way_ == Way::Table) std::fill_n(table_.begin(), 1 << BitsPerPixel(source.format), kUnknown);
    } else if (target.format == PixelFormat::Mono) {
        way_ = Way::MatchBackground;
    } else if (toColour) {
        way_ = Way::DropUnusedByte;
    } else {
        way_ = Way::Search;
        colours_.fill(kUnknown);
    }
}

void ValueConverter::Convert(uint32_t *values, int32_t count) noexcept {
    switch (way_) {
        case Way::Identity:
            return;
        case Way::Palette:
            for (int32_t i = 0; i < count; ++i) values[i] = ColourOfValue(source_, values[i]);
            return;
        case Way::Table:
            return ConvertByTable(values, count);
        case Way::DropUnusedByte:
            for (int32_t i = 0; i < count; ++i) values[i] &= kColourBits;
            return;
        case Way::MatchBackground:
            for (int32_t i = 0; i < count; ++i) values[i] = (values[i] & kColourBits) == background_ ? 1 : 0;
            return;
        case Way::Search:
            return ConvertBySearch(values, count);
    }
}

void ValueConverter::ConvertByTable(uint32_t *values, int32_t count) noexcept {
    for (int32_t i = 0; i < count; ++i) {
        uint32_t &entry = table_[values[i]];
        if (entry == kUnknown) {
            const uint32_t colour = ColourOfValue(source_, values[i]);
            entry = target_.format == PixelFormat::Mono ? (colour == background_ ? 1 : 0)
                                                        : MatchColour(target_, colour);
        }
        values[i] = entry;
    }
}

void ValueConverter::ConvertBySearch(uint32_t *values, int32_t count) noexcept {
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t colour = values[i] & kColourBits;
        // Multiplicative hashing; the upper byte of the product depends on all bits of the colour.
        const uint32_t place = colour * 0x9E3779B1u >> 24;
        if (colours_[place] != colour) {
            colours_[place] = colour;
            table_[place] = MatchColour(target_, colour);
        }
        values[i] = table_[place];
    }
}

}  // namespace fenlight::platform
