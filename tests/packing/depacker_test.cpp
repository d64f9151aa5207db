// SPDX-License-Identifier: Zlib
#include "packing/depacker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>

#include "packing/stream_reader.h"
#include "support/each_level.h"

namespace fenlight {
namespace {

using test::Bytes;
using test::MakeNoise;
using test::MakeText;
using test::ReadWholeStream;
using test::StreamBuilder;

#if defined(__SANITIZE_ADDRESS__)
constexpr uint32_t kGuard = 0;  // the sanitizer sees a byte too far itself
#else
constexpr uint32_t kGuard = 64;
#endif

// What the depacker makes of a stream, or nothing; in blocks of the exact size.
std::optional<Bytes> Depacked(const Bytes &stream, uint32_t room) {
    const auto source = std::make_unique<uint8_t[]>(stream.size());
    std::copy(stream.begin(), stream.end(), source.get());
    const auto target = std::make_unique<uint8_t[]>(room + kGuard);
    std::fill_n(target.get() + room, kGuard, uint8_t{0xA5});
    const uint32_t made = Depack({source.get(), stream.size()}, {target.get(), room});
    for (uint32_t i = 0; i < kGuard; ++i) EXPECT_EQ(target[room + i], 0xA5) << "byte " << i << " behind";
    EXPECT_LE(made, room);
    if (made == 0) return std::nullopt;
    return Bytes(target.get(), target.get() + made);
}

class DepackerTest : public EachLevel {};
INSTANTIATE_TEST_SUITE_P(Levels, DepackerTest, kEachLevel);

std::string Text(const Bytes &bytes) { return {bytes.begin(), bytes.end()}; }

// Alone at the end of a stream, where each bit is taken carefully, and with enough behind it for wide copies.
void ExpectBothWays(StreamBuilder builder, const std::string &expected) {
    const Bytes tail = MakeNoise(100, 1);
    const Bytes alone = StreamBuilder(builder).End().Stream();
    EXPECT_EQ(Text(Depacked(alone, static_cast<uint32_t>(expected.size())).value_or(Bytes{})), expected);
    const auto tooLittle = static_cast<uint32_t>(expected.size() - 1);
    EXPECT_EQ(Depacked(alone, tooLittle), std::nullopt) << "one byte too little room";
    const Bytes followed = builder.Literals(tail).End().Stream();
    const auto room = static_cast<uint32_t>(expected.size() + tail.size());
    EXPECT_EQ(Text(Depacked(followed, room).value_or(Bytes{})), expected + Text(tail));
    EXPECT_EQ(Depacked(followed, room - 1), std::nullopt) << "one byte too little room";
}

TEST_P(DepackerTest, OpensEachKindOfItem) {
    const StreamBuilder a('a');
    ExpectBothWays(a, "a");
    ExpectBothWays(StreamBuilder(a).Literals({'b', 'c'}), "abc");
    ExpectBothWays(StreamBuilder(a).Bits("1110000").Bits("1110010").Bits("1110001"), std::string("a\0aa", 4));
    ExpectBothWays(StreamBuilder(a).Literals({'b'}).Bits("110").Byte(2 << 1).Bits("110").Byte(1 << 1 | 1),
                   "ababbbb");
    // High part 0: a gamma of 3 after a literal and of 2 after a match. Offsets below 128 add 2 to the
    // length.
    ExpectBothWays(StreamBuilder(a).Literals({'b'}).Long(3, 2, 2).Long(2, 1, 3), "abababbbbbb");
    // The last offset counts again after a literal and after a near byte, with no correction.
    ExpectBothWays(StreamBuilder(a).Literals({'b'}).Bits("110").Byte(2 << 1).Literals({'c'}).Last(2),
                   "ababcbc");
    ExpectBothWays(StreamBuilder(a).Literals({'b'}).Long(3, 2, 2).Bits("1110000").Last(3),
                   std::string("ababab\0b\0b", 10));
}

void ExpectRepeat(const Bytes &before, uint32_t offset, uint32_t gamma, uint32_t correction) {
    SCOPED_TRACE(testing::Message() << "offset " << offset << ", gamma " << gamma);
    Bytes expected = before;
    for (uint32_t i = 0; i < gamma + correction; ++i) expected.push_back(expected[expected.size() - offset]);
    StreamBuilder builder(before[0]);
    builder.Literals(Bytes(before.begin() + 1, before.end()));
    ExpectBothWays(builder.Long(offset / 256 + 3, offset % 256, gamma), Text(expected));
}

// Of corrected lengths, also from what was just written.
TEST_P(DepackerTest, RepeatsFromAnyOffset) {
    const Bytes few = MakeNoise(80, 3), many = MakeNoise(92000, 2);
    for (uint32_t offset = 1; offset <= 70; ++offset)
        for (uint32_t gamma = 2; gamma <= 80; ++gamma) ExpectRepeat(few, offset, gamma, 2);
    constexpr std::pair<uint32_t, uint32_t> kCorrections[] = {{1, 2},     {127, 2},  {128, 0},  {255, 0},
                                                              {256, 0},   {1279, 0}, {1280, 1}, {31999, 1},
                                                              {32000, 2}, {91904, 2}};
    for (const auto &[offset, correction] : kCorrections)
        for (const uint32_t gamma : {2u, 3u, 4u, 7u, 8u, 255u, 256u, 65535u, 65536u, 91900u})
            ExpectRepeat(many, offset, gamma, correction);
}

TEST_P(DepackerTest, RefusesWhatReachesOutside) {
    const auto refuse = [](const char *what, StreamBuilder builder) {
        const Bytes tail = MakeNoise(100, 4);
        EXPECT_EQ(Depacked(StreamBuilder(builder).End().Stream(), 300), std::nullopt) << what;
        EXPECT_EQ(Depacked(builder.Literals(tail).End().Stream(), 300), std::nullopt) << what << ", followed";
    };
    const StreamBuilder a('a');
    refuse("near byte before the first", StreamBuilder(a).Bits("1110010"));
    refuse("short match before the first", StreamBuilder(a).Bits("110").Byte(2 << 1));
    refuse("long match before the first", StreamBuilder(a).Long(3, 2, 2));
    refuse("offset 0", StreamBuilder(a).Long(3, 0, 2));
    refuse("offset of 2^40", StreamBuilder(a).Long(uint64_t{1} << 32, 0, 2));
    refuse("offset that is 1 in 32 bits", StreamBuilder(a).Long((uint64_t{1} << 24) + 3, 1, 2));
    refuse("last offset before there is one", StreamBuilder(a).Last(2));
    refuse("match beyond the room", StreamBuilder(a).Long(3, 1, 300));
    refuse("length that is 2 in 32 bits", StreamBuilder(a).Long(3, 1, uint64_t{1} << 32));
    refuse("length of 2^63", StreamBuilder(a).Long(3, 1, uint64_t{1} << 63));
    EXPECT_EQ(Depack({}, {}), 0u);
}

// Streams cut off anywhere or with bytes changed: the slow reader says what they are.
TEST_P(DepackerTest, AgreesWithASlowReaderOnDamagedStreams) {
    const Bytes text = MakeText(1500, 5);
    StreamBuilder builder(text[0]);
    builder.Literals(Bytes(text.begin() + 1, text.begin() + 800));
    std::mt19937 random(6);
    for (int i = 0; i < 150; ++i)
        builder.Long(3 + random() % 2, random() % 256, 2 + random() % 20)
            .Literals({text[random() % 1500]})
            .Last(2);
    const Bytes whole = builder.End().Stream();
    const auto compare = [](const Bytes &stream, uint32_t room) {
        const auto expected = ReadWholeStream(stream, room);
        const std::optional<Bytes> made = Depacked(stream, room);
        ASSERT_EQ(made.value_or(Bytes{}), expected.has_value() ? expected->output : Bytes{});
    };
    const auto intact = ReadWholeStream(whole, 100000);
    ASSERT_TRUE(intact.has_value());
    const auto room = static_cast<uint32_t>(intact->output.size());
    compare(whole, room);
    for (size_t cut = 0; cut < whole.size(); ++cut)
        compare(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(cut)), room);
    int opened = 0;
    for (int i = 0; i < 8000; ++i) {
        Bytes changed = whole;
        for (auto changes = 1 + random() % 3; changes > 0; --changes)
            changed[random() % changed.size()] ^= static_cast<uint8_t>(1u << random() % 8);
        const uint32_t changedRoom = room + random() % 64;
        compare(changed, changedRoom);
        opened += ReadWholeStream(changed, changedRoom).has_value() ? 1 : 0;
    }
    EXPECT_GT(opened, 400) << "too few of the damaged streams are still streams";
}

}  // namespace
}  // namespace fenlight
