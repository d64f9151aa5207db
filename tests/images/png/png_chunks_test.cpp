// SPDX-License-Identifier: Zlib
// Streams put together by hand: what the chunk rules, the zlib header and the data's length decide.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>

#include "png_stream.h"

namespace fenlight {
namespace {

using test::Bytes;
using test::Chunk;
using test::Deflate;
using test::Header;
using test::Join;
using test::LoadPng;
using test::LoadResult;

// A grey picture of 2 x 2: levels 10, 20 over 30, 40.
const Bytes kRows = {0, 10, 20, 0, 30, 40};
const std::vector<uint32_t> kLevels = {10, 20, 30, 40};

Bytes Grey(const std::vector<Bytes> &chunks) {
    return Join({test::Signature(), Header(2, 2, 8, 0), Join(chunks)});
}
Bytes Slice(const Bytes &bytes, size_t first, size_t end = SIZE_MAX) {
    const auto last = static_cast<ptrdiff_t>(std::min(end, bytes.size()));
    return {bytes.begin() + static_cast<ptrdiff_t>(first), bytes.begin() + last};
}

TEST(PngChunks, StreamsThatLoadInSpiteOfTheirOddities) {
    const Bytes packed = Deflate(kRows), data = Chunk("IDAT", packed), end = Chunk("IEND", {});
    std::vector<Bytes> pieces;
    for (const uint8_t byte : packed) pieces.push_back(Join({Chunk("IDAT", {byte}), Chunk("IDAT", {})}));
    Bytes badAdler = packed, badCheckBits = packed;
    badAdler.back() ^= 1;
    badCheckBits[1] ^= 1;
    const Bytes longer = Join({kRows, Bytes(1000, 7)});
    const struct {
        const char *name;
        Bytes stream;
    } cases[] = {
        {"plain", Grey({data, end})},
        {"no IEND", Grey({data})},
        {"lower-case critical types",
         Join({test::Signature(), Chunk("iHDR", Slice(Header(2, 2, 8, 0), 8, 21)), Chunk("pLTE", {1}),
               Chunk("iDAT", packed), Chunk("iEND", {})})},
        {"ancillary chunks all over", Grey({Chunk("tRNS", {0, 10}), Chunk("gAMA", {}), data,
                                            Chunk("tEXt", {65}), end, Chunk("zzzz", {1, 2, 3})})},
        {"data behind IEND", Grey({end, data})},
        {"data in single bytes and empty chunks", Grey({Join(pieces), end})},
        {"a second run behind a complete one", Grey({data, Chunk("tEXt", {}), Chunk("IDAT", {1, 2, 3})})},
        {"a second header is no header", Grey({Header(9, 9, 1, 3), data})},
        {"cut-off last chunk", Grey({data, Slice(Chunk("ABCD", {1, 2, 3}), 0, 14)})},
        {"wrong Adler-32", Grey({Chunk("IDAT", badAdler)})},
        {"no Adler-32", Grey({Chunk("IDAT", Slice(packed, 0, packed.size() - 4))})},
        {"wrong check bits", Grey({Chunk("IDAT", badCheckBits)})},
        {"stored block", Grey({Chunk("IDAT", Deflate(kRows, 0))})},
        {"fixed codes", Grey({Chunk("IDAT", Deflate(kRows, 9, Z_FIXED))})},
        {"more data than the picture has", Grey({Chunk("IDAT", Deflate(longer))})},
        {"more data, cut off there", Grey({Chunk("IDAT", Slice(Deflate(longer, 0), 0, 100))})},
    };
    for (const auto &c : cases) {
        const LoadResult result = LoadPng(c.stream);
        EXPECT_EQ(result.stepsDone, 3) << c.name;
        EXPECT_EQ(result.values.pixels, kLevels) << c.name;
    }
    // Zeros stand for what a complete stream does not give.
    const LoadResult brief = LoadPng(Grey({Chunk("IDAT", Deflate({0, 10, 20}))}));
    EXPECT_EQ(brief.values.pixels, (std::vector<uint32_t>{10, 20, 0, 0}));
}

TEST(PngChunks, StreamsThatFailAndWithWhichCode) {
    const Bytes packed = Deflate(kRows), stored = Deflate(kRows, 0), data = Chunk("IDAT", packed);
    const auto withHeader = [&](const Bytes &header) { return Join({test::Signature(), header, data}); };
    const auto withZlibBytes = [&](uint8_t method, uint8_t flags) {
        return Grey({Chunk("IDAT", Join({{method, flags}, Slice(packed, 2)}))});
    };
    Bytes badMethods[3];
    for (size_t i = 0; i < 3; ++i) {
        badMethods[i] = Header(2, 2, 8, 0);
        badMethods[i][18 + i] = i == 2 ? 2 : 1;
    }
    const struct {
        const char *name;
        Bytes stream;
        int stepsDone;
        uint32_t error;
    } cases[] = {
        {"empty", {}, 0, PngErrorData},
        {"signature only", test::Signature(), 0, PngErrorData},
        {"bad signature", Join({{0x88}, Slice(Grey({data}), 1)}), 0, PngErrorData},
        {"header not first", Join({test::Signature(), data, Header(2, 2, 8, 0)}), 0, PngErrorData},
        {"short header", withHeader(Chunk("IHDR", {0, 0, 0, 2, 0, 0, 0, 2, 8, 0, 0, 0})), 0, PngErrorData},
        {"width 0", withHeader(Header(0, 2, 8, 0)), 0, PngErrorData},
        {"height 0", withHeader(Header(2, 0, 8, 0)), 0, PngErrorData},
        {"compression method", withHeader(badMethods[0]), 0, PngErrorFormat},
        {"filter method", withHeader(badMethods[1]), 0, PngErrorFormat},
        {"interlace method", withHeader(badMethods[2]), 0, PngErrorFormat},
        {"no palette", withHeader(Header(2, 2, 8, 3)), 0, PngErrorFormat},
        {"unknown critical chunk", Grey({Chunk("ABCD", {}), data}), 0, PngErrorFormat},
        {"unknown critical chunk behind IEND", Grey({data, Chunk("IEND", {}), Chunk("Zbcd", {})}), 0,
         PngErrorFormat},
        {"no data", Grey({Chunk("IEND", {})}), 1, PngErrorData},
        {"empty data", Grey({Chunk("IDAT", {})}), 1, PngErrorData},
        {"run split by another chunk",
         Grey({Chunk("IDAT", Slice(packed, 0, 5)), Chunk("tEXt", {}), Chunk("IDAT", Slice(packed, 5))}), 1,
         PngErrorData},
        {"no end of the last block", Grey({Chunk("IDAT", Join({{0x78, 0x9C, 0, 6, 0, 0xF9, 0xFF}, kRows}))}),
         1, PngErrorData},
        {"stored data cut off", Grey({Chunk("IDAT", Slice(stored, 0, 12))}), 1, PngErrorData},
        {"method 7", withZlibBytes(0x77, 0x9C), 1, PngErrorData},
        {"window 8", withZlibBytes(0x88, 0x9C), 1, PngErrorData},
        {"preset dictionary", withZlibBytes(0x78, 0xBC), 1, PngErrorData},
        {"block type 3", Grey({Chunk("IDAT", {0x78, 0x9C, 0x07, 0, 0, 0, 0, 0})}), 1, PngErrorData},
        {"filter 5 in the first row", Grey({Chunk("IDAT", Deflate({5, 10, 20, 0, 30, 40}))}), 2, 0},
        {"filter 255 in the last row", Grey({Chunk("IDAT", Deflate({0, 10, 20, 255, 30, 40}))}), 2, 0},
    };
    for (const auto &c : cases) {
        const LoadResult result = LoadPng(c.stream);
        EXPECT_EQ(result.stepsDone, c.stepsDone) << c.name;
        EXPECT_EQ(result.error, c.error) << c.name;
    }
}

TEST(PngChunks, HeaderTakesTheFifteenKindsAndNoOther) {
    for (int type = 0; type < 256; type = type < 16 ? type + 1 : type * 2) {
        for (int depth = 0; depth < 256; depth = depth < 32 ? depth + 1 : depth * 2) {
            bool isKind = false;
            for (const test::PngKind &kind : test::kPngKinds)
                isKind = isKind || (kind.type == type && static_cast<int>(kind.depth) == depth);
            const Bytes header = Header(2, 2, static_cast<uint8_t>(depth), static_cast<uint8_t>(type));
            const LoadResult result = LoadPng(Join({test::Signature(), header, Chunk("PLTE", {})}));
            EXPECT_EQ(result.stepsDone, isKind ? 1 : 0) << type << " " << depth;
            EXPECT_EQ(result.error, isKind ? PngErrorData : PngErrorFormat) << type << " " << depth;
        }
    }
}

TEST(PngChunks, PaletteTakesTheFirstChunkWholeEntriesOnlyAndTheRestIsBlack) {
    const auto load = [](uint8_t depth, const std::vector<Bytes> &palettes, const Bytes &rows) {
        return LoadPng(
            Join({test::Signature(), Header(2, 1, depth, 3), Join(palettes), Chunk("IDAT", Deflate(rows))}));
    };
    const Bytes first = Chunk("PLTE", {1, 2, 3, 4, 5, 6, 7, 8}), second = Chunk("PLTE", Bytes(768, 9));
    const LoadResult partial = load(8, {first, second}, {0, 1, 2});
    EXPECT_EQ(test::Shown(partial).pixels, (std::vector<uint32_t>{0x040506, 0}));
    const LoadResult oneBit = load(1, {second}, {0, 0x40});  // far more entries than a pixel can name
    EXPECT_EQ(test::Shown(oneBit).pixels, (std::vector<uint32_t>{0x090909, 0x090909}));
    const LoadResult huge = load(8, {Chunk("PLTE", Bytes(3000, 9))}, {0, 255, 0});
    EXPECT_EQ(test::Shown(huge).pixels, (std::vector<uint32_t>{0x090909, 0x090909}));
    EXPECT_EQ(test::Shown(load(8, {Chunk("PLTE", {})}, {0, 0, 1})).pixels, (std::vector<uint32_t>{0, 0}));
}

}  // namespace
}  // namespace fenlight
