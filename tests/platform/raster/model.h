// SPDX-License-Identifier: Zlib
// The judge of the raster tests: bitmaps whose pixels are read bit by bit, and transfers done pixel by pixel
// from their definition, on a picture of the source taken before.
#pragma once

#include <array>
#include <random>
#include <string>
#include <vector>

#include "platform/raster/raster.h"

namespace fenlight::test {

using platform::PixelFormat;
using platform::PixelView;

inline constexpr std::array kAllFormats{PixelFormat::Mono,     PixelFormat::Indexed1, PixelFormat::Indexed4,
                                        PixelFormat::Indexed8, PixelFormat::Bgr24,    PixelFormat::Bgrx32};
inline bool IsPalette(PixelFormat format) {
    return format != PixelFormat::Mono && platform::BitsPerPixel(format) <= 8;
}

// A bitmap in memory of its own with guard bytes around, filled at random. The start and the pitch are odd,
// so that every row begins at another alignment. One of an odd width ends with its last pixel, so that
// AddressSanitizer sees whatever is read behind it.
class Bitmap {
  public:
    Bitmap(PixelFormat format, int width, int height, std::mt19937 &random, bool isBottomUp = false)
        : bits_(platform::BitsPerPixel(format)), palette_(256) {
        const ptrdiff_t pitch = (width * bits_ + 7) / 8 + kGap;
        bytes_.resize(static_cast<size_t>(pitch * height + kGuard + (width % 2 == 0 ? kGuard : -kGap)));
        for (uint8_t &byte : bytes_) byte = static_cast<uint8_t>(random());
        // Few colours, so that keys and backgrounds match often; black and white among them.
        const int count = 1 << std::min(bits_, 4);
        for (int i = 0; i < 256; ++i)
            palette_[static_cast<size_t>(i)] = kColours[(random() + 1) % kColours.size()];
        palette_[0] = 0;
        palette_[1] = 0xFFFFFF;
        if (bits_ >= 24) {
            for (int64_t i = 0; i < int64_t{width} * height; ++i) {
                const uint32_t colour = kColours[random() % kColours.size()];
                uint8_t *pixel = &bytes_[kGuard] + i / width * pitch + i % width * (bits_ / 8);
                for (int c = 0; c < 3; ++c) pixel[c] = static_cast<uint8_t>(colour >> 8 * c);
            }
        }
        view_ = {
            &bytes_[kGuard], pitch, width, height, format, palette_.data(), IsPalette(format) ? count : 0};
        if (bits_ == 8) view_.paletteCount = 256;
        if (isBottomUp) {
            view_.topRow += pitch * (height - 1);
            view_.pitch = -pitch;
        }
    }
    Bitmap(const Bitmap &) = delete;

    const PixelView &View() const { return view_; }
    std::vector<uint8_t> &Bytes() { return bytes_; }
    std::vector<uint32_t> &Palette() { return palette_; }

    static constexpr std::array<uint32_t, 7> kColours{0x000000, 0xFFFFFF, 0x102030, 0xFF0000,
                                                      0x00FF01, 0x808080, 0x102031};

  private:
    static constexpr int kGuard = 37, kGap = 3;
    int bits_;
    std::vector<uint8_t> bytes_;
    std::vector<uint32_t> palette_;
    PixelView view_;
};

// Pixels as whole numbers by counting bits from the left of the row (bytes of one pixel from the right).
inline uint32_t RawPixel(const PixelView &view, int64_t x, int64_t y) {
    const int bits = platform::BitsPerPixel(view.format);
    const uint8_t *row = view.topRow + y * view.pitch;
    uint32_t value = 0;
    for (int bit = 0; bit < bits; ++bit) {
        const int64_t place = bits < 8 ? x * bits + bit : x * bits + (bits - 8 - bit / 8 * 8) + bit % 8;
        value = value << 1 | ((row[place / 8] >> (7 - place % 8)) & 1u);
    }
    return value;
}

inline void SetRawPixel(const PixelView &view, int64_t x, int64_t y, uint32_t value) {
    const int bits = platform::BitsPerPixel(view.format);
    uint8_t *row = view.topRow + y * view.pitch;
    for (int bit = 0; bit < bits; ++bit) {
        const int64_t place = bits < 8 ? x * bits + bit : x * bits + (bits - 8 - bit / 8 * 8) + bit % 8;
        const auto mask = static_cast<uint8_t>(0x80 >> place % 8);
        const bool isSet = (value >> (bits - 1 - bit) & 1) != 0;
        row[place / 8] = static_cast<uint8_t>(isSet ? row[place / 8] | mask : row[place / 8] & ~mask);
    }
}

inline uint32_t ModelColour(const PixelView &view, uint32_t raw) {
    if (view.format == PixelFormat::Mono) return raw != 0 ? 0xFFFFFF : 0;
    return IsPalette(view.format) ? view.palette[raw] : raw & 0xFFFFFF;
}

inline int64_t ModelDistance(uint32_t a, uint32_t b) {
    int64_t sum = 0;
    for (int i = 0; i < 3; ++i, a >>= 8, b >>= 8) {
        const int64_t d = static_cast<int64_t>(a % 256) - static_cast<int64_t>(b % 256);
        sum += d * d;
    }
    return sum;
}

inline uint32_t ModelMatch(const PixelView &view, uint32_t colour) {
    if (view.format == PixelFormat::Mono) return ModelDistance(colour, 0xFFFFFF) < ModelDistance(colour, 0);
    if (!IsPalette(view.format)) return colour;
    uint32_t best = 0;
    for (uint32_t i = 1; i < static_cast<uint32_t>(view.paletteCount); ++i) {
        if (ModelDistance(view.palette[i], colour) < ModelDistance(view.palette[best], colour)) best = i;
    }
    return best;
}

// What the source pixel becomes in the target before it is combined.
inline uint32_t ModelConvert(const PixelView &source, const PixelView &target, uint32_t raw,
                             const platform::TransferColours &colours) {
    const bool isKept =
        source.format == target.format &&
        (!IsPalette(source.format) ||
         std::equal(source.palette, source.palette + (1 << platform::BitsPerPixel(source.format)),
                    target.palette));
    if (isKept) return raw;
    if (target.format == PixelFormat::Mono) {
        return ModelColour(source, raw) == platform::SwapRedBlue(colours.sourceBackground);
    }
    if (source.format != PixelFormat::Mono) return ModelMatch(target, ModelColour(source, raw));
    const COLORREF colour = raw != 0 ? colours.targetBackground : colours.targetText;
    return ModelMatch(target, platform::SwapRedBlue(colour));
}

// The truth table looked up bit by bit.
inline uint32_t ModelCombine(DWORD code, uint32_t pattern, uint32_t source, uint32_t target) {
    uint32_t result = 0;
    for (unsigned bit = 0; bit < 32; ++bit) {
        const unsigned place = (pattern >> bit & 1) * 4 + (source >> bit & 1) * 2 + (target >> bit & 1);
        result |= (code >> (16 + place) & 1) << bit;
    }
    return result;
}

// The source position of a target position in one dimension, or -1: both sides are walked from their start in
// the direction of their sign.
inline int64_t ModelSample(int64_t position, int64_t start, int64_t size, int64_t sourceStart,
                           int64_t sourceSize, int64_t sourceLimit) {
    const int64_t step = size < 0 ? start - position : position - start;
    if (step < 0 || step >= std::abs(size) || sourceSize == 0) return -1;
    const int64_t sourceStep = step * std::abs(sourceSize) / std::abs(size);
    const int64_t sample = sourceSize < 0 ? sourceStart - sourceStep : sourceStart + sourceStep;
    return sample < sourceLimit ? sample : -1;
}

// Every raw pixel of a view, and back.
inline std::vector<uint32_t> TakePixels(const PixelView &view) {
    std::vector<uint32_t> pixels;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) pixels.push_back(RawPixel(view, x, y));
    }
    return pixels;
}

struct Key {
    bool isUsed = false;
    COLORREF colour = 0;
};

// Applies the transfer to `target` pixel by pixel. A null source is only for codes that need none.
inline void ModelTransfer(const PixelView &target, const PixelView *source, const platform::ScaledBlock &b,
                          DWORD code, const platform::TransferColours &colours, Key key = {}) {
    const bool isRead = source != nullptr && platform::NeedsSource(code);
    const std::vector<uint32_t> before = isRead ? TakePixels(*source) : std::vector<uint32_t>{};
    const uint32_t pattern = ModelMatch(target, platform::SwapRedBlue(colours.brush));
    for (int y = 0; y < target.height; ++y) {
        const int64_t sy = ModelSample(y, b.targetY, b.targetHeight, isRead ? b.sourceY : 0,
                                       isRead ? b.sourceHeight : 1, isRead ? source->height : 1);
        for (int x = 0; x < target.width && sy >= 0; ++x) {
            const int64_t sx = ModelSample(x, b.targetX, b.targetWidth, isRead ? b.sourceX : 0,
                                           isRead ? b.sourceWidth : 1, isRead ? source->width : 1);
            if (sx < 0) continue;
            const uint32_t raw = isRead ? before[static_cast<size_t>(sy * source->width + sx)] : 0;
            if (key.isUsed && source->format == PixelFormat::Mono && raw != 0) continue;
            if (key.isUsed && source->format != PixelFormat::Mono &&
                ModelColour(*source, raw) == platform::SwapRedBlue(key.colour) && key.colour != CLR_INVALID)
                continue;
            const uint32_t number = isRead ? ModelConvert(*source, target, raw, colours) : 0;
            SetRawPixel(target, x, y, ModelCombine(code, pattern, number, RawPixel(target, x, y)));
        }
    }
}

}  // namespace fenlight::test
