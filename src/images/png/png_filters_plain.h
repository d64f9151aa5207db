// SPDX-License-Identifier: Zlib
// The filters pixel by pixel: the version for every machine, and the ends of rows of the others. Everything
// stands in an unnamed namespace, so that each file has a copy compiled with its own instruction set.
#pragma once

#include <algorithm>

#include "images/png/png_filters.h"

namespace fenlight {
namespace {

constexpr size_t PixelBytes(PixelLayout layout) {
    switch (layout) {
        case PixelLayout::Bytes1:
            return 1;
        case PixelLayout::Bytes2:
            return 2;
        case PixelLayout::SwappedRgb:
            return 3;
        case PixelLayout::Bytes6:
            return 6;
        case PixelLayout::Bytes8:
            return 8;
        default:
            return 4;
    }
}

constexpr bool IsSwapped(PixelLayout layout) {
    return layout == PixelLayout::SwappedRgb || layout == PixelLayout::SwappedRgba;
}

// The nearest of left, up and upLeft to left + up - upLeft, in this order where two are equally near. Told
// by two comparisons with a threshold, without absolute differences.
inline int PredictPaeth(int left, int up, int upLeft) {
    const int threshold = 3 * upLeft - left - up;
    const int low = std::min(left, up);
    const int high = std::max(left, up);
    const int lowOrCorner = high <= threshold ? low : upLeft;
    return threshold <= low ? high : lowOrCorner;
}

template <PngFilter filter>
inline int Predict(int left, int up, int upLeft) {
    switch (filter) {
        case PngFilter::Sub:
            return left;
        case PngFilter::Up:
            return up;
        case PngFilter::Average:
            return (left + up) / 2;
        case PngFilter::Paeth:
            return PredictPaeth(left, up, upLeft);
        default:
            return 0;
    }
}

// From byte `start` on, the first of a pixel, with the row unfiltered up to there.
template <PixelLayout layout, PngFilter filter>
inline void UnfilterFrom(size_t start, uint8_t *row, const uint8_t *previous, const uint8_t *filtered,
                         size_t rowBytes) {
    constexpr size_t bytes = PixelBytes(layout);
    for (size_t channel = 0; channel < bytes; ++channel) {
        const size_t source = IsSwapped(layout) && channel < 3 ? 2 - channel : channel;
        int left = start > 0 ? row[start - bytes + channel] : 0;
        int upLeft = start > 0 ? previous[start - bytes + channel] : 0;
        for (size_t i = start; i < rowBytes; i += bytes) {
            const int up = previous[i + channel];
            left = (filtered[i + source] + Predict<filter>(left, up, upLeft)) & 0xFF;
            upLeft = up;
            row[i + channel] = static_cast<uint8_t>(left);
        }
    }
}

}  // namespace
}  // namespace fenlight
