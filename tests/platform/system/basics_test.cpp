// SPDX-License-Identifier: Zlib
// Failure points, clock, last error, memory and MulDiv.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <thread>

#include "fenlight/platform/system.h"
#include "platform/system/clock.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

std::string FailuresOfFive(Operation operation) {
    std::string pattern;
    for (int i = 0; i < 5; ++i) pattern += OperationFails(operation) ? 'x' : '.';
    return pattern;
}

TEST(FailurePoint, FailsWhatWasPlannedAndNothingElse) {
    EXPECT_EQ(FailuresOfFive(Operation::Memory), ".....");
    FailOnce(Operation::Memory, 3);
    FailFrom(Operation::File, 2);
    EXPECT_EQ(FailuresOfFive(Operation::Memory), "..x..");
    EXPECT_EQ(FailuresOfFive(Operation::File), ".xxxx");
    EXPECT_EQ(FailuresOfFive(Operation::Voice), ".....");
    EXPECT_EQ(CountOperations(Operation::Memory), 5);
    FailOnce(Operation::Memory, 1);
    EXPECT_EQ(FailuresOfFive(Operation::Memory), "x....") << "a new plan counts from the start";
    ForgetFailures();
    EXPECT_EQ(FailuresOfFive(Operation::File), ".....");
    FailOnce(Operation::Voice, 2);
    EXPECT_EQ(FailuresOfFive(Operation::File), ".....") << "forgotten for good";
    ForgetFailures();
}

TEST(GlobalAlloc, GivesZeroedBlocksOrFailsWithAReason) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{1000}, size_t{5'000'000}}) {
        auto *block = static_cast<unsigned char *>(GlobalAlloc(GPTR, size));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + size, [](unsigned char byte) { return byte == 0; })) << size;
        std::fill_n(block, size, 0xAB);
        EXPECT_EQ(GlobalFree(block), nullptr);
    }
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
    for (const size_t size : {~size_t{0}, ~size_t{0} - 4095, size_t{1} << 62, size_t{1} << 39}) {
        SetLastError(0);
        EXPECT_EQ(GlobalAlloc(GPTR, size), nullptr) << size;
        EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    }
    FailOnce(Operation::Memory, 1);
    EXPECT_EQ(GlobalAlloc(GPTR, 16), nullptr);
    ForgetFailures();
}

TEST(LastError, BelongsToItsThread) {
    SetLastError(1234);
    std::thread([] {
        EXPECT_EQ(GetLastError(), 0u);
        SetLastError(99);
    }).join();
    EXPECT_EQ(GetLastError(), 1234u);
}

// The judge computes in long double, whose 64 bits hold every product and quotient that matters exactly
// enough: std::round takes halves away from zero.
TEST(MulDiv, RoundsToTheNearestWithHalvesAwayFromZero) {
    const auto check = [](int32_t number, int32_t numerator, int32_t denominator) {
        const long double exact = std::round(static_cast<long double>(number) * numerator / denominator);
        const bool fits = exact >= INT32_MIN && exact <= INT32_MAX;
        ASSERT_EQ(MulDiv(number, numerator, denominator), fits ? static_cast<int32_t>(exact) : -1)
            << number << " * " << numerator << " / " << denominator;
    };
    EXPECT_EQ(MulDiv(1, 1, 0), -1);
    EXPECT_EQ(MulDiv(-5, 1, 2), -3);
    EXPECT_EQ(MulDiv(INT32_MIN, -1, 1), -1);
    const int32_t edges[] = {INT32_MIN, INT32_MIN + 1, -5, -2, -1, 1, 2, 5, INT32_MAX};
    for (const int32_t number : edges)
        for (const int32_t numerator : edges)
            for (const int32_t denominator : edges) check(number, numerator, denominator);
    std::mt19937 random(99);
    for (int i = 0; i < 200'000 && !HasFatalFailure(); ++i) {
        const auto pick = [&] { return static_cast<int32_t>(random()) >> (random() % 32); };
        check(pick(), pick(), pick() | 1);
    }
}

TEST(Clock, CanBeReplacedAndGivenBack) {
    struct SteppedClock : Clock {
        uint32_t TickCount() noexcept override { return now; }
        void Sleep(uint32_t milliseconds) noexcept override { now += milliseconds; }
        uint32_t now = 0xFFFFFFF0u;
    } clock;
    ReplaceClock(&clock);
    const DWORD start = GetTickCount();
    Sleep(86'400'000);
    EXPECT_EQ(GetTickCount() - start, 86'400'000u);
    ReplaceClock(nullptr);
    const DWORD before = GetTickCount();
    Sleep(20);
    Sleep(0);
    const DWORD passed = GetTickCount() - before;
    EXPECT_GE(passed, 19u) << "a sleep may be longer than asked for, never shorter";
}

}  // namespace
}  // namespace fenlight::platform
