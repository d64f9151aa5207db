// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "images/png/png_filters.h"
#include "images/png/png_rows.h"
#include "png_stream.h"

namespace fenlight {
namespace {

using test::Bytes;
using test::Picture;
using test::RandomPicture;

void ExpectLoads(const RandomPicture &picture, bool isInterlaced, const Bytes &filters) {
    const std::string name = "type" + std::to_string(picture.kind.type) + " depth" +
                             std::to_string(picture.kind.depth) + (isInterlaced ? " interlaced " : " ") +
                             std::to_string(picture.width) + "x" + std::to_string(picture.height);
    SCOPED_TRACE(name);
    Picture values(static_cast<int>(picture.width), static_cast<int>(picture.height));
    Picture alphas = values;
    for (unsigned y = 0; y < picture.height; ++y) {
        for (unsigned x = 0; x < picture.width; ++x) {
            values.At(static_cast<int>(x), static_cast<int>(y)) = picture.Value(x, y) & 0xFFFFFF;
            alphas.At(static_cast<int>(x), static_cast<int>(y)) = picture.Value(x, y) >> 24;
        }
    }
    const test::LoadResult loaded = test::LoadPng(picture.Encode(isInterlaced, filters));
    ASSERT_EQ(loaded.stepsDone, 3);
    ASSERT_EQ(loaded.bitCount, picture.kind.bitCount);
    ASSERT_TRUE(test::SamePicture(name, loaded.values, values));
    ASSERT_TRUE(test::SamePicture(name + " alpha", loaded.alphas, alphas));
    if (loaded.bitCount > 8) return;
    const uint32_t colours = 1u << std::min(picture.kind.depth, 8u);
    for (uint32_t i = 0; i < colours; ++i) ASSERT_EQ(loaded.palette[i], picture.PaletteColour(i)) << i;
}

TEST(PngFormats, EveryKindSizeAndFilterGivesTheSamplesEncoded) {
    std::mt19937 random(20);
    std::vector<std::pair<unsigned, unsigned>> sizes = {{100, 3}, {67, 35}};
    for (unsigned i = 0; i < 81; ++i) sizes.emplace_back(i % 9 + 1, i / 9 + 1);
    for (const test::PngKind &kind : test::kPngKinds) {
        for (const auto &[width, height] : sizes) {
            const RandomPicture picture(kind, width, height, random);
            for (const bool isInterlaced : {false, true}) {
                ExpectLoads(picture, isInterlaced, test::RandomFilters(height, random));
                for (uint8_t filter = 0; filter < 5 && width > 9; ++filter)
                    ExpectLoads(picture, isInterlaced, Bytes(height, filter));
                if (HasFatalFailure()) return;
            }
        }
    }
}

platform::PixelFormat FormatOf(int bitCount) {
    using enum platform::PixelFormat;
    return bitCount == 1    ? Indexed1
           : bitCount == 4  ? Indexed4
           : bitCount == 8  ? Indexed8
           : bitCount == 24 ? Bgr24
                            : Bgrx32;
}

// Into memory that is not clear, with guard rows above and below.
void ExpectStores(const RandomPicture &picture, bool isInterlaced, const FilterKernels &kernels,
                  std::mt19937 &random) {
    const Bytes stream = picture.Encode(isInterlaced, test::RandomFilters(picture.height, random));
    PngContext context;
    PngLoaderInit(&context);
    ASSERT_EQ(PngLoaderLoadMemory(&context, stream.data(), static_cast<uint32_t>(stream.size())), 1);
    ASSERT_EQ(PngLoaderDecode(&context), 1);
    const PngFormat &format = *FindPngFormat(context.colourType, context.bitDepth);
    const size_t pitch = BitmapPitch(format, context.width), size = pitch * context.height;
    Bytes memory(size + 2 * pitch, 0xFF);
    ASSERT_EQ(StoreRows(context, format, {&memory[pitch], pitch}, kernels), RowsResult::Done);
    const platform::PixelView view = {&memory[pitch], static_cast<ptrdiff_t>(pitch),
                                      static_cast<int32_t>(picture.width),
                                      static_cast<int32_t>(picture.height), FormatOf(picture.kind.bitCount)};
    for (unsigned i = 0; i < picture.width * picture.height; ++i) {
        const unsigned x = i % picture.width, y = i / picture.width;
        ASSERT_EQ(test::ReadValue(view, static_cast<int>(x), static_cast<int>(y)), picture.Value(x, y))
            << x << ", " << y;
    }
    for (size_t i = 0; i < pitch; ++i)
        ASSERT_TRUE(memory[i] == 0xFF && memory[pitch + size + i] == 0xFF) << i;
    PngLoaderCleanup(&context);
}

TEST(PngFormats, RowsAreStoredWholeWhateverTheTargetHeldAndNotBeyondIt) {
    std::mt19937 random(24);
    for (const FilterKernels *kernels : UsableFilterKernels()) {
        for (const test::PngKind &kind : test::kPngKinds) {
            for (const unsigned width : {1u, 13u, 64u}) {
                const RandomPicture picture(kind, width, 19, random);
                SCOPED_TRACE(std::string(kernels->name) + " type" + std::to_string(kind.type) + " depth" +
                             std::to_string(kind.depth));
                ExpectStores(picture, false, *kernels, random);
                ExpectStores(picture, true, *kernels, random);
                if (HasFatalFailure()) return;
            }
        }
    }
}

// As the PNG standard puts it, with the three distances.
int TextbookPaeth(int left, int up, int corner) {
    const int estimate = left + up - corner;
    const int toLeft = std::abs(estimate - left), toUp = std::abs(estimate - up);
    const int toCorner = std::abs(estimate - corner);
    if (toLeft <= toUp && toLeft <= toCorner) return left;
    return toUp <= toCorner ? up : corner;
}

struct Layout {
    PixelLayout layout;
    size_t bytes;
    std::vector<size_t> order;  // of the filtered bytes that become a pixel's bytes
};

void UnfilterByTheBook(const Layout &layout, size_t filter, uint8_t *row, const uint8_t *previous,
                       const uint8_t *filtered, size_t rowBytes) {
    for (size_t i = 0; i < rowBytes; ++i) {
        const bool isFirst = i < layout.bytes;
        const int left = isFirst ? 0 : row[i - layout.bytes], up = previous[i];
        const int corner = isFirst ? 0 : previous[i - layout.bytes];
        const int predictions[] = {0, left, up, (left + up) / 2, TextbookPaeth(left, up, corner)};
        const size_t source = i - i % layout.bytes + layout.order[i % layout.bytes];
        row[i] = static_cast<uint8_t>(filtered[source] + predictions[filter]);
    }
}

const Layout kLayouts[] = {{PixelLayout::Bytes1, 1, {0}},
                           {PixelLayout::Bytes2, 2, {0, 1}},
                           {PixelLayout::Bytes4, 4, {0, 1, 2, 3}},
                           {PixelLayout::Bytes6, 6, {0, 1, 2, 3, 4, 5}},
                           {PixelLayout::Bytes8, 8, {0, 1, 2, 3, 4, 5, 6, 7}},
                           {PixelLayout::SwappedRgb, 3, {2, 1, 0}},
                           {PixelLayout::SwappedRgba, 4, {2, 1, 0, 3}}};

// Four rows under one another in a picture with guard bytes around and between them.
struct GuardedRows {
    static constexpr size_t kGuard = 32;
    size_t rowBytes;
    Bytes memory;

    explicit GuardedRows(size_t bytes) : rowBytes(bytes), memory(4 * Pitch() + kGuard, 0xA5) {}
    size_t Pitch() const { return rowBytes + kGuard; }
    uint8_t *Row(size_t y) { return &memory[kGuard + y * Pitch()]; }
};

void CompareKernels(const FilterKernels &kernels, const Layout &layout, size_t pixels, std::mt19937 &random) {
    const LayoutKernels &tested = kernels.layouts[static_cast<size_t>(layout.layout)];
    const size_t rowBytes = pixels * layout.bytes;
    Bytes previous(rowBytes), filtered(4 * (rowBytes + 1) - 1);
    // Coarse steps make equal distances frequent.
    for (uint8_t &byte : previous)
        byte = static_cast<uint8_t>(random() % 2 == 0 ? random() : random() % 4 * 85);
    for (uint8_t &byte : filtered)
        byte = static_cast<uint8_t>(random() % 2 == 0 ? random() : random() % 4 * 85);
    for (size_t filter = 0; filter < kFilterTypes; ++filter) {
        GuardedRows actual(rowBytes), expected(rowBytes);
        tested.rows[filter](actual.Row(0), previous.data(), filtered.data(), rowBytes);
        UnfilterByTheBook(layout, filter, expected.Row(0), previous.data(), filtered.data(), rowBytes);
        ASSERT_EQ(actual.memory, expected.memory) << "filter " << filter;
    }
    GuardedRows expected(rowBytes);
    for (size_t y = 0; y < 4; ++y) {
        UnfilterByTheBook(layout, 4, expected.Row(y), y == 0 ? previous.data() : expected.Row(y - 1),
                          &filtered[y * (rowBytes + 1)], rowBytes);
        const UnfilterPaethRows several = y == 1 ? tested.twoPaeth : y == 3 ? tested.fourPaeth : nullptr;
        if (several == nullptr) continue;
        GuardedRows actual(rowBytes);
        several({actual.Row(0), actual.Pitch(), previous.data(), filtered.data(), rowBytes});
        ASSERT_EQ(actual.memory, expected.memory) << y + 1 << " Paeth rows";
    }
}

TEST(PngFilters, EveryKernelAgreesWithTheTextbookAndStaysInsideItsRow) {
    std::mt19937 random(21);
    for (const FilterKernels *kernels : UsableFilterKernels()) {
        for (const Layout &layout : kLayouts) {
            for (size_t pixels = 1; pixels <= 100; ++pixels) {
                SCOPED_TRACE(std::string(kernels->name) + ", " + std::to_string(pixels) + " pixels of " +
                             std::to_string(layout.bytes) + " bytes");
                CompareKernels(*kernels, layout, pixels, random);
                if (HasFatalFailure()) return;
            }
        }
    }
}

}  // namespace
}  // namespace fenlight
