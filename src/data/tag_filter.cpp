// SPDX-License-Identifier: Zlib
#include "data/tag_filter.h"

#include "data/tag_step.h"
#include "data/text_overlap.h"
#include "fenlight/text.h"

namespace fenlight {
namespace {

int64_t FilterTagsPlain(const uint8_t *source, int64_t length, uint8_t *destination,
                        const TagRule &rule) noexcept {
    TagBytes output{destination, destination, 0};
    FilterByteByByte(source, length, rule, false, output);
    return output.end - destination;
}

constexpr KernelVersions<TagKernels> kTags{&kPlainTags, nullptr, FENLIGHT_ON_X86(kAvx2Tags)};

// Twice the source is the most that stray delimiters can make of it. Otherwise the output never grows, so a
// destination at or before the source is always behind what was read.
bool CanUseBlocks(const uint8_t *source, int64_t length, const uint8_t *destination, const TagRule &rule) {
    const bool canGrow = rule.keepsDelimiters && !rule.keepsInside;
    if (!canGrow && reinterpret_cast<uintptr_t>(destination) <= reinterpret_cast<uintptr_t>(source))
        return true;
    return !DoOverlap(source, length, destination, canGrow ? 2 * length : length);
}

}  // namespace

const TagKernels kPlainTags{FilterTagsPlain};

int64_t FilterTags(const uint8_t *source, int64_t length, uint8_t *destination,
                   const TagRule &rule) noexcept {
    const TagKernels &kernels =
        CanUseBlocks(source, length, destination, rule) ? ChooseKernels(kTags) : kPlainTags;
    return kernels.filterTags(source, length, destination, rule);
}

}  // namespace fenlight

using namespace fenlight;

int32_t DeleteTags(const void *source, int32_t sourceLength, void *destination, int32_t openChar,
                   int32_t closeChar, int32_t flags) noexcept {
    if (sourceLength <= 0) return 0;
    const TagRule rule{static_cast<uint8_t>(openChar), static_cast<uint8_t>(closeChar), (flags & 1) != 0,
                       (flags & 2) != 0};
    auto *const output = static_cast<uint8_t *>(destination);
    const int64_t written = FilterTags(static_cast<const uint8_t *>(source), sourceLength, output, rule);
    output[written] = 0;
    return static_cast<int32_t>(written);
}
