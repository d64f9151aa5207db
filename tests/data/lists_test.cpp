// SPDX-License-Identifier: Zlib
#include "fenlight/lists.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "data/memory_guard.h"

namespace fenlight {
namespace {

// The value of a token from its end to its start, as lists have always been read.
uint32_t ValueFromTheEnd(const std::string &token) {
    uint32_t multiplier = 1;
    auto place = token.rbegin();
    uint32_t value = static_cast<uint8_t>(*place) - 48u;
    for (++place; place != token.rend(); ++place) {
        multiplier *= 10;
        if (*place == '-') return 0 - value;
        value += (static_cast<uint8_t>(*place) - 48u) * multiplier;
    }
    return value;
}

// Writes the list into `memory` and gives the number of tokens.
int32_t JudgeList(const std::string &text, size_t width, std::string &memory) {
    std::vector<std::string> tokens(1);
    for (const char character : text) {
        if (character == ',') tokens.emplace_back();
        if (character != ',' && character != ' ') tokens.back() += character;
    }
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].empty() || tokens[i].back() == '*') continue;
        const uint32_t value = ValueFromTheEnd(tokens[i]);
        for (size_t byte = 0; byte < width; ++byte)
            memory[i * width + byte] = static_cast<char>(value >> 8 * byte);
    }
    return static_cast<int32_t>(tokens.size());
}

struct Setter {
    int32_t (*set)(void *memory, int32_t offset, const char *text);
    size_t width;
};
constexpr Setter kSetters[] = {{SetBytes, 1}, {SetWords, 2}, {SetLongs, 4}};

// The zero is the last byte of the text's memory, and the memory ends behind the last element.
void ExpectAsJudged(const std::string &text) {
    for (const auto &[set, width] : kSetters) {
        const auto tokens = static_cast<size_t>(std::count(text.begin(), text.end(), ',')) + 1;
        std::string expected(tokens * width, '?');
        const int32_t count = JudgeList(text, width, expected);
        const GuardedMemory source(std::string_view(text.c_str(), text.size() + 1));
        const GuardedMemory memory(std::string(tokens * width, '?'));
        ASSERT_EQ(set(memory.Data() - 3, 3, reinterpret_cast<const char *>(source.Data())), count) << text;
        ASSERT_EQ(memory.Text(), expected) << width << " bytes each: " << text;
    }
}

TEST(Lists, WriteWhatReadingFromTheEndGives) {
    for (const char *text :
         {"", ",", "1,,2,", " ", "*", "1*,*1,**", "-", "--", "5-", "-5-6", "1 0 , - 7", "+3,0x1F"})
        ExpectAsJudged(text);
    std::mt19937 random(31);
    constexpr std::string_view kCharacters = "0123456789012345678901234567899,,,--* xA!\xE4";
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 60, 0);
        for (char &character : text) character = kCharacters[random() % kCharacters.size()];
        ExpectAsJudged(text);
    }
}

TEST(Lists, GiveTheKnownBytes) {
    const struct {
        const Setter &setter;
        const char *text;
        std::vector<uint8_t> bytes;
        int32_t count;
    } cases[] = {{kSetters[0], "1, 2,3", {1, 2, 3, 9}, 3},
                 {kSetters[0], "1,*,3", {1, 9, 3, 9}, 3},
                 {kSetters[0], "1 0", {10, 9, 9, 9}, 1},
                 {kSetters[0], "12-34,300,-1", {222, 44, 255, 9}, 3},
                 {kSetters[0], "00000000000000000007,-1000000000000000001", {7, 255, 9, 9}, 2},
                 {kSetters[0], "4,", {4, 9, 9, 9}, 2},
                 {kSetters[1], "*,-1", {9, 9, 255, 255}, 2},
                 {kSetters[2], "-2147483648", {0, 0, 0, 0x80}, 1}};
    for (const auto &[setter, text, bytes, count] : cases) {
        std::vector<uint8_t> memory(4, 9);
        EXPECT_EQ(setter.set(memory.data(), 0, text), count) << text;
        EXPECT_EQ(memory, bytes) << text;
    }
    EXPECT_EQ(SetBytes(nullptr, 4, "1"), 0);
    char memory[4] = {};
    EXPECT_EQ(SetLongs(memory, 0, nullptr), 0);
}

TEST(DataStream, GoesOnWhereTheLastCallStopped) {
    DataMem(nullptr);
    DataPos(5);
    EXPECT_EQ(DataBytes("1,2"), 0) << "there is no place to write to";
    EXPECT_EQ(OemBytes("A"), 0);
    std::string memory(16, '?');
    DataMem(memory.data());
    EXPECT_EQ(DataBytes("1,2"), 2);
    EXPECT_EQ(DataBytes("3"), 1);
    EXPECT_EQ(OemBytes("A!A"), 2);
    EXPECT_EQ(DataBytes("*,7"), 2);
    EXPECT_EQ(OemBytes(nullptr) + DataBytes(nullptr), 0);
    EXPECT_EQ(memory,
              "\x01\x02\x03"
              "A\xA5?\x07?????????");
    DataPos(14);
    EXPECT_EQ(OemBytes("xy"), 2);
    DataMem(memory.data() + 8);
    DataPos(-1);
    EXPECT_EQ(DataBytes("33"), 1);
    EXPECT_EQ(memory,
              "\x01\x02\x03"
              "A\xA5?\x07!??????xy");
    DataMem(nullptr);
}

// Every byte can be written, and what is written for it is what the escapes say.
TEST(OemBytes, DecodesEscapesUpToTheZero) {
    const std::pair<std::string, std::string> cases[] = {{"A", "A"},
                                                         {"!A", "\xA5"},
                                                         {" #", std::string(1, 0)},
                                                         {"! #", "d"},
                                                         {"", ""},
                                                         {"x!", "x"},
                                                         {"x ", "x"},
                                                         {"x! ", "x"},
                                                         {" !", "\xFE"},
                                                         {"!!", "\x85"},
                                                         {"  ", "\xFD"},
                                                         {"!  ", "a"},
                                                         {"a\xFF!\xFF", "a\xFF\x63"},
                                                         {" \x01", "\xDE"}};
    for (const auto &[text, bytes] : cases) {
        const GuardedMemory source(std::string_view(text.c_str(), text.size() + 1));
        const GuardedMemory memory(std::string(bytes.size(), '?'));
        DataMem(memory.Data());
        EXPECT_EQ(OemBytes(reinterpret_cast<const char *>(source.Data())), static_cast<int32_t>(bytes.size()))
            << text;
        EXPECT_EQ(memory.Text(), bytes) << text;
    }
    DataMem(nullptr);
}

}  // namespace
}  // namespace fenlight
