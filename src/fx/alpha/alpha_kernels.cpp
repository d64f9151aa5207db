// SPDX-License-Identifier: Zlib
#include "fx/alpha/alpha_kernels.h"

#include "fx/alpha/alpha_loops.h"

namespace fenlight {
namespace {

void WidenPixel(uint8_t *image, const uint8_t *colours, int alpha) {
    image[0] = colours[2];
    image[1] = colours[1];
    image[2] = colours[0];
    image[3] = static_cast<uint8_t>(alpha);
}

void NarrowPixel(uint8_t *colours, const uint8_t *image) {
    colours[0] = image[2];
    colours[1] = image[1];
    colours[2] = image[0];
}

void Widen(uint8_t *image, const uint8_t *colours, int64_t pixels) noexcept {
    for (int64_t i = 0; i < pixels; ++i) WidenPixel(image + 4 * i, colours + 3 * i, 255);
}

void WidenWithAlpha(uint8_t *image, const uint8_t *colours, const uint8_t *greys, int64_t pixels) noexcept {
    for (int64_t i = 0; i < pixels; ++i) {
        const uint8_t *grey = greys + 3 * i;
        WidenPixel(image + 4 * i, colours + 3 * i, (grey[0] + grey[1] + grey[2]) / 3);
    }
}

void Narrow(uint8_t *colours, const uint8_t *image, int64_t pixels) noexcept {
    for (int64_t i = 0; i < pixels; ++i) NarrowPixel(colours + 3 * i, image + 4 * i);
}

void NarrowWithAlpha(uint8_t *colours, uint8_t *greys, const uint8_t *image, int64_t pixels) noexcept {
    for (int64_t i = 0; i < pixels; ++i) {
        NarrowPixel(colours + 3 * i, image + 4 * i);
        for (int64_t byte = 0; byte < 3; ++byte) greys[3 * i + byte] = image[4 * i + 3];
    }
}

}  // namespace

extern const AlphaKernels kPlainAlphaKernels{Paint,           Widen,       WidenWithAlpha, Narrow,
                                             NarrowWithAlpha, InvertAlpha, Merge};

namespace {

constexpr KernelVersions<AlphaKernels> kVersions{
    &kPlainAlphaKernels, nullptr, FENLIGHT_ON_X86(kAvx2AlphaKernels), FENLIGHT_ON_X86(kAvx512AlphaKernels)};

}  // namespace

const AlphaKernels &CurrentAlphaKernels() noexcept { return ChooseKernels(kVersions); }

}  // namespace fenlight
