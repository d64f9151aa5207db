// SPDX-License-Identifier: Zlib
// Channels of alpha images, changed in place.
#include <limits>

#include "fenlight/alpha_images.h"
#include "fx/alpha/alpha_image.h"
#include "fx/alpha/alpha_kernels.h"

namespace fenlight {
namespace {

constexpr uint32_t kMostSteps = 32;

// A byte of 1 for each channel that is meant.
constexpr uint32_t kColourBytes = 0x00010101;
constexpr uint32_t kAlphaByte = 0x01000000;

// `steps` steps towards the goal and one more are no further than that number. Steps below 0 are many.
int32_t MergeChannels(uint8_t *image, const uint8_t *goal, int32_t bytes, int32_t steps, uint32_t channels) {
    if (image == nullptr || goal == nullptr) return 0;
    const uint32_t limit = std::min(static_cast<uint32_t>(steps), kMostSteps) + 1;
    const int64_t count = CurrentAlphaKernels().merge(image, goal, AlphaPixels(bytes), limit * channels);
    return static_cast<int32_t>(std::min<int64_t>(count, std::numeric_limits<int32_t>::max()));
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

void InvertChannelPng(uint8_t *image, int32_t bytes) noexcept {
    if (image != nullptr) CurrentAlphaKernels().invertAlpha(image, AlphaPixels(bytes));
}

int32_t MergeChannelPng(uint8_t *image, const uint8_t *goal, int32_t bytes, int32_t steps) noexcept {
    return MergeChannels(image, goal, bytes, steps, kAlphaByte);
}

int32_t MergeImagePng(uint8_t *image, const uint8_t *goal, int32_t bytes, int32_t steps) noexcept {
    return MergeChannels(image, goal, bytes, steps, kColourBytes);
}
