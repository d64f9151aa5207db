// SPDX-License-Identifier: Zlib
#include "images/png/png_filters.h"

#include "images/png/png_filters_plain.h"

namespace fenlight {

namespace {

template <PixelLayout layout, PngFilter filter>
void Unfilter(uint8_t *row, const uint8_t *previous, const uint8_t *filtered, size_t rowBytes) {
    UnfilterFrom<layout, filter>(0, row, previous, filtered, rowBytes);
}

template <PixelLayout layout>
constexpr LayoutKernels Kernels() {
    using enum PngFilter;
    return {{Unfilter<layout, None>, Unfilter<layout, Sub>, Unfilter<layout, Up>, Unfilter<layout, Average>,
             Unfilter<layout, Paeth>},
            nullptr,
            nullptr};
}

}  // namespace

using enum PixelLayout;

constexpr FilterKernels kPlainFilters = {
    "plain",
    {Kernels<Bytes1>(), Kernels<Bytes2>(), Kernels<Bytes4>(), Kernels<Bytes6>(), Kernels<Bytes8>(),
     Kernels<SwappedRgb>(), Kernels<SwappedRgba>()}};

std::span<const FilterKernels *const> UsableFilterKernels() noexcept {
#if defined(__x86_64__)
    static constexpr const FilterKernels *kKernels[] = {&kPlainFilters, &kSse4Filters};
    return {kKernels, __builtin_cpu_supports("sse4.2") != 0 ? 2u : 1u};
#else
    static constexpr const FilterKernels *kKernels[] = {&kPlainFilters};
    return kKernels;
#endif
}

const FilterKernels &BestFilterKernels() noexcept { return *UsableFilterKernels().back(); }

}  // namespace fenlight
