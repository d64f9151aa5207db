// SPDX-License-Identifier: Zlib
#include "platform/raster/row_values.h"

#include <algorithm>
#include <cstring>

#include "platform/raster/colour_conversion.h"
#include "platform/raster/row_kernels.h"

namespace fenlight::platform {
namespace {

// How one pixel of a format is read and written; the loops below are built from these.
struct BitPixel {
    static uint32_t Load(const uint8_t *row, int64_t x) { return row[x >> 3] >> (7 - (x & 7)) & 1u; }
    static void Store(uint8_t *row, int64_t x, uint32_t value) {
        const int shift = static_cast<int>(7 - (x & 7));
        row[x >> 3] = static_cast<uint8_t>((row[x >> 3] & ~(1u << shift)) | (value & 1u) << shift);
    }
};

struct NibblePixel {
    static uint32_t Load(const uint8_t *row, int64_t x) {
        return row[x >> 1] >> ((x & 1) != 0 ? 0 : 4) & 15u;
    }
    static void Store(uint8_t *row, int64_t x, uint32_t value) {
        const int shift = (x & 1) != 0 ? 0 : 4;
        row[x >> 1] = static_cast<uint8_t>((row[x >> 1] & ~(15u << shift)) | (value & 15u) << shift);
    }
};

struct BytePixel {
    static uint32_t Load(const uint8_t *row, int64_t x) { return row[x]; }
    static void Store(uint8_t *row, int64_t x, uint32_t value) { row[x] = static_cast<uint8_t>(value); }
};

struct TriplePixel {
    static uint32_t Load(const uint8_t *row, int64_t x) {
        const uint8_t *pixel = row + 3 * x;
        return pixel[0] | static_cast<uint32_t>(pixel[1]) << 8 | static_cast<uint32_t>(pixel[2]) << 16;
    }
    static void Store(uint8_t *row, int64_t x, uint32_t value) {
        uint8_t *pixel = row + 3 * x;
        pixel[0] = static_cast<uint8_t>(value);
        pixel[1] = static_cast<uint8_t>(value >> 8);
        pixel[2] = static_cast<uint8_t>(value >> 16);
    }
};

struct WordPixel {
    static uint32_t Load(const uint8_t *row, int64_t x) {
        uint32_t value;
        std::memcpy(&value, row + 4 * x, sizeof value);
        return value;
    }
    static void Store(uint8_t *row, int64_t x, uint32_t value) {
        std::memcpy(row + 4 * x, &value, sizeof value);
    }
};

template <typename Action>
auto WithPixel(PixelFormat format, Action action) {
    switch (format) {
        case PixelFormat::Mono:
        case PixelFormat::Indexed1:
            return action(BitPixel{});
        case PixelFormat::Indexed4:
            return action(NibblePixel{});
        case PixelFormat::Indexed8:
            return action(BytePixel{});
        case PixelFormat::Bgr24:
            return action(TriplePixel{});
        default:
            return action(WordPixel{});
    }
}

// Whole bytes at once, so that a mask costs no reading and writing again for each of its bits.
void StoreBits(uint8_t *row, int64_t x, int32_t count, const uint32_t *values) {
    int32_t i = 0;
    for (; i < count && (x + i) % 8 != 0; ++i) BitPixel::Store(row, x + i, values[i]);
    for (; i + 8 <= count; i += 8) {
        uint32_t byte = 0;
        for (int32_t bit = 0; bit < 8; ++bit) byte |= (values[i + bit] & 1u) << (7 - bit);
        row[(x + i) / 8] = static_cast<uint8_t>(byte);
    }
    for (; i < count; ++i) BitPixel::Store(row, x + i, values[i]);
}

}  // namespace

void LoadValues(PixelFormat format, const uint8_t *row, int32_t x, int32_t count, uint32_t *values) noexcept {
    if (format == PixelFormat::Bgr24) {
        auto *words = reinterpret_cast<uint8_t *>(values);
        return Kernels().keyFrom24({words, 0, row + 3 * int64_t{x}, 0, count, 1}, kNoColour);
    }
    WithPixel(format, [=](auto pixel) {
        for (int32_t i = 0; i < count; ++i) values[i] = pixel.Load(row, int64_t{x} + i);
    });
}

void LoadScattered(PixelFormat format, const uint8_t *row, const int32_t *positions, int32_t count,
                   uint32_t *values) noexcept {
    WithPixel(format, [=](auto pixel) {
        for (int32_t i = 0; i < count; ++i) values[i] = pixel.Load(row, positions[i]);
    });
}

void StoreValues(PixelFormat format, uint8_t *row, int32_t x, int32_t count,
                 const uint32_t *values) noexcept {
    if (format == PixelFormat::Bgr24) {
        const auto *words = reinterpret_cast<const uint8_t *>(values);
        return Kernels().packTo24({row + 3 * int64_t{x}, 0, words, 0, count, 1});
    }
    if (BitsPerPixel(format) == 1) return StoreBits(row, x, count, values);
    WithPixel(format, [=](auto pixel) {
        for (int32_t i = 0; i < count; ++i) pixel.Store(row, int64_t{x} + i, values[i]);
    });
}

void FillValues(PixelFormat format, uint8_t *row, int32_t x, int32_t count, uint32_t value) noexcept {
    WithPixel(format, [=](auto pixel) {
        for (int32_t i = 0; i < count; ++i) pixel.Store(row, int64_t{x} + i, value);
    });
}

uint32_t LoadValue(PixelFormat format, const uint8_t *row, int32_t x) noexcept {
    return WithPixel(format, [=](auto pixel) { return pixel.Load(row, x); });
}

void StoreValue(PixelFormat format, uint8_t *row, int32_t x, uint32_t value) noexcept {
    WithPixel(format, [=](auto pixel) { pixel.Store(row, x, value); });
}

}  // namespace fenlight::platform
