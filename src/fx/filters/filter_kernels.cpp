// SPDX-License-Identifier: Zlib
#include "fx/filters/filter_kernels.h"

#include <algorithm>

#include "fx/filters/byte_loops.h"

namespace fenlight {
namespace {

int32_t SumOf(const uint8_t *pixel) { return pixel[0] + pixel[1] + pixel[2]; }

void GreyPixels(uint8_t *pixels, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i, pixels += 3) {
        const auto grey = static_cast<uint8_t>(SumOf(pixels) / 3);
        pixels[0] = pixels[1] = pixels[2] = grey;
    }
}

void SplitPixels(uint8_t *target, const uint8_t *source, int64_t count, int32_t limit) noexcept {
    for (int64_t i = 0; i < count; ++i, target += 3, source += 3) {
        const uint8_t light = SumOf(source) >= limit ? 255 : 0;
        target[0] = target[1] = target[2] = light;
    }
}

void ReplacePixels(uint8_t *pixels, int64_t count, const PixelBytes &from, const PixelBytes &to) noexcept {
    const PixelBytes old = from, fresh = to;
    for (int64_t i = 0; i < count; ++i, pixels += 3) {
        if (((pixels[0] ^ old[0]) | (pixels[1] ^ old[1]) | (pixels[2] ^ old[2])) != 0) continue;
        pixels[0] = fresh[0];
        pixels[1] = fresh[1];
        pixels[2] = fresh[2];
    }
}

void MapBlackPixels(uint8_t *map, const uint8_t *pixels, int64_t count) noexcept {
    for (int64_t i = 0; i < count; ++i, pixels += 3) map[count - 1 - i] = SumOf(pixels) == 0 ? 1 : 0;
}

}  // namespace

extern const FilterKernels kPlainFilterKernels{DarkenBytes, LightenBytes,  SharpenBytes, ApproachBytes,
                                               GreyPixels,  SplitPixels,   ShiftPixels,  ReplacePixels,
                                               FillPixels,  MapBlackPixels};

namespace {

constexpr KernelVersions<FilterKernels> kVersions{&kPlainFilterKernels, nullptr,
                                                  FENLIGHT_ON_X86(kAvx2FilterKernels),
                                                  FENLIGHT_ON_X86(kAvx512FilterKernels)};

}  // namespace

const FilterKernels &ChooseFilters() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
