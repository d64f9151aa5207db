// SPDX-License-Identifier: Zlib
#include "data/tab_expansion.h"

#include "data/text_overlap.h"
#include "fenlight/text.h"

namespace fenlight {
namespace {

int64_t ExpandTabsPlain(const uint8_t *source, int64_t length, uint8_t *destination,
                        int32_t tabWidth) noexcept {
    int64_t blanks = 0;
    for (int64_t i = 0; i < length; ++i) {
        if (source[i] != '\t') {
            *destination++ = source[i];
            continue;
        }
        for (int32_t k = 0; k < tabWidth; ++k) *destination++ = ' ';
        blanks += tabWidth;
    }
    return blanks;
}

constexpr KernelVersions<TabKernels> kTabs{&kPlainTabs, nullptr, FENLIGHT_ON_X86(kAvx2Tabs)};

}  // namespace

const TabKernels kPlainTabs{ExpandTabsPlain};

int64_t ExpandTabs(const uint8_t *source, int64_t length, uint8_t *destination, int32_t tabWidth) noexcept {
    if (length <= 0 || tabWidth <= 0) return 0;
    const bool overlaps = DoOverlap(source, length, destination, length * tabWidth);
    const TabKernels &kernels = overlaps ? kPlainTabs : ChooseKernels(kTabs);
    return kernels.expandTabs(source, length, destination, tabWidth);
}

}  // namespace fenlight

int32_t ReplaceTabs(const void *source, void *destination, int32_t sourceLength, int32_t tabWidth) noexcept {
    return static_cast<int32_t>(fenlight::ExpandTabs(static_cast<const uint8_t *>(source), sourceLength,
                                                     static_cast<uint8_t *>(destination), tabWidth));
}
