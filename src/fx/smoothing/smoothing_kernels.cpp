// SPDX-License-Identifier: Zlib
#include "fx/smoothing/smoothing_kernels.h"

#include "fx/smoothing/smoothing_loops.h"

namespace fenlight {
namespace {

void MarkPixels(uint64_t *marks, const uint8_t *row, int64_t pixels, uint32_t colour) noexcept {
    for (int64_t start = 0; start < pixels; start += kMarksPerWord) {
        const int64_t end = pixels - start < kMarksPerWord ? pixels - start : kMarksPerWord;
        uint64_t word = 0;
        for (int64_t i = 0; i < end; ++i) {
            const uint8_t *pixel = row + 3 * (start + i);
            const uint32_t own = uint32_t{pixel[0]} << 16 | uint32_t{pixel[1]} << 8 | pixel[2];
            word |= uint64_t{own == colour} << 3 * i;
        }
        *marks++ = word;
    }
}

void TakePixels(uint8_t *row, const uint8_t *kept, const uint64_t *marks, int64_t pixels) noexcept {
    for (int64_t i = 0; i < pixels; ++i) {
        if ((marks[i / kMarksPerWord] >> 3 * (i % kMarksPerWord) & 1) == 0) continue;
        for (int64_t byte = 3 * i; byte < 3 * i + 3; ++byte) row[byte] = static_cast<uint8_t>(~kept[byte]);
    }
}

}  // namespace

extern const SmoothingKernels kPlainSmoothingKernels{AddBefore,  Narrow,  AddAcross, SmoothMasked,
                                                     FogMasked,  Keep,    Average,   AverageWithCentre,
                                                     MarkPixels, MarkFar, TakePixels};

const SmoothingKernels &ChooseSmoothingKernels() noexcept {
    static constexpr KernelVersions<SmoothingKernels> kVersions{&kPlainSmoothingKernels, nullptr,
                                                                FENLIGHT_ON_X86(kAvx2SmoothingKernels),
                                                                FENLIGHT_ON_X86(kAvx512SmoothingKernels)};
    return ChooseKernels(kVersions);
}

}  // namespace fenlight
