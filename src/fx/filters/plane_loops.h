// SPDX-License-Identifier: Zlib
// Loops over pixels as one vector for each colour, for the versions that have such vectors. The file that
// includes this one includes one of the colour_planes headers before and defines, for its width,
//
//   Vector                              bytes of kPlanePixels pixels
//   GreyOf(planes)                      a third of each pixel's sum, rounded down
//   StoreGrey(pixels, vector)           three equal bytes for each of the vector
//   IsLight(planes, limit)              all ones where the sum is `limit` or more
//   PlaneOf(byte)                       the byte for each pixel
//   Matches                             which pixels are equal, for Any and Choose
//   Match(planes, other), Any(matches), Choose(matches, chosen, else)
//   StoreBlackReversed(map, planes)     1 for black pixels, else 0, the last pixel first
//
// What is left behind the last whole group goes to the plain version.
#pragma once

#include "fx/filters/filter_kernels.h"

namespace fenlight {
namespace {

inline void GreyPixels(uint8_t *pixels, int64_t count) noexcept {
    for (; count >= kPlanePixels; count -= kPlanePixels, pixels += kPlaneBytes)
        StoreGrey(pixels, GreyOf(LoadPlanes(pixels)));
    kPlainFilterKernels.grey(pixels, count);
}

inline void SplitPixels(uint8_t *target, const uint8_t *source, int64_t count, int32_t limit) noexcept {
    for (; count >= kPlanePixels; count -= kPlanePixels, source += kPlaneBytes, target += kPlaneBytes)
        StoreGrey(target, IsLight(LoadPlanes(source), limit));
    kPlainFilterKernels.split(target, source, count, limit);
}

inline ColourPlanes PlanesOf(const PixelBytes &pixel) {
    return {PlaneOf(pixel[0]), PlaneOf(pixel[1]), PlaneOf(pixel[2])};
}

// Stores nothing where nothing matches.
inline void ReplacePixels(uint8_t *pixels, int64_t count, const PixelBytes &from,
                          const PixelBytes &to) noexcept {
    const ColourPlanes old = PlanesOf(from), fresh = PlanesOf(to);
    for (; count >= kPlanePixels; count -= kPlanePixels, pixels += kPlaneBytes) {
        const ColourPlanes planes = LoadPlanes(pixels);
        const Matches matches = Match(planes, old);
        if (!Any(matches)) continue;
        StorePlanes(pixels,
                    {Choose(matches, fresh.blue, planes.blue), Choose(matches, fresh.green, planes.green),
                     Choose(matches, fresh.red, planes.red)});
    }
    kPlainFilterKernels.replace(pixels, count, from, to);
}

inline void MapBlackPixels(uint8_t *map, const uint8_t *pixels, int64_t count) noexcept {
    for (; count >= kPlanePixels; count -= kPlanePixels, pixels += kPlaneBytes)
        StoreBlackReversed(map + count - kPlanePixels, LoadPlanes(pixels));
    kPlainFilterKernels.mapBlack(map, pixels, count);
}

}  // namespace
}  // namespace fenlight
