// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <vector>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "platform/system/suspend_gate.h"
#include "waiting.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kRefused = 0xFFFFFFFFu;
constexpr DWORD kCreateSuspended = 4;

// A thread that counts, one gate to a count, until it is told to end with the code 77.
struct Counter {
    std::atomic<uint64_t> count{0};
    std::atomic<bool> ends{false};
    HANDLE handle = 0;

    explicit Counter(DWORD flags = 0) { handle = CreateThread(nullptr, 0, Run, this, flags, nullptr); }
    ~Counter() {
        ends = true;
        while (ResumeThread(handle) - 1 < kRefused - 1) {
        }
        EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(CloseHandle(handle));
    }
    bool Moves() const {
        const uint64_t before = count;
        return BecomesTrue([&] { return count != before; });
    }
    // As long as a moving thread needs for some thousand counts.
    bool StandsStill() const {
        const uint64_t before = count;
        for (int i = 0; i < 2000; ++i) std::this_thread::yield();
        return count == before;
    }
    static DWORD Run(void *self) {
        auto *counter = static_cast<Counter *>(self);
        while (!counter->ends) {
            ++counter->count;
            PassSuspendGate();
        }
        return 77;
    }
};

DWORD RunSemaphoreWait(void *semaphore) {
    return WaitForSingleObject(*static_cast<HANDLE *>(semaphore), INFINITE) + 5;
}

TEST(CreateThread, RunsToItsExitCode) {
    const int before = CountHandles(HandleKind::Thread);
    HANDLE gate = CreateSemaphoreA(nullptr, 0, 1, nullptr);
    DWORD id = 0, code = 0;
    const HANDLE thread = CreateThread(nullptr, 0, RunSemaphoreWait, &gate, 66, &id);
    ASSERT_NE(thread, 0u);
    EXPECT_NE(id, 0u);
    ASSERT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(thread, 5), WAIT_TIMEOUT);
    ReleaseSemaphore(gate, 1, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    ASSERT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, 5u);
    EXPECT_EQ(SuspendThread(thread), kRefused) << "it has ended";
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_TRUE(CloseHandle(gate));
    EXPECT_EQ(CountHandles(HandleKind::Thread), before);
}

TEST(CreateThread, RefusesWithoutALeftover) {
    const int before = CountHandles(HandleKind::Thread);
    int ran = 0;
    const auto run = [](void *counter) -> DWORD {
        return static_cast<DWORD>(++*static_cast<int *>(counter));
    };
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    for (const size_t stack : {size_t{1} << 62, ~size_t{0}, size_t{PTRDIFF_MAX}}) {
        EXPECT_EQ(CreateThread(nullptr, stack, run, &ran, 0, nullptr), 0u) << stack;
        EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    }
    FailOnce(Operation::Thread, 1);
    EXPECT_EQ(CreateThread(nullptr, 0, run, &ran, 0, nullptr), 0u);
    ForgetFailures();
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(CountHandles(HandleKind::Thread), before);
}

TEST(SuspendThread, StopsNestAndAThreadStandsStillWhenItReturns) {
    Counter counter;
    ASSERT_TRUE(counter.Moves());
    EXPECT_EQ(SuspendThread(counter.handle), 0u);
    EXPECT_TRUE(counter.StandsStill());
    EXPECT_EQ(SuspendThread(counter.handle), 1u);
    EXPECT_EQ(ResumeThread(counter.handle), 2u);
    EXPECT_TRUE(counter.StandsStill());
    EXPECT_EQ(ResumeThread(counter.handle), 1u);
    EXPECT_TRUE(counter.Moves());
    EXPECT_EQ(ResumeThread(counter.handle), 0u);
    ASSERT_EQ(SuspendThread(counter.handle), 0u);
    for (int step = 0; step < 100; ++step) {
        const uint64_t before = counter.count;
        ResumeThread(counter.handle);
        ASSERT_EQ(SuspendThread(counter.handle), 0u);
        ASSERT_GT(counter.count, before) << "each resume takes it to the next gate at least";
    }
    EXPECT_EQ(ResumeThread(counter.handle), 1u);
    DWORD previous = 0;
    for (DWORD i = 0; i < 127; ++i) previous = SuspendThread(counter.handle);
    EXPECT_EQ(previous, 126u);
    EXPECT_EQ(SuspendThread(counter.handle), kRefused) << "127 is the most";
}

TEST(SuspendThread, HoldsAThreadThatWasMadeStopped) {
    Counter counter(kCreateSuspended);
    EXPECT_EQ(SuspendThread(counter.handle), 1u);
    EXPECT_EQ(ResumeThread(counter.handle), 2u);
    EXPECT_TRUE(counter.StandsStill());
    EXPECT_EQ(counter.count, 0u);
    EXPECT_EQ(ResumeThread(counter.handle), 1u);
    EXPECT_TRUE(counter.Moves());
}

TEST(SuspendThread, LeavesTheSemaphoreToOthersWhileItsWaiterIsStopped) {
    HANDLE gate = CreateSemaphoreA(nullptr, 0, 1, nullptr);
    const HANDLE thread = CreateThread(nullptr, 0, RunSemaphoreWait, &gate, 0, nullptr);
    EXPECT_EQ(SuspendThread(thread), 0u) << "a waiting thread counts as stopped";
    ReleaseSemaphore(gate, 1, nullptr);
    EXPECT_EQ(WaitForSingleObject(gate, INFINITE), WAIT_OBJECT_0);
    ReleaseSemaphore(gate, 1, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 5), WAIT_TIMEOUT);
    EXPECT_EQ(ResumeThread(thread), 1u);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
    CloseHandle(gate);
}

TEST(SuspendThread, StopsASleeperBeforeItGoesOn) {
    struct Sleeper {
        std::atomic<int> steps{0};
        std::atomic<bool> ends{false};
    } sleeper;
    const auto run = [](void *argument) -> DWORD {
        auto &self = *static_cast<Sleeper *>(argument);
        for (; !self.ends; ++self.steps) Sleep(1);
        return 0;
    };
    const HANDLE thread = CreateThread(nullptr, 0, run, &sleeper, 0, nullptr);
    for (int stop = 0; stop < 20; ++stop) {
        ASSERT_EQ(SuspendThread(thread), 0u);
        const int before = sleeper.steps;
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
        EXPECT_EQ(sleeper.steps, before);
        ASSERT_EQ(ResumeThread(thread), 1u);
        ASSERT_TRUE(BecomesTrue([&] { return sleeper.steps != before; }));
    }
    sleeper.ends = true;
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
}

TEST(SuspendThread, AThreadCanStopItselfAndTwoEachOther) {
    HANDLE handles[2] = {0, 0};
    const auto stopOther = [](void *other) -> DWORD { return SuspendThread(*static_cast<HANDLE *>(other)); };
    for (const int otherOfFirst : {0, 1}) {
        handles[0] = CreateThread(nullptr, 0, stopOther, &handles[otherOfFirst], kCreateSuspended, nullptr);
        handles[1] =
            CreateThread(nullptr, 0, stopOther, &handles[1 - otherOfFirst], kCreateSuspended, nullptr);
        for (const HANDLE handle : handles) ResumeThread(handle);
        for (const HANDLE handle : handles) {
            EXPECT_TRUE(BecomesTrue([&] {
                for (const HANDLE each : handles) ResumeThread(each);
                return WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
            }));
        }
        for (const HANDLE handle : handles) CloseHandle(handle);
    }
}

// Three callers stop and resume two threads that exclude each other, sleep, and end while stops arrive.
TEST(SuspendThread, SurvivesStopsFromManyThreads) {
    struct Shared {
        HANDLE semaphore = CreateSemaphoreA(nullptr, 1, 1, nullptr);
        HANDLE targets[2] = {0, 0};
        std::atomic<bool> ends{false}, overlap{false};
        std::atomic<int> inside{0};
    } shared;
    const auto work = [](void *argument) -> DWORD {
        auto &all = *static_cast<Shared *>(argument);
        for (int frame = 0; !all.ends; ++frame) {
            WaitForSingleObject(all.semaphore, INFINITE);
            if (++all.inside != 1) all.overlap = true;
            PassSuspendGate();
            --all.inside;
            ReleaseSemaphore(all.semaphore, 1, nullptr);
            Sleep(frame % 16 == 0 ? 1 : 0);
        }
        return 0;
    };
    for (HANDLE &target : shared.targets) target = CreateThread(nullptr, 0, work, &shared, 0, nullptr);
    std::vector<std::thread> callers;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        callers.emplace_back([&shared, seed] {
            std::mt19937 random(seed);
            for (int turn = 0; turn < 3000; ++turn) {
                if (turn == 2500) shared.ends = true;
                const HANDLE target = shared.targets[random() % 2];
                if (SuspendThread(target) == kRefused) continue;
                if (random() % 4 == 0) std::this_thread::yield();
                ResumeThread(target);
            }
        });
    }
    for (std::thread &caller : callers) caller.join();
    for (const HANDLE target : shared.targets) {
        EXPECT_EQ(WaitForSingleObject(target, INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(CloseHandle(target));
    }
    EXPECT_FALSE(shared.overlap);
    EXPECT_TRUE(CloseHandle(shared.semaphore));
}

TEST(SetThreadNotification, FramesTheStartRoutine) {
    static std::string trace;  // written by one thread at a time
    SetThreadNotification([](DWORD reason) { trace += reason == DLL_THREAD_ATTACH ? 'a' : 'd'; });
    const auto run = [](void *) -> DWORD {
        trace += '.';
        return 0;
    };
    for (int turn = 0; turn < 2; ++turn) {
        const HANDLE thread = CreateThread(nullptr, 0, run, nullptr, 0, nullptr);
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(thread);
        SetThreadNotification(nullptr);
    }
    EXPECT_EQ(trace, "a.d.");
}

}  // namespace
}  // namespace fenlight::platform
