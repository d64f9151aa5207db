// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "packing/compressor.h"
#include "packing/stream_reader.h"

namespace fenlight {
namespace {

using test::Bytes;
using test::MakeNoise;
using test::MakeText;
using test::ReadStream;
using test::StreamItem;

// The stream of a block, in a destination of the promised size with a guard behind it.
Bytes Packed(const Bytes &source) {
    const auto area = std::make_unique<std::array<uint32_t, kWorkAreaBytes / 4 + 1>>();
    area->fill(0);
    area->back() = 0xA5A5A5A5;
    const size_t room = source.size() + source.size() / 8 + 64;
    Bytes destination(room + 64, 0xA5);
    const uint32_t length = Compress(source.data(), destination.data(), static_cast<uint32_t>(source.size()),
                                     *reinterpret_cast<WorkArea *>(area->data()));
    EXPECT_EQ(area->back(), 0xA5A5A5A5) << "the work area was left";
    EXPECT_TRUE(std::all_of(destination.begin() + length, destination.end(),
                            [](uint8_t byte) { return byte == 0xA5; }))
        << "something was written behind the stream of " << source.size() << " bytes";
    EXPECT_LE(length, MaxStreamBytes(source.size()));
    destination.resize(length);
    return destination;
}

uint64_t LeastLength(uint64_t offset) {
    return offset < 128 ? 4 : offset < 1280 ? 2 : offset < 32000 ? 3 : 4;
}

// What a packer may choose is told apart from what it must do: the forms of near bytes and matches.
void ExpectLegalItems(const ReadStream &stream) {
    bool afterMatch = false;
    uint64_t lastOffset = 0;
    for (const StreamItem &item : stream.items) {
        SCOPED_TRACE(testing::Message() << "item at " << item.position << " with offset " << item.offset
                                        << ", length " << item.length);
        const uint8_t *const here = &stream.output[item.position];
        const auto back = static_cast<ptrdiff_t>(std::min<uint64_t>(15, item.position));
        const uint8_t *const near = std::find(here - back, here, *here);
        if (item.kind == StreamItem::Literal) {
            ASSERT_TRUE(*here != 0 && near == here) << "is no near byte";
        } else if (item.kind == StreamItem::NearByte) {
            ASSERT_EQ(static_cast<ptrdiff_t>(item.offset), *here == 0 ? 0 : here - near);
        } else {
            ASSERT_LE(item.offset, 91904u);
            ASSERT_LE(item.length, 91904u);
            const bool repeats = !afterMatch && item.offset == lastOffset;
            ASSERT_EQ(item.kind == StreamItem::LastOffsetMatch, repeats);
            const bool isShort = item.offset < 128 && item.length <= 3;
            ASSERT_EQ(item.kind == StreamItem::ShortMatch, isShort && !repeats);
            ASSERT_GE(item.length, item.kind == StreamItem::LongMatch ? LeastLength(item.offset) : 2);
            lastOffset = item.offset;
        }
        afterMatch = item.kind != StreamItem::Literal && item.kind != StreamItem::NearByte;
    }
}

void ExpectRoundTrip(const Bytes &source, const char *what) {
    SCOPED_TRACE(testing::Message() << source.size() << " bytes of " << what);
    const Bytes stream = Packed(source);
    const auto read = test::ReadWholeStream(stream, source.size());
    ASSERT_TRUE(read.has_value());
    ASSERT_EQ(read->bytesUsed, stream.size());
    ASSERT_TRUE(read->output == source);
    ExpectLegalItems(*read);
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes whole;
    for (const Bytes &part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

TEST(Packer, ASlowReaderOpensEveryLength) {
    const Bytes text = MakeText(3000, 1), noise = MakeNoise(3000, 2);
    Bytes few = noise;
    for (uint8_t &byte : few) byte %= 3;
    for (size_t length = 2; length <= 3000; length += length < 300 ? 1 : 13) {
        const auto end = static_cast<ptrdiff_t>(length);
        ExpectRoundTrip(Bytes(text.begin(), text.begin() + end), "text");
        ExpectRoundTrip(Bytes(noise.begin(), noise.begin() + end), "noise");
        ExpectRoundTrip(Bytes(few.begin(), few.begin() + end), "three values");
        ExpectRoundTrip(Bytes(length, 7), "one value");
    }
}

// Repeats around every limit of the search: the greatest offset, the ring's size and the greatest match.
TEST(Packer, ASlowReaderOpensLargeBlocks) {
    const Bytes text = MakeText(250000, 3), noise = MakeNoise(200000, 4);
    ExpectRoundTrip(text, "text");
    ExpectRoundTrip(noise, "noise");
    Bytes few = noise;
    for (uint8_t &byte : few) byte = static_cast<uint8_t>(byte % 5 * (byte / 5 % 3));
    ExpectRoundTrip(few, "few values, with as many ways to pack them");
    ExpectRoundTrip(Joined({text, Bytes(300000, 0), noise, Bytes(100, 0), text}), "a mixture");
    const Bytes piece = MakeNoise(400, 5);
    for (const ptrdiff_t distance : {91903, 91904, 91905, 92159, 92160, 92161, 184320})
        ExpectRoundTrip(Joined({piece, Bytes(noise.begin(), noise.begin() + distance - 400), piece}),
                        "a far repeat");
    const auto far = Packed(Joined({piece, Bytes(noise.begin(), noise.begin() + 91904 - 400), piece}));
    const auto farther = Packed(Joined({piece, Bytes(noise.begin(), noise.begin() + 91905 - 400), piece}));
    EXPECT_GT(farther.size(), far.size() + 350) << "the last reachable offset is found, the next one is not";
}

TEST(Packer, TakesFewBytesForRuns) {
    // First byte, one literal at most, one long match and the end mark: 8 + 9 + 10 + 2 + 2 * 16 + 11 bits.
    EXPECT_LE(Packed(Bytes(1000, 0)).size(), 9u);
    EXPECT_LE(Packed(Bytes(65000, 'x')).size(), 10u);
    const Bytes piece = MakeNoise(1000, 6);
    Bytes rows;
    for (int i = 0; i < 90; ++i) rows.insert(rows.end(), piece.begin(), piece.end());
    EXPECT_LE(Packed(rows).size(), 1000 + 1000 / 8 + 16u);
}

// The least bytes of each block come from a search over all items at all positions, all lengths and offsets
// and all last offsets, rounded up.
TEST(Packer, ComesNearTheBestOfAllParses) {
    Bytes waves;
    for (int i = 0; i < 1500; ++i) waves.push_back(static_cast<uint8_t>((i * i / 40 % 64) / 4 * 4));
    const std::pair<Bytes, size_t> cases[] = {
        {MakeText(4000, 7), 1274},
        {Joined({MakeNoise(100, 8), Bytes(60, 9), MakeText(900, 9)}), 476},
        {waves, 570}};
    for (const auto &[source, best] : cases) {
        const size_t ours = Packed(source).size();
        EXPECT_TRUE(ours >= best && ours <= best + best / 100) << ours << " bytes, at best " << best;
    }
}

}  // namespace
}  // namespace fenlight
