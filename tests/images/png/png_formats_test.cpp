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

// Into memory that is not clear, with guard rows above and below. Several Paeth rows in a row are frequent:
// they are taken together.
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
    for (unsigned y = 0; y < picture.height; ++y) {
        for (unsigned x = 0; x < picture.width; ++x)
            ASSERT_EQ(test::ReadValue(&memory[(1 + y) * pitch], picture.kind.bitCount, static_cast<int>(x)),
                      picture.Value(x, y))
                << x << ", " << y;
    }
    for (size_t i = 0; i < pitch; ++i)
        ASSERT_TRUE(memory[i] == 0xFF && memory[pitch + size + i] == 0xFF) << i;
    PngLoaderCleanup(&context);
}

TEST(PngFormats, EveryKernelStoresWholeRowsWhateverTheTargetHeldAndNotBeyondIt) {
    std::mt19937 random(24);
    for (const FilterKernels *kernels : UsableFilterKernels()) {
        for (const test::PngKind &kind : test::kPngKinds) {
            for (unsigned width = 1; width <= 70; width += width < 36 ? 1 : 11) {
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

}  // namespace
}  // namespace fenlight
