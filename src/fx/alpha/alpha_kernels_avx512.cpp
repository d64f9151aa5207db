// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include <immintrin.h>

#include <array>

#include "fx/alpha/alpha_kernels.h"
#include "fx/alpha/alpha_loops.h"

namespace fenlight {
namespace {

// 64 pixels at a time: four vectors of an alpha image, three of colours. What is left goes to the plain
// loops.
constexpr int64_t kPixels = 64;
constexpr int64_t kColourBytes = 3 * kPixels;

using ByteOrder = std::array<uint8_t, 64>;

// Sixteen pixels of 48 bytes, of which the first stands at `start`, to red, green, blue and a byte that does
// not matter.
constexpr ByteOrder WidenOrder(size_t start) {
    ByteOrder order{};
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<uint8_t>(start + i / 4 * 3 + (i % 4 < 3 ? 2 - i % 4 : 0));
    return order;
}

// The bytes from 64 * part on of the colours of 64 pixels, picked from the vectors part and part + 1 of their
// image. `from` tells which byte of a pixel becomes blue, green and red.
constexpr ByteOrder NarrowOrder(size_t part, const std::array<size_t, 3> &from) {
    ByteOrder order{};
    for (size_t i = 0; i < order.size(); ++i) {
        const size_t byte = 64 * part + i;
        order[i] = static_cast<uint8_t>(byte / 3 * 4 + from[byte % 3] - 64 * part);
    }
    return order;
}

struct NarrowOrders {
    ByteOrder parts[3];
};

constexpr NarrowOrders OrdersOf(const std::array<size_t, 3> &from) {
    return {{NarrowOrder(0, from), NarrowOrder(1, from), NarrowOrder(2, from)}};
}

// The last sixteen pixels are read with the sixteen bytes in front of them, not with those behind the block.
alignas(64) constexpr ByteOrder kWidenOrder = WidenOrder(0);
alignas(64) constexpr ByteOrder kLastWidenOrder = WidenOrder(16);
alignas(64) constexpr NarrowOrders kColourOrders = OrdersOf({2, 1, 0});
alignas(64) constexpr NarrowOrders kAlphaOrders = OrdersOf({3, 3, 3});

constexpr uint64_t kAlphaBytes = 0x8888888888888888;

__m512i VectorOf(const ByteOrder &order) { return _mm512_load_si512(order.data()); }

// Sixteen of the 64 pixels at `colours`; alpha is 0.
__m512i LoadColours(const uint8_t *colours, int64_t quarter) {
    const bool isLast = quarter == 3;
    const uint8_t *start = colours + 48 * quarter - (isLast ? 16 : 0);
    return _mm512_maskz_permutexvar_epi8(~kAlphaBytes, VectorOf(isLast ? kLastWidenOrder : kWidenOrder),
                                         _mm512_loadu_si512(start));
}

// The mean of the first three bytes as the fourth. Up to 765 a sum times 21846 is a third of it in the high
// half.
__m512i AlphaOfGreys(__m512i greys) {
    const __m512i pairs = _mm512_maddubs_epi16(greys, _mm512_set1_epi8(1));
    const auto thirds = reinterpret_cast<Words>(_mm512_madd_epi16(pairs, _mm512_set1_epi16(21846)));
    return reinterpret_cast<__m512i>(thirds << 8);
}

void StoreColours(uint8_t *colours, const uint8_t *image, const NarrowOrders &orders) {
    for (int64_t part = 0; part < 3; ++part) {
        const __m512i first = _mm512_loadu_si512(image + 64 * part);
        const __m512i second = _mm512_loadu_si512(image + 64 * part + 64);
        _mm512_storeu_si512(colours + 64 * part,
                            _mm512_permutex2var_epi8(first, VectorOf(orders.parts[part]), second));
    }
}

void Widen(uint8_t *image, const uint8_t *colours, int64_t pixels) noexcept {
    const __m512i opaque = _mm512_set1_epi32(static_cast<int>(0xFF000000));
    for (; pixels >= kPixels; pixels -= kPixels, image += 4 * kPixels, colours += kColourBytes)
        for (int64_t quarter = 0; quarter < 4; ++quarter)
            _mm512_storeu_si512(image + 64 * quarter, _mm512_or_si512(LoadColours(colours, quarter), opaque));
    kPlainAlphaKernels.widen(image, colours, pixels);
}

void WidenWithAlpha(uint8_t *image, const uint8_t *colours, const uint8_t *greys, int64_t pixels) noexcept {
    for (; pixels >= kPixels; pixels -= kPixels) {
        for (int64_t quarter = 0; quarter < 4; ++quarter) {
            const __m512i alpha = AlphaOfGreys(LoadColours(greys, quarter));
            _mm512_storeu_si512(image + 64 * quarter,
                                _mm512_mask_blend_epi8(kAlphaBytes, LoadColours(colours, quarter), alpha));
        }
        image += 4 * kPixels;
        colours += kColourBytes;
        greys += kColourBytes;
    }
    kPlainAlphaKernels.widenWithAlpha(image, colours, greys, pixels);
}

void Narrow(uint8_t *colours, const uint8_t *image, int64_t pixels) noexcept {
    for (; pixels >= kPixels; pixels -= kPixels, image += 4 * kPixels, colours += kColourBytes)
        StoreColours(colours, image, kColourOrders);
    kPlainAlphaKernels.narrow(colours, image, pixels);
}

void NarrowWithAlpha(uint8_t *colours, uint8_t *greys, const uint8_t *image, int64_t pixels) noexcept {
    for (; pixels >= kPixels; pixels -= kPixels, image += 4 * kPixels) {
        StoreColours(colours, image, kColourOrders);
        StoreColours(greys, image, kAlphaOrders);
        colours += kColourBytes;
        greys += kColourBytes;
    }
    kPlainAlphaKernels.narrowWithAlpha(colours, greys, image, pixels);
}

}  // namespace

extern const AlphaKernels kAvx512AlphaKernels{Paint,           Widen,       WidenWithAlpha, Narrow,
                                              NarrowWithAlpha, InvertAlpha, Merge};

}  // namespace fenlight
#endif
