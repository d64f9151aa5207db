// SPDX-License-Identifier: Zlib
#include "data/byte_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "data/memory_guard.h"
#include "platform/system/failure_point.h"
#include "support/each_level.h"

namespace fenlight {
namespace {

using Bytes = std::vector<uint8_t>;

// The judge: every start in turn, and from each byte after byte.
std::vector<int64_t> PlainMatches(const uint8_t *first, int64_t candidates, const Bytes &pattern) {
    std::vector<int64_t> matches;
    for (int64_t at = 0; at < candidates; ++at) {
        size_t same = 0;
        while (same < pattern.size() && first[static_cast<size_t>(at) + same] == pattern[same]) ++same;
        if (same == pattern.size()) matches.push_back(at);
    }
    return matches;
}

std::vector<int64_t> WithoutOverlaps(const std::vector<int64_t> &matches, int64_t length, int64_t last) {
    std::vector<int64_t> separate;
    for (const int64_t match : matches) {
        if (match > last || (!separate.empty() && match < separate.back() + length)) continue;
        separate.push_back(match);
    }
    return separate;
}

std::vector<int64_t> WalkSeparate(SeparateMatches walk, size_t room) {
    std::vector<int64_t> all, some(room);
    size_t count = 0;
    do {
        count = walk.Next(some);
        all.insert(all.end(), some.begin(), some.begin() + static_cast<ptrdiff_t>(count));
    } while (count == room);
    return all;
}

// `candidates` bytes of the text are the range, and all that can be read on one of its sides.
void ExpectPlainMatches(const Bytes &text, bool isAtStart, int64_t candidates, const Bytes &pattern) {
    const GuardedMemory memory(text, isAtStart);
    const GuardedMemory held(pattern, isAtStart);
    const auto *first = memory.Data();
    const auto length = static_cast<int64_t>(pattern.size());
    const auto size = static_cast<int64_t>(text.size());
    const auto expected = PlainMatches(first, candidates, pattern);
    const auto count = static_cast<int64_t>(expected.size());
    ASSERT_EQ(CountPattern(first, candidates, held.Data(), length), count);
    for (const int64_t index : {int64_t{0}, int64_t{1}, count / 2, count - 1, count}) {
        const bool isThere = index >= 0 && index < count;
        const int64_t position = isThere ? expected[static_cast<size_t>(index)] : -1;
        ASSERT_EQ(FindPattern(first, candidates, held.Data(), length, index), position) << "index " << index;
    }
    const auto inside =
        WithoutOverlaps(PlainMatches(first, size - length + 1, pattern), length, size - length);
    for (const size_t room : {size_t{1}, size_t{7}, size_t{1000}}) {
        ASSERT_EQ(WalkSeparate({first, size, held.Data(), length}, room), inside) << "room " << room;
    }
}

class ByteSearch : public EachLevel {};
INSTANTIATE_TEST_SUITE_P(Levels, ByteSearch, kEachLevel);

// Few letters and repeated pieces make matches frequent, broken off late and overlapping; a text that ends
// with its range may not be read behind it, unless a match stands there.
TEST_P(ByteSearch, FindsWhatAPlainScanFinds) {
    constexpr uint32_t kSeed = 20250711;
    std::mt19937 random(kSeed);
    const auto below = [&](size_t bound) { return random() % bound; };
    for (int turn = 0; turn < 6000; ++turn) {
        Bytes text(1 + below(turn % 4 != 0 ? 90 : (turn % 16 != 0 ? 700 : 3000)));
        const size_t letters = 1 + below(3), period = 1 + below(40);
        for (size_t i = 0; i < text.size(); ++i) {
            const bool repeats = i >= period && below(30) != 0;
            text[i] = repeats ? text[i - period] : static_cast<uint8_t>('a' + below(letters));
        }
        Bytes pattern(1 + below(turn % 3 == 0 ? 300 : 12));
        const size_t cut = below(text.size());
        for (size_t i = 0; i < pattern.size(); ++i) {
            pattern[i] = cut + i < text.size() ? text[cut + i] : static_cast<uint8_t>('a' + below(letters));
        }
        if (below(3) == 0) pattern[below(pattern.size())] ^= 1;
        // Matches that overlap each other by whatever the pattern allows.
        for (size_t copies = below(4) == 0 ? below(20) : 0; copies > 0; --copies) {
            text.resize(text.size() - below(std::min(text.size(), pattern.size())));
            text.insert(text.end(), pattern.begin(), pattern.end());
        }
        // What lies behind the range is there in full, or the end of a match, or one byte that stops every
        // match.
        Bytes whole = text;
        const size_t behind = below(4);
        if (behind == 0) whole.insert(whole.end(), pattern.size() - 1, pattern[0]);
        if (behind == 1)
            whole.insert(whole.end(), pattern.end() - static_cast<ptrdiff_t>(below(pattern.size())),
                         pattern.end());
        if (behind > 0) whole.push_back(0);
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " turn " << turn << " text "
                                        << std::string(whole.begin(), whole.end()) << " pattern "
                                        << std::string(pattern.begin(), pattern.end()));
        ExpectPlainMatches(whole, below(2) == 0, static_cast<int64_t>(text.size()), pattern);
        if (HasFatalFailure()) return;
    }
}

// Long patterns in long texts that have little in common with them, of noise, of two letters or of a few
// words that return for ever: matches at every distance from each other, and pieces of the pattern that are
// none.
TEST_P(ByteSearch, LeapsOverNoMatch) {
    constexpr uint32_t kSeed = 5;
    std::mt19937 random(kSeed);
    for (int turn = 0; turn < 300; ++turn) {
        Bytes pattern(20 + random() % 300), text(5000 + random() % (turn % 5 == 0 ? 60000 : 8000));
        const size_t letters = turn % 3 == 0 ? 1 : 256, period = 1 + random() % 60;
        for (auto &byte : pattern) byte = static_cast<uint8_t>(random() % letters);
        for (size_t i = 0; i < text.size(); ++i) {
            const bool repeats = turn % 4 == 3 && i >= period;
            text[i] =
                repeats ? text[i - period] : static_cast<uint8_t>(1 + random() % (turn % 4 == 0 ? 2 : 255));
        }
        for (int copy = 0; copy < 4; ++copy) {
            const size_t cut = copy == 3 ? random() % pattern.size() : pattern.size();
            const size_t at = random() % (text.size() - cut);
            std::copy_n(pattern.begin(), cut, text.begin() + static_cast<ptrdiff_t>(at));
        }
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " turn " << turn);
        text.push_back(0xFF);
        ExpectPlainMatches(text, turn % 2 == 0, static_cast<int64_t>(text.size()) - 1, pattern);
        if (HasFatalFailure()) return;
    }
}

// What would take years if a long pattern were compared at each place from its start.
TEST_P(ByteSearch, StaysLinearWhereEveryPlaceMatchesOrNearlyDoes) {
    constexpr int64_t kSize = 4'000'000, kLength = 1'000'001;
    const Bytes text(kSize + kLength, 'a');
    Bytes pattern(kLength, 'a');
    EXPECT_EQ(CountPattern(text.data(), kSize, pattern.data(), kLength), kSize);
    EXPECT_EQ(FindPattern(text.data(), kSize, pattern.data(), kLength, kSize - 2), kSize - 2);
    pattern.back() = 'b';
    EXPECT_EQ(CountPattern(text.data(), kSize, pattern.data(), kLength), 0);
    pattern.back() = 'a';
    pattern[kLength / 2] = 'b';
    EXPECT_EQ(FindPattern(text.data(), kSize, pattern.data(), kLength), -1);
}

TEST(ByteSearchEdge, GoesOnByteByByteWithoutMemoryForItsTable) {
    const Bytes text(3000, 'a'), pattern(1001, 'a');
    platform::FailFrom(platform::Operation::Memory, 1);
    const int64_t count = CountPattern(text.data(), 2000, pattern.data(), 1001);
    platform::ForgetFailures();
    EXPECT_EQ(count, 2000);
}

TEST(ByteSearchEdge, ReadsNothingWithoutCandidatesOrPattern) {
    std::vector<int64_t> room(4);
    for (const int64_t size : {int64_t{0}, int64_t{-1}, int64_t{INT32_MIN}}) {
        EXPECT_EQ(FindPattern(nullptr, size, nullptr, 5), -1);
        EXPECT_EQ(FindPattern(nullptr, 5, nullptr, size), -1);
        EXPECT_EQ(FindPattern(nullptr, 5, nullptr, 1, size - 1), -1);
        EXPECT_EQ(CountPattern(nullptr, size, nullptr, 1), 0);
        EXPECT_EQ(CountPattern(nullptr, 1, nullptr, size), 0);
        EXPECT_EQ(SeparateMatches(nullptr, size, nullptr, 1).Next(room), 0U);
        EXPECT_EQ(SeparateMatches(nullptr, 5, nullptr, size).Next(room), 0U);
    }
}

}  // namespace
}  // namespace fenlight
