// SPDX-License-Identifier: Zlib
#include "frame/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

#include "fenlight/frame.h"
#include "fenlight/platform/system.h"
#include "frame/attach.h"

namespace fenlight {
namespace {

// The standard library's twister with a state seeded by the multiplicative rule, used up, so that its first
// draw refills as ours does.
std::mt19937 TwisterSeededWith(uint32_t seed) {
    std::stringstream state;
    uint32_t word = seed;
    for (int i = 0; i < 624; ++i) {
        state << word << ' ';
        word *= 69069u;
    }
    state << 624;
    std::mt19937 twister;
    state >> twister;
    return twister;
}

TEST(Random, DrawsWhatTheStandardTwisterDrawsFromTheSameState) {
    for (const uint32_t seed : {1u, 4357u, 0x80000001u, 0xFFFFFFFFu}) {
        RandomSeed(seed);
        std::mt19937 judge = TwisterSeededWith(seed);
        for (int i = 0; i < 3 * 624 + 1; ++i) {
            ASSERT_EQ(RandomDraw(1000003), static_cast<uint32_t>(judge() % 1000003))
                << "seed " << seed << ", draw " << i;
        }
        for (const uint32_t range : {1u, 3u, 0xFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
            std::array<int32_t, 1500> words;
            RandomFill(words.data(), 1500, 0, range);
            for (const int32_t word : words) ASSERT_EQ(static_cast<uint32_t>(word), judge() % range) << range;
        }
    }
}

TEST(Random, FallsBackToTheSeedOfLastResort) {
    RandomSeed(4357);
    const uint32_t first = RandomDraw(1u << 31);

    ForgetRandomSeed();
    EXPECT_EQ(RandomDraw(1u << 31), first);

    RandomSeed(0);
    for (int i = 0; i < 700; ++i) ASSERT_EQ(RandomDraw(1000), 0u);
}

TEST(Random, FillsOneWordMoreThanItsArgumentSaysAndNotTwo) {
    struct Case {
        int32_t last, base, range;
        int written;
        int32_t lowest, highest;
    };
    constexpr int32_t kUntouched = 0x55555555;
    for (const Case &c : {Case{9, 1, 6, 10, 1, 6}, Case{0, 5, 1, 1, 5, 5}, Case{63, -10, 21, 64, -10, 10},
                          Case{-7, 3, 1, 1, 3, 3}, Case{20, 77, 0, 21, 77, 77}}) {
        std::array<int32_t, 80> buffer;
        buffer.fill(kUntouched);
        EXPECT_EQ(Random(buffer.data(), c.last, c.base, c.range), 0);
        for (int i = 0; i < 80; ++i) {
            const int32_t word = buffer[static_cast<size_t>(i)];
            const bool isDrawn = word >= c.lowest && word <= c.highest;
            EXPECT_TRUE(i < c.written ? isDrawn : word == kUntouched) << "last " << c.last << ", word " << i;
        }
    }
    EXPECT_EQ(Random(nullptr, 9, 1, 6), 0);
}

// A range whose upper end passes 2^31 wraps; a range above 2^31 is taken as unsigned.
TEST(Random, WrapsInThirtyTwoBits) {
    RandomSeed(99);
    std::mt19937 judge = TwisterSeededWith(99);
    std::array<int32_t, 50> buffer{};
    Random(buffer.data(), 49, INT32_MAX, -2);
    for (const int32_t value : buffer)
        EXPECT_EQ(static_cast<uint32_t>(value), 0x7FFFFFFFu + static_cast<uint32_t>(judge() % 0xFFFFFFFEu));
}

// Looks before any test has seeded.
struct SeededAtLoad : ::testing::Environment {
    void SetUp() override { EXPECT_NE(RandomStateWord(0), 0u); }
};
const auto *const seededAtLoad = ::testing::AddGlobalTestEnvironment(new SeededAtLoad);

TEST(Random, EveryReasonOfTheEntryRoutineAndEveryThreadOfTheLibraryReseed) {
    for (const uint32_t reason : {DLL_THREAD_ATTACH, DLL_THREAD_DETACH, DLL_PROCESS_ATTACH}) {
        RandomSeed(0);
        EXPECT_EQ(EntryRoutine(reason), 1u);
        EXPECT_NE(RandomStateWord(0), 0u) << "reason " << reason;
    }
    static uint32_t wordInThread;
    wordInThread = 0;
    const auto lookAndSeed = [](void *) -> DWORD {
        wordInThread = RandomStateWord(0);
        RandomSeed(0);
        return 0;
    };
    RandomSeed(0);
    const HANDLE thread = CreateThread(nullptr, 0, lookAndSeed, nullptr, 0, nullptr);
    ASSERT_NE(thread, 0u);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
    EXPECT_NE(wordInThread, 0u);
    EXPECT_NE(RandomStateWord(0), 0u);
}

TEST(Random, DrawsStayInRangeWhileOtherThreadsDrawAndReseed) {
    std::vector<std::thread> threads;
    std::array<bool, 4> inRange{};
    for (size_t t = 0; t < inRange.size(); ++t) {
        threads.emplace_back([t, &inRange] {
            std::vector<int32_t> buffer(5000);
            Random(buffer.data(), 4999, 100, 50);
            if (t == 0) RandomSeed(7);
            inRange[t] =
                std::all_of(buffer.begin(), buffer.end(), [](int32_t v) { return v >= 100 && v < 150; });
        });
    }
    for (std::thread &thread : threads) thread.join();
    for (const bool ok : inRange) EXPECT_TRUE(ok);
}

}  // namespace
}  // namespace fenlight
