// SPDX-License-Identifier: Zlib
#include "fenlight/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "data/memory_guard.h"
#include "support/each_level.h"

namespace fenlight {
namespace {

std::string TextAt(const uint8_t *bytes, int64_t count) { return {bytes, bytes + count}; }

// Texts in which `specials` make up one byte in `rarity`.
class TextMaker {
  public:
    std::string Make(size_t length, std::string_view specials, uint32_t rarity) {
        std::string text(length, 0);
        for (char &byte : text)
            byte = Draw(rarity) == 0 ? specials[Draw(static_cast<uint32_t>(specials.size()))]
                                     : static_cast<char>('a' + Draw(4));
        return text;
    }
    uint32_t Draw(uint32_t range) {
        return std::uniform_int_distribution<uint32_t>(0, range - 1)(generator_);
    }

  private:
    std::mt19937 generator_{20240917};
};

// The routines in slow motion, writing as they read, so that they judge overlapping texts too. The first
// `compared` bytes of the output are told; the first `touched` may be written.
struct Judged {
    int64_t result = 0;
    int64_t compared = 0;
    int64_t touched = 0;
};

Judged JudgeReplace(const uint8_t *source, int64_t length, uint8_t *destination, std::string_view search,
                    std::string_view replacement) {
    int64_t out = 0;
    for (int64_t i = 0; i < length;) {
        size_t same = 0;
        while (same < search.size() && i + static_cast<int64_t>(same) < length &&
               source[i + static_cast<int64_t>(same)] == static_cast<uint8_t>(search[same]))
            ++same;
        const bool isMatch = same == search.size();
        if (!isMatch) destination[out++] = source[i];
        for (size_t k = 0; isMatch && k < replacement.size(); ++k)
            destination[out++] = static_cast<uint8_t>(replacement[k]);
        i += isMatch ? static_cast<int64_t>(same) : 1;
    }
    return {out, out, out};
}

Judged JudgeTabs(const uint8_t *source, int64_t length, uint8_t *destination, int32_t tabWidth) {
    int64_t out = 0, blanks = 0;
    for (int64_t i = 0; i < length; ++i) {
        const uint8_t byte = source[i];
        for (int32_t k = 0; k < (byte == '\t' ? tabWidth : 1); ++k)
            destination[out++] = byte == '\t' ? ' ' : byte;
        if (byte == '\t') blanks += tabWidth;
    }
    return {blanks, out, out};
}

// What becomes of a byte for flags 0 to 3: dropped, written, written twice, or the last one taken back.
enum Kind { Opens, OtherInside, OtherOutside, Closes, StrayClose };
constexpr std::string_view kFates[] = {"ddww", "dwdw", "wdwd", "ddww", "wt2d"};

Judged JudgeTags(const uint8_t *source, int64_t length, uint8_t *destination, int open, int close,
                 int flags) {
    int64_t out = 0, touched = 0;
    bool isInTag = false;
    for (int64_t i = 0; i < length; ++i) {
        const uint8_t byte = source[i];
        const Kind kind = byte == open    ? Opens
                          : byte == close ? (isInTag ? Closes : StrayClose)
                                          : (isInTag ? OtherInside : OtherOutside);
        isInTag = (isInTag || byte == open) && byte != close;
        const char fate = kFates[kind][static_cast<size_t>(flags & 3)];
        if (fate == 't') out = std::max<int64_t>(out - 1, 0);
        for (int copies = fate == 'w' ? 1 : fate == '2' ? 2 : 0; copies > 0; --copies)
            destination[out++] = byte;
        touched = std::max(touched, out);
    }
    destination[out] = 0;
    return {out, out + 1, std::max(touched, out + 1)};
}

// Both on a source and a destination at the edge of memory, with room for what may be written only.
template <typename Routine, typename Judge>
void CompareApart(const std::string &text, Routine routine, Judge judge) {
    static std::vector<uint8_t> expected(1 << 22);
    const auto length = static_cast<int32_t>(text.size());
    const GuardedMemory source(text);
    const Judged judged = judge(source.Data(), length, expected.data());
    WithEachLevel([&] {
        const GuardedMemory destination(std::string(static_cast<size_t>(judged.touched), '?'));
        ASSERT_EQ(routine(source.Data(), length, destination.Data()), judged.result) << text;
        ASSERT_EQ(TextAt(destination.Data(), judged.compared), TextAt(expected.data(), judged.compared))
            << text;
        ASSERT_EQ(source.Text(), text) << "the source";
    });
}

// Both within one block of memory, the destination at all distances from the source.
template <typename Routine, typename Judge>
void CompareOverlapping(const std::string &text, Routine routine, Judge judge) {
    const auto length = static_cast<int32_t>(text.size());
    for (int64_t distance = -length - 2; distance <= length + 2; ++distance) {
        const int64_t start = 2 * length;
        std::string expected = std::string(static_cast<size_t>(start), 'x') + text;
        expected.resize(static_cast<size_t>(70 * length), 'y');
        std::string actual = expected;
        auto *const judgedMemory = reinterpret_cast<uint8_t *>(expected.data()) + start;
        auto *const memory = reinterpret_cast<uint8_t *>(actual.data()) + start;
        const Judged judged = judge(judgedMemory, length, judgedMemory + distance);
        ASSERT_EQ(routine(memory, length, memory + distance), judged.result) << distance << ' ' << text;
        // Bytes that were written and taken back are nobody's.
        const auto taken = static_cast<size_t>(start + distance + judged.compared);
        std::fill_n(actual.begin() + static_cast<int64_t>(taken), judged.touched - judged.compared, '?');
        std::fill_n(expected.begin() + static_cast<int64_t>(taken), judged.touched - judged.compared, '?');
        ASSERT_EQ(actual, expected) << distance << ' ' << text;
    }
}

// The cases of a routine: all short lengths with specials rare and dense, and texts of many blocks.
template <typename Routine, typename Judge>
void CompareOnAllTexts(std::string_view specials, Routine routine, Judge judge) {
    TextMaker maker;
    for (const uint32_t rarity : {1u, 2u, 5u, 40u, 1000000u}) {
        for (size_t length = 1; length <= 260; ++length)
            CompareApart(maker.Make(length, specials, rarity), routine, judge);
        for (const size_t length : {4000, 4159, 9001, 20000})
            CompareApart(maker.Make(length, specials, rarity), routine, judge);
        CompareOverlapping(maker.Make(150, specials, rarity), routine, judge);
    }
}

TEST(Replace, WritesWhatAByteByByteScanWrites) {
    const std::string longText(200, 'L');
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"a", ""},    {"a", "z"},        {"a", "zyx"},   {"ab", "x"},         {"aa", "b"}, {"the", "that"},
        {"the", "t"}, {"aba", longText}, {"cc", "cccc"}, {longText, "short"}, {"the", ""}};
    for (const auto &[search, replacement] : cases) {
        const auto routine = [&](const uint8_t *source, int32_t length, uint8_t *destination) {
            return Replace(source, length, destination, search.data(), static_cast<int32_t>(search.size()),
                           replacement.data(), static_cast<int32_t>(replacement.size()));
        };
        const auto judge = [&](const uint8_t *source, int64_t length, uint8_t *destination) {
            return JudgeReplace(source, length, destination, search, replacement);
        };
        for (const std::string_view text : {"abcab", "abca", "aaa", "a", "the cat the hat the"})
            CompareApart(std::string(text), routine, judge);
        CompareOnAllTexts("the", routine, judge);
    }
}

TEST(ReplaceTabs, WritesWidthBlanksForEachTab) {
    for (const int32_t width : {1, 2, 4, 8, 63, 65}) {
        const auto routine = [&](const uint8_t *source, int32_t length, uint8_t *destination) {
            return ReplaceTabs(source, destination, length, width);
        };
        const auto judge = [&](const uint8_t *source, int64_t length, uint8_t *destination) {
            return JudgeTabs(source, length, destination, width);
        };
        CompareOnAllTexts("\t", routine, judge);
    }
}

TEST(DeleteTags, TreatsEachByteAsItsKindIsTold) {
    const std::pair<int, int> delimiters[] = {{'(', ')'}, {'(', '('}, {0xFE, 0}};
    for (const auto &[open, close] : delimiters) {
        const std::string specials = {static_cast<char>(open), static_cast<char>(close)};
        for (const int flags : {0, 1, 2, 3, -1}) {
            const auto routine = [&](const uint8_t *source, int32_t length, uint8_t *destination) {
                return DeleteTags(source, length, destination, open, close, flags);
            };
            const auto judge = [&](const uint8_t *source, int64_t length, uint8_t *destination) {
                return JudgeTags(source, length, destination, open, close, flags);
            };
            for (const std::string_view text : {"x(y)z(w)v", "a(b", ")))", ")a(b))))c", "((a))"})
                CompareApart(std::string(text), routine, judge);
            CompareOnAllTexts(specials, routine, judge);
            CompareOnAllTexts(specials.substr(0, 1), routine, judge);
        }
    }
}

// Worked by hand, so that the judges are judged.
TEST(Text, GivesTheKnownResults) {
    char out[16];
    const auto deleteTags = [&](const char *text, int flags) {
        const int32_t written =
            DeleteTags(text, static_cast<int32_t>(std::strlen(text)), out, '(', ')', flags);
        EXPECT_EQ(std::strlen(out), static_cast<size_t>(written));
        return std::string(out);
    };
    const std::array<const char *, 5> cases[] = {{"a(b)c", "ac", "b", "a()c", "(b)"},
                                                 {"x(y)z(w)v", "xzv", "yw", "x()z()v", "(y)(w)"},
                                                 {"(a)b)c", "b)c", "", "()b))c", "(a)"},
                                                 {"a(b", "a", "b", "a(", "(b"}};
    for (const auto &[text, outside, inside, outsideKept, insideKept] : cases) {
        EXPECT_EQ(deleteTags(text, 0), outside);
        EXPECT_EQ(deleteTags(text, 1), inside);
        EXPECT_EQ(deleteTags(text, 2), outsideKept);
        EXPECT_EQ(deleteTags(text, 3), insideKept);
    }
    EXPECT_EQ(TextAt(reinterpret_cast<uint8_t *>(out), Replace("aaa", 3, out, "aa", 2, "b", 1)), "ba");
    EXPECT_EQ(TextAt(reinterpret_cast<uint8_t *>(out), Replace("abca", 4, out, "ab", 2, "x", 1)), "xca");
    EXPECT_EQ(ReplaceTabs("\t", out, 1, 4), 4);
    EXPECT_EQ(CountStrings("xaaa", 1, 3, "aa", 2), 2);
    EXPECT_EQ(CountStrings("aaa", 0, 1, "aaa", 3), 1) << "a match may end behind the range";
}

TEST(Text, DoesNothingForEmptySizes) {
    for (const int32_t none : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(Replace(nullptr, none, nullptr, "a", 1, "b", 1), 0);
        EXPECT_EQ(Replace("a", 1, nullptr, nullptr, none, "b", 1), 0);
        EXPECT_EQ(ReplaceTabs(nullptr, nullptr, none, 4), 0);
        EXPECT_EQ(ReplaceTabs("\t", nullptr, 1, none), 0);
        EXPECT_EQ(CountStrings(nullptr, 0, none, "a", 1), 0);
        EXPECT_EQ(CountStrings("a", 0, 1, nullptr, none), 0);
        EXPECT_EQ(DeleteTags(nullptr, none, nullptr, '(', ')', 0), 0);
        char out[2] = {};
        EXPECT_EQ(Replace("aba", 3, out, "a", 1, nullptr, none), 1) << "a replacement of no length deletes";
        EXPECT_EQ(out[0], 'b');
    }
}

}  // namespace
}  // namespace fenlight
