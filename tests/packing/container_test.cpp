// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "fenlight/compression.h"
#include "packing/stream_reader.h"
#include "platform/system/failure_point.h"

namespace fenlight {
namespace {

using test::Bytes;
using test::MakeNoise;
using test::MakeText;

constexpr uint32_t kTag = 0x32335041;
constexpr uint8_t kUntouched = 0xA5;

Bytes Packed(const Bytes &source, const char *password = nullptr) {
    Bytes container(source.size() + source.size() / 8 + 64 + 24);
    const int32_t size = Pack(source.data(), container.data(), static_cast<int32_t>(source.size()), password);
    container.resize(static_cast<size_t>(size));
    return container;
}

uint32_t Field(const Bytes &container, size_t index) {
    uint32_t value;
    std::memcpy(&value, &container[4 * index], 4);
    return value;
}

void SetField(Bytes &container, size_t index, uint32_t value) {
    std::memcpy(&container[4 * index], &value, 4);
}

struct Opened {
    int32_t result;
    Bytes content;  // all of the room
    Bytes source;   // after the call
};

// In blocks of exactly their size, so that a sanitizer sees every byte too far.
Opened Open(const Bytes &container, size_t room, const char *password = nullptr) {
    const auto source = std::make_unique<uint8_t[]>(container.size());
    std::memcpy(source.get(), container.data(), container.size());
    const auto target = std::make_unique<uint8_t[]>(room);
    std::memset(target.get(), kUntouched, room);
    const int32_t result = DePack(source.get(), target.get(), password);
    return {result, Bytes(target.get(), target.get() + room),
            Bytes(source.get(), source.get() + container.size())};
}

void ExpectRoundTrip(const Bytes &source, const Bytes &container, const Bytes &clear, const char *password) {
    ASSERT_EQ(Field(container, 0), container.size());
    Bytes copy = container;
    ASSERT_EQ(GetOriginalSize(copy.data()), static_cast<int32_t>(source.size()));
    ASSERT_TRUE(copy == container);
    const Opened opened = Open(container, source.size(), password);
    ASSERT_EQ(opened.result, static_cast<int32_t>(source.size()));
    ASSERT_TRUE(opened.content == source);
    ASSERT_EQ(Field(opened.source, 0), kTag);
    ASSERT_TRUE(std::equal(clear.begin() + 4, clear.end(), opened.source.begin() + 4)) << "not in the clear";
}

void ExpectRoundTrips(const Bytes &source) {
    const Bytes clear = Packed(source);
    ExpectRoundTrip(source, clear, clear, nullptr);
    ExpectRoundTrip(source, clear, clear, "");
    ExpectRoundTrip(source, Packed(source, "key"), clear, "key");
}

TEST(Container, RoundTripsEveryLengthWithAndWithoutPassword) {
    EXPECT_TRUE(Packed({}).empty());
    EXPECT_TRUE(Packed({1}).empty());
    const Bytes text = MakeText(3000, 1), noise = MakeNoise(3000, 2);
    for (ptrdiff_t length = 2; length <= 3000; ++length) {
        SCOPED_TRACE(length);
        const Bytes &source = length % 3 == 0 ? noise : text;
        ExpectRoundTrips(Bytes(source.begin(), source.begin() + length));
    }
    Bytes large = MakeText(1000000, 3);
    large.insert(large.end(), 500000, 0);
    ExpectRoundTrips(large);
}

TEST(Container, HasTheHeaderThatTheFormatTells) {
    const Bytes source = MakeText(5000, 4);
    const Bytes clear = Packed(source), ciphered = Packed(source, "abc");
    EXPECT_EQ(Field(clear, 1), 24u);
    EXPECT_EQ(Field(clear, 2), clear.size() - 24);
    EXPECT_EQ(Field(clear, 3), crc32(0, &clear[24], Field(clear, 2)));
    EXPECT_EQ(Field(clear, 4), source.size());
    EXPECT_EQ(Field(clear, 5), crc32(0, source.data(), static_cast<uInt>(source.size())));
    for (size_t i = 0; i < clear.size(); ++i)
        ASSERT_EQ(ciphered[i], i < 64 ? clear[i] : clear[i] ^ "abc"[(i - 64) % 3]) << "byte " << i;
    const auto stream = test::ReadWholeStream(Bytes(clear.begin() + 24, clear.end()), source.size());
    ASSERT_TRUE(stream.has_value());
    EXPECT_EQ(stream->output, source);
}

TEST(Container, RefusesWrongPasswordsAndDamageBeforeItUnpacks) {
    const Bytes source = MakeText(2000, 5);
    const Bytes ciphered = Packed(source, "right"), clear = Packed(source);
    const Bytes untouched(source.size(), kUntouched);
    for (const char *password : {static_cast<const char *>(nullptr), "", "wrong", "righ"}) {
        const Opened opened = Open(ciphered, source.size(), password);
        EXPECT_EQ(opened.result, 0);
        EXPECT_EQ(opened.content, untouched);
    }
    for (size_t bit = 24 * 8; bit < clear.size() * 8; ++bit) {
        Bytes damaged = clear;
        damaged[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
        const Opened opened = Open(damaged, source.size());
        ASSERT_EQ(opened.result, 0) << "bit " << bit;
        ASSERT_EQ(opened.content, untouched) << "bit " << bit;
    }
}

TEST(Container, OpensAgainAndWithTheTagInPlaceOfItsSize) {
    const Bytes source = MakeText(2000, 6);
    for (const char *password : {static_cast<const char *>(nullptr), "secret"}) {
        const Opened first = Open(Packed(source, password), source.size(), password);
        ASSERT_EQ(first.result, 2000);
        for (const char *again : {static_cast<const char *>(nullptr), "secret", "other"})
            EXPECT_EQ(Open(first.source, source.size(), again).content, source);
    }
    // A header with more in it than 24 bytes moves the stream.
    Bytes longer = Packed(source);
    longer.insert(longer.begin() + 24, 50, 0xEE);
    SetField(longer, 0, static_cast<uint32_t>(longer.size()));
    SetField(longer, 1, 74);
    EXPECT_EQ(Open(longer, source.size()).content, source);
}

TEST(Container, RefusesForgedSizes) {
    const Bytes source = MakeText(3000, 7);
    const Bytes good = Packed(source);
    const auto total = static_cast<uint32_t>(good.size());
    const struct {
        size_t field;
        uint32_t value;
    } kForgeries[] = {{0, 0},          {0, 4},          {0, 23},         {0, 24},         {0, 63},
                      {0, 64},         {0, total - 1},  {0, 0x80000000}, {0, 0xFFFFFFFF}, {1, 0},
                      {1, 23},         {1, 25},         {1, total},      {1, 0x80000018}, {1, 0xFFFFFFFF},
                      {2, 0},          {2, 1},          {2, total - 25}, {2, total - 23}, {2, 0x7FFFFFFF},
                      {2, 0xFFFFFFE8}, {2, 0xFFFFFFFF}, {3, 0},          {4, 0},          {4, 1},
                      {4, 2999},       {4, 3001},       {4, 0x80000000}, {4, 0xFFFFFFFF}, {5, 0}};
    for (const auto &[field, value] : kForgeries) {
        for (const char *password : {static_cast<const char *>(nullptr), "key"}) {
            SCOPED_TRACE(testing::Message() << "field " << field << ": " << value);
            Bytes forged = Packed(source, password);
            SetField(forged, field, value);
            EXPECT_EQ(Open(forged, 3001, password).result, 0);
            const Bytes before = forged;
            const bool hasSize = Field(forged, 1) >= 24 && Field(forged, 4) <= INT32_MAX;
            EXPECT_EQ(GetOriginalSize(forged.data()), hasSize ? static_cast<int32_t>(Field(before, 4)) : 0);
            EXPECT_EQ(forged, before);
        }
    }
    // An original size below the truth is kept to, although both sums are right.
    Bytes shorter = good;
    SetField(shorter, 4, 100);
    SetField(shorter, 5, static_cast<uint32_t>(crc32(0, source.data(), 100)));
    EXPECT_EQ(Open(shorter, 100).result, 0);
    Bytes empty(24, 0);
    SetField(empty, 0, 24);
    SetField(empty, 1, 24);
    EXPECT_EQ(Open(empty, 1).result, 0);
}

TEST(Container, NeedsItsWorkAreaAndNothingElse) {
    const Bytes source = MakeText(1000, 8);
    platform::FailOnce(platform::Operation::Memory, 1);
    EXPECT_TRUE(Packed(source).empty());
    platform::FailOnce(platform::Operation::Memory, 2);
    const Bytes container = Packed(source);
    EXPECT_EQ(platform::CountOperations(platform::Operation::Memory), 1);
    EXPECT_EQ(Open(container, source.size()).result, 1000);
    EXPECT_EQ(platform::CountOperations(platform::Operation::Memory), 1);
    platform::ForgetFailures();
    Bytes room(2000);
    EXPECT_EQ(Pack(nullptr, room.data(), 100, nullptr), 0);
    EXPECT_EQ(Pack(source.data(), nullptr, 100, nullptr), 0);
    EXPECT_EQ(Pack(source.data(), room.data(), -5, nullptr), 0);
    EXPECT_EQ(DePack(nullptr, room.data(), nullptr), 0);
    EXPECT_EQ(GetOriginalSize(nullptr), 0);
}

}  // namespace
}  // namespace fenlight
