// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

#include "data/memory_guard.h"
#include "data/memory_kernels.h"
#include "fenlight/fx_buffer.h"
#include "fenlight/memory.h"
#include "support/each_level.h"

namespace fenlight {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr uint32_t kSeed = 20250712;

uint64_t ReadElement(const Bytes &bytes, size_t at, size_t width) {
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) value |= uint64_t{bytes[at + i]} << (8 * i);
    return value;
}

void WriteElement(Bytes &bytes, size_t at, size_t width, uint64_t value) {
    for (size_t i = 0; i < width; ++i) bytes[at + i] = static_cast<uint8_t>(value >> (8 * i));
}

class MemoryBlocks : public EachLevel {
  protected:
    uint32_t Draw() { return static_cast<uint32_t>(random_()); }
    uint32_t Below(uint32_t bound) { return Draw() % bound; }
    int32_t Any() { return static_cast<int32_t>(Draw()); }
    // Runs of few values, so that counts are neither 0 nor all.
    Bytes AnyBytes(size_t size) {
        Bytes bytes(size);
        const uint32_t values = 1 + Below(4), run = 1 + Below(60);
        for (size_t i = 0; i < size; ++i) {
            bytes[i] = i > 0 && Below(run) != 0 ? bytes[i - 1] : static_cast<uint8_t>(97 * Below(values));
        }
        return bytes;
    }

    std::mt19937 random_{kSeed};
};

INSTANTIATE_TEST_SUITE_P(Levels, MemoryBlocks, kEachLevel);

TEST_P(MemoryBlocks, CountWhatALoopCounts) {
    using Count = int32_t (*)(const void *, int32_t, int32_t, int32_t);
    constexpr Count kCounts[] = {CountBytes, CountWords, CountLongs};
    for (int turn = 0; turn < 3000; ++turn) {
        const size_t index = Below(3), width = size_t{1} << index;
        const size_t count = Below(turn % 8 == 0 ? 1500 : 150);
        const Bytes bytes = AnyBytes(count * width);
        const GuardedMemory memory(bytes, turn % 2 == 0);
        const size_t place = count == 0 ? 0 : width * Below(static_cast<uint32_t>(count));
        const auto value = static_cast<int32_t>(count == 0 ? 0 : ReadElement(bytes, place, width));
        int32_t hits = 0;
        for (size_t i = 0; i < count; ++i) {
            hits += static_cast<int32_t>(ReadElement(bytes, i * width, width)) == value ? 1 : 0;
        }
        // What lies above the element's width is not looked at.
        const int32_t noise = width == 4 ? 0 : Any() & static_cast<int32_t>(~0U << (8 * width));
        const auto offset = static_cast<int32_t>(Below(2000)) - 1000;
        ASSERT_EQ(kCounts[index](memory.Data() - offset, offset, static_cast<int32_t>(count), value | noise),
                  hits)
            << "turn " << turn << " width " << width << " count " << count;
        if (width > 1) continue;
        const auto first = std::find_if(bytes.begin(), bytes.end(), [&](uint8_t b) { return b != value; });
        ASSERT_EQ(CountFirstBytes(memory.Data() - offset, offset, static_cast<int32_t>(count), value | noise),
                  first - bytes.begin());
    }
}

TEST_P(MemoryBlocks, CompareWhatALoopCompares) {
    for (int turn = 0; turn < 2000; ++turn) {
        const size_t count = Below(turn % 8 == 0 ? 1500 : 150);
        const Bytes a = AnyBytes(count);
        Bytes b = a;
        for (auto &byte : b) byte = static_cast<uint8_t>(byte + (Below(3) == 0 ? Below(256) : 0));
        const GuardedMemory first(a, turn % 2 == 0), second(b, turn % 2 == 0);
        const int32_t tolerances[] = {0, static_cast<int32_t>(Below(256)), 254, 255, 300, -1, INT32_MIN};
        for (const int32_t tolerance : tolerances) {
            int32_t different = 0;
            for (size_t i = 0; i < count; ++i) different += std::abs(a[i] - b[i]) > tolerance ? 1 : 0;
            ASSERT_EQ(CompareBytes(first.Data(), second.Data(), static_cast<int32_t>(count), tolerance),
                      different)
                << "turn " << turn << " count " << count << " tolerance " << tolerance;
        }
    }
}

// What a walk over the bytes does, one after the other.
TEST_P(MemoryBlocks, CopyAndWidenLikeAWalk) {
    for (int turn = 0; turn < 6000; ++turn) {
        const size_t range = turn % 100 == 0 ? 100000 : turn % 8 == 0 ? 3000 : 120;
        const size_t count = Below(static_cast<uint32_t>(range));
        Bytes expected(4 * count + 200);
        for (auto &byte : expected) byte = static_cast<uint8_t>(Draw());
        const size_t from = Below(static_cast<uint32_t>(2 * count + 100));
        const bool isNear = Below(2) == 0;
        size_t to = isNear ? from + Below(65) : Below(static_cast<uint32_t>(2 * count + 100));
        if (isNear && to >= 32) to -= 32;
        const int mode = static_cast<int>(Below(4));
        const size_t elements = mode == 3 ? count / 2 : count;
        if (mode > 1) to = Below(3) == 0 ? std::min(from, count) - std::min(from, count) / 2 : to;
        const GuardedMemory memory(expected);
        for (size_t i = 0; i < elements; ++i) {
            const size_t at = mode == 1 ? count - 1 - i : i;
            const size_t narrow = mode == 3 ? 2 : 1, wide = mode < 2 ? 1 : 2 * narrow;
            WriteElement(expected, to + at * wide, wide, ReadElement(expected, from + at * narrow, narrow));
        }
        constexpr decltype(&CopyMemory) kWalks[] = {CopyMemory, CopyMemoryFromBack, ChangeBytesToWords,
                                                    ChangeWordsToLongs};
        const auto shift = static_cast<int32_t>(Below(500)) - 250;
        kWalks[mode](memory.Data() + shift, static_cast<int32_t>(from) - shift, memory.Data() - shift,
                     static_cast<int32_t>(to) + shift, static_cast<int32_t>(elements));
        ASSERT_TRUE(memory.Content() == expected)
            << "turn " << turn << " mode " << mode << " from " << from << " to " << to << " n " << elements;
    }
}

struct Sums {
    int32_t addend, subtrahend, factor, divisor;
};

// The told steps, each stored back at the element's width.
void ComputePlainly(Bytes &bytes, int64_t length, size_t width, int64_t step, const Sums &sums) {
    const uint64_t mask = (uint64_t{1} << (8 * width)) - 1;
    for (int64_t at = 0; at < length; at += step) {
        uint64_t value = ReadElement(bytes, static_cast<size_t>(at), width);
        if (sums.factor != 0) value = value * static_cast<uint32_t>(sums.factor) & mask;
        if (sums.divisor != 0) value /= static_cast<uint32_t>(sums.divisor);
        value = value + static_cast<uint64_t>(int64_t{sums.addend}) -
                static_cast<uint64_t>(int64_t{sums.subtrahend});
        WriteElement(bytes, static_cast<size_t>(at), width, value);
    }
}

void ExpectPlainCompute(const Bytes &bytes, int32_t length, int32_t width, int32_t gap, const Sums &sums) {
    Bytes expected = bytes;
    ComputePlainly(expected, length, static_cast<size_t>(width), width + gap, sums);
    const GuardedMemory memory(bytes, length % 2 == 0);
    Compute(memory.Data(), length, width, sums.addend, sums.subtrahend, sums.factor, sums.divisor, gap);
    ASSERT_TRUE(memory.Content() == expected)
        << "length " << length << " width " << width << " gap " << gap << " + " << sums.addend << " - "
        << sums.subtrahend << " * " << sums.factor << " / " << sums.divisor;
}

TEST_P(MemoryBlocks, ComputeStepByStep) {
    const auto some = [&] { return Below(4) == 0 ? 0 : Any() >> Below(32); };
    for (int turn = 0; turn < 4000; ++turn) {
        const auto width = static_cast<int32_t>(1U << Below(3));
        const auto gap = Below(3) == 0 ? static_cast<int32_t>(Below(8)) - width + 1 : 0;
        const auto length = static_cast<int32_t>(Below(400));
        Bytes bytes(static_cast<size_t>(length + width + 8));
        for (auto &byte : bytes) byte = static_cast<uint8_t>(Draw());
        ASSERT_NO_FATAL_FAILURE(
            ExpectPlainCompute(bytes, length, width, gap, {some(), some(), some(), some()}));
    }
}

// A multiplication takes the division's place: every 16-bit value by many divisors, and 32-bit values where a
// quotient changes.
TEST_P(MemoryBlocks, DivideExactly) {
    Bytes words(2 * 65536);
    for (size_t i = 0; i < 65536; ++i) WriteElement(words, 2 * i, 2, i);
    std::vector<uint32_t> divisors{1,     2,     3,     254,   255,   256, 257,
                                   32767, 32768, 65534, 65535, 65536, ~0U, 1U << 31};
    for (uint32_t i = 0; i < 150; ++i) divisors.push_back(1 + (Draw() >> (16 + Below(14))));
    for (const uint32_t divisor : divisors) {
        const Sums sums{0, 0, 0, static_cast<int32_t>(divisor)};
        ASSERT_NO_FATAL_FAILURE(ExpectPlainCompute(words, 2 * 65536, 2, 0, sums));
        ASSERT_NO_FATAL_FAILURE(
            ExpectPlainCompute(Bytes(words.begin(), words.begin() + 512), 512, 1, 0, sums));
    }
    for (int turn = 0; turn < 4000; ++turn) {
        const uint32_t divisor = turn < 14 ? divisors[static_cast<size_t>(turn)] : 1 + (Draw() >> Below(32));
        Bytes longs(4 * 64);
        for (size_t i = 0; i < 64; ++i) {
            const uint32_t quotient = Draw() >> Below(32);
            WriteElement(longs, 4 * i, 4, uint64_t{quotient / divisor} * divisor - (i % 2));
        }
        const Sums sums{0, 0, 0, static_cast<int32_t>(divisor)};
        ASSERT_NO_FATAL_FAILURE(ExpectPlainCompute(longs, 4 * 64, 4, 0, sums));
    }
}

TEST_P(MemoryBlocks, TurnLongsEndForEnd) {
    for (size_t size = 0; size < 700; ++size) {
        Bytes bytes(size);
        for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
        const GuardedMemory memory(bytes);
        EXPECT_EQ(ChangeLongSequence(memory.Data(), static_cast<int32_t>(size)), 0);
        Bytes expected = bytes;
        for (size_t i = 0; i < size / 4; ++i) {
            std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(4 * i), 4,
                        expected.begin() + static_cast<ptrdiff_t>(size / 4 * 4 - 4 * (i + 1)));
        }
        ASSERT_TRUE(memory.Content() == expected) << "size " << size;
    }
}

TEST(MemoryValues, GoInAndOutInOrder) {
    Bytes block(64, 0xEE);
    VarToLong10(block.data() + 100, -99, 1, 2, 3, -4, 5, 6, 7, 8, 9, INT32_MIN);
    VarToLong4(block.data(), 45, 0x04030201, -1, 0, 7);
    const auto at = [&](size_t position) { return static_cast<int32_t>(ReadElement(block, position, 4)); };
    EXPECT_EQ(at(1), 1);
    EXPECT_EQ(at(13), -4);
    EXPECT_EQ(at(37), INT32_MIN);
    EXPECT_EQ(GetAByte(block.data() + 45), 0x04030201);
    EXPECT_EQ(block[0], 0xEE);
    EXPECT_EQ(ReadElement(block, 41, 4), 0xEEEEEEEE);
    EXPECT_EQ(block[61], 0xEE);
    SetAByte(block.data() + 62, 0x1234);
    EXPECT_EQ(ReadElement(block, 61, 3), 0xEE34EE);
    int32_t values[4] = {};
    LongToAddrVar4(block.data() - 50, 95, &values[3], &values[2], &values[1], &values[0]);
    EXPECT_EQ(std::vector<int32_t>(values, values + 4), (std::vector<int32_t>{7, 0, -1, 0x04030201}));
    FXHeader header{};
    header.Pixels = block.data();
    EXPECT_EQ(GetMemHandle(reinterpret_cast<uintptr_t>(&header)), block.data());
    EXPECT_EQ(GetMemHandle(0), nullptr);
}

TEST(MemoryValues, PositionsCountFromTheBase) {
    const char *text = "xaaabaaa";
    EXPECT_EQ(FindBytes(text, 1, 7, "aa", 2), 1);
    EXPECT_EQ(FindBytes(text + 5, -2, 5, "aa", 2), 0);
    EXPECT_EQ(FindBytesCount(text, 1, 7, "aa", 2, 1), 2);
    EXPECT_EQ(FindBytesCount(text, 2, 6, "a", 1, 2), 5);
    EXPECT_EQ(FindBytesCount(text, 1, 7, "aa", 2, 4), -1);
    EXPECT_EQ(FindBytes(text, 0, 4, "ab", 2), 3) << "may reach behind the range";
    EXPECT_EQ(FindBytes(text, 0, 3, "ab", 2), -1);
}

// Address 1 is never mapped.
TEST(MemoryValues, NothingIsTouchedWithoutACount) {
    auto *const nowhere = reinterpret_cast<uint8_t *>(1);
    for (const int32_t none : {0, -1, INT32_MIN}) {
        for (const auto count : {CountBytes, CountWords, CountLongs, CountFirstBytes}) {
            EXPECT_EQ(count(nowhere, INT32_MAX, none, 1), 0);
        }
        for (const auto walk : {CopyMemory, CopyMemoryFromBack, ChangeBytesToWords, ChangeWordsToLongs}) {
            EXPECT_EQ(walk(nowhere, INT32_MIN, nowhere + 1, INT32_MAX, none), 0);
        }
        EXPECT_EQ(ClearWith(nowhere, 5, 7, none), 0);
        EXPECT_EQ(FindBytes(nowhere, 5, none, nowhere, 3), -1);
        EXPECT_EQ(FindBytes(nowhere, 5, 3, nowhere, none), -1);
        EXPECT_EQ(FindBytesCount(nowhere, 5, 3, nowhere, none, 1), -1);
        for (const int32_t tolerance : {-1, 0, 1})
            EXPECT_EQ(CompareBytes(nowhere, nowhere, none, tolerance), 0);
        EXPECT_EQ(ChangeLongSequence(nowhere, none), 0);
        Compute(nowhere, none, 4, 1, 0, 0, 0, 0);
        Compute(nowhere, 8, 4, 1, 0, 0, 0, std::min(none, -4));
        for (const int32_t size : {3, 8, none}) Compute(nowhere, 8, size, 1, 0, 2, 0, 1);
    }
}

// Steps beyond 2^31 leave one element; the block has no second one.
TEST(MemoryValues, ComputeStepsInSixtyFourBits) {
    Bytes block(8, 0xFF);
    Compute(block.data(), INT32_MAX, 4, 1, 0, 0, 0, INT32_MAX);
    Compute(block.data() + 4, INT32_MAX, 1, 0, INT32_MIN + 2, 0, INT32_MIN, INT32_MAX);
    Compute(nullptr, INT32_MAX, INT32_MIN, 1, 0, 0, 0, INT32_MIN);
    EXPECT_EQ(block, (Bytes{0, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}));
}

TEST(MemoryValues, ClearWithTakesTheLowByteAndStaysInside) {
    Bytes block(40, 1);
    EXPECT_EQ(ClearWith(block.data() + 50, -47, 0x1F7, 30), 0);
    Bytes expected(40, 1);
    std::fill_n(expected.begin() + 3, 30, uint8_t{0xF7});
    EXPECT_EQ(block, expected);
}

}  // namespace
}  // namespace fenlight
