// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "waiting.h"

namespace fenlight::platform {
namespace {

HANDLE OpenLock(const char *name) { return CreateSemaphoreA(nullptr, 1, 1, name); }

DWORD RunWait(void *semaphore) { return WaitForSingleObject(*static_cast<HANDLE *>(semaphore), INFINITE); }

// A child that does `act` and lives on until it is killed. Returns when the child says so.
template <class Act>
pid_t ForkHolder(Act act) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // not to hold the lock for good if the test itself dies
        const char answer = act() ? 'y' : 'n';
        (void)!write(ends[1], &answer, 1);
        for (;;) pause();
    }
    char answer = 0;
    EXPECT_EQ(read(ends[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    close(ends[0]);
    close(ends[1]);
    return child;
}

void Kill(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

TEST(Semaphore, CountsWithinItsBounds) {
    LONG previous = -1;
    const HANDLE semaphore = CreateSemaphoreA(nullptr, 1, 3, nullptr);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(semaphore, 3), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, &previous));
    EXPECT_EQ(previous, 0);
    for (const LONG tooMuch : {2, INT32_MAX, 0, -1, INT32_MIN}) {
        EXPECT_FALSE(ReleaseSemaphore(semaphore, tooMuch, &previous)) << tooMuch;
        EXPECT_EQ(previous, 0);
    }
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, &previous));
    EXPECT_EQ(previous, 2);
    EXPECT_TRUE(CloseHandle(semaphore));
}

TEST(Semaphore, RefusesCountsAndNamesThatMakeNoSense) {
    const struct {
        LONG initial, maximum;
    } counts[] = {{-1, 1}, {0, 0}, {2, 1}, {0, -5}, {INT32_MIN, INT32_MAX}};
    for (const auto &count : counts) {
        EXPECT_EQ(CreateSemaphoreA(nullptr, count.initial, count.maximum, "counts"), 0u) << count.initial;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(OpenLock(std::string(5000, 'x').c_str()), 0u);
    FailOnce(Operation::Semaphore, 1);
    EXPECT_EQ(OpenLock("refused"), 0u);
    ForgetFailures();
}

TEST(NamedSemaphore, IsOneObjectBehindAHandleForEachUser) {
    const HANDLE first = OpenLock("one object");
    EXPECT_EQ(GetLastError(), 0u);
    HANDLE second = CreateSemaphoreA(nullptr, 0, 9, "one object");
    EXPECT_EQ(GetLastError(), 183u) << "it exists, with the counts of its first opener";
    const HANDLE other = OpenLock("One object");
    EXPECT_NE(first, second);
    EXPECT_EQ(WaitForSingleObject(first, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(second, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(other, 0), WAIT_OBJECT_0) << "names differ in case";
    struct Wait {
        HANDLE semaphore;
        std::atomic<bool> hasBegun{false};
    } wait{second};
    const auto run = [](void *argument) -> DWORD {
        auto &mine = *static_cast<Wait *>(argument);
        mine.hasBegun = true;
        return WaitForSingleObject(mine.semaphore, INFINITE);
    };
    const HANDLE waiter = CreateThread(nullptr, 0, run, &wait, 0, nullptr);
    ASSERT_TRUE(BecomesTrue([&] { return wait.hasBegun.load(); }));
    EXPECT_EQ(SuspendThread(waiter), 0u) << "from here on it is inside the wait";
    EXPECT_EQ(ResumeThread(waiter), 1u);
    EXPECT_TRUE(CloseHandle(second)) << "the wait on it goes on";
    EXPECT_EQ(WaitForSingleObject(waiter, 5), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseSemaphore(first, 1, nullptr));
    EXPECT_EQ(WaitForSingleObject(waiter, INFINITE), WAIT_OBJECT_0);
    DWORD code = 1;
    EXPECT_TRUE(GetExitCodeThread(waiter, &code));
    EXPECT_EQ(code, WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(first, 0), WAIT_TIMEOUT) << "the waiter took it";
    for (const HANDLE handle : {first, other, waiter}) EXPECT_TRUE(CloseHandle(handle));
    const HANDLE anew = OpenLock("one object");
    EXPECT_EQ(GetLastError(), 0u) << "nobody had it open any more";
    EXPECT_EQ(WaitForSingleObject(anew, 0), WAIT_OBJECT_0);
    CloseHandle(anew);
}

TEST(NamedSemaphore, ExcludesThreadsThroughTheirOwnHandles) {
    struct Shared {
        int64_t sum = 0;  // guarded by the semaphore alone: what the thread sanitizer looks at
        std::atomic<int> failures{0};
    } shared;
    const auto work = [](void *argument) -> DWORD {
        auto &all = *static_cast<Shared *>(argument);
        for (int i = 0; i < 300; ++i) {
            const HANDLE semaphore = OpenLock("sum");
            if (WaitForSingleObject(semaphore, INFINITE) != WAIT_OBJECT_0) ++all.failures;
            all.sum += 1;
            if (!ReleaseSemaphore(semaphore, 1, nullptr)) ++all.failures;
            if (!CloseHandle(semaphore)) ++all.failures;
        }
        return 0;
    };
    std::vector<HANDLE> threads(4);
    const HANDLE held = OpenLock("sum");
    for (HANDLE &thread : threads) thread = CreateThread(nullptr, 0, work, &shared, 0, nullptr);
    for (const HANDLE thread : threads) {
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(thread);
    }
    CloseHandle(held);
    EXPECT_EQ(shared.sum, 1200);
    EXPECT_EQ(shared.failures, 0);
}

TEST(NamedSemaphore, KeepsOtherProcessesOutUntilTheHolderDies) {
    const pid_t holder = ForkHolder([] {
        const HANDLE semaphore = OpenLock("between processes");
        return WaitForSingleObject(semaphore, INFINITE) == WAIT_OBJECT_0;
    });
    HANDLE semaphore = OpenLock("between processes");
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(semaphore, 20), WAIT_TIMEOUT);
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 1, nullptr))
        << "what another process holds cannot be given back here";
    const HANDLE waiter = CreateThread(nullptr, 0, RunWait, &semaphore, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(waiter, 20), WAIT_TIMEOUT);
    EXPECT_EQ(SuspendThread(waiter), 0u) << "a thread that waits for another process counts as stopped";
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 1, nullptr)) << "nor while a thread waits for that process";
    Kill(holder);
    EXPECT_EQ(WaitForSingleObject(semaphore, INFINITE), WAIT_OBJECT_0)
        << "the stopped thread must not take it";
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
    EXPECT_EQ(ResumeThread(waiter), 1u);
    EXPECT_EQ(WaitForSingleObject(waiter, INFINITE), WAIT_OBJECT_0);
    CloseHandle(waiter);
    CloseHandle(semaphore);
}

TEST(NamedSemaphore, AChildStartsWithoutWhatItsParentHolds) {
    const HANDLE semaphore = OpenLock("parent and child");
    ASSERT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    const pid_t child = ForkHolder([semaphore] {
        const bool isShut = WaitForSingleObject(semaphore, 10) == WAIT_TIMEOUT;
        return isShut && !ReleaseSemaphore(semaphore, 1, nullptr);
    });
    Kill(child);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT) << "the child's end took nothing away";
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
    const pid_t taker = ForkHolder([semaphore] { return WaitForSingleObject(semaphore, INFINITE) == 0; });
    EXPECT_EQ(WaitForSingleObject(semaphore, 5), WAIT_TIMEOUT);
    Kill(taker);
    EXPECT_EQ(WaitForSingleObject(semaphore, INFINITE), WAIT_OBJECT_0);
    CloseHandle(semaphore);
    const HANDLE anew = OpenLock("parent and child");
    const pid_t other = ForkHolder([anew] { return WaitForSingleObject(anew, INFINITE) == 0; });
    Kill(other);
    CloseHandle(anew);
}

TEST(NamedSemaphore, MakesNoFileOutsideItsDirectoryWhateverTheName) {
    const std::string base = std::string(FENLIGHT_TEST_OUTPUT) + "/semaphores";
    const std::string old = getenv("XDG_RUNTIME_DIR") == nullptr ? "" : getenv("XDG_RUNTIME_DIR");
    std::filesystem::remove_all(base);
    std::filesystem::create_directories(base + "/run");
    chmod((base + "/run").c_str(), 0700);
    setenv("XDG_RUNTIME_DIR", (base + "/run").c_str(), 1);
    std::vector<std::string> names{"../out", "/abs", "..", ".", "a/b", "a%2Fb", "x\ny", "\xff\xfe", " "};
    for (const char last : {'q', 'r'}) names.push_back(std::string(259, 'q') + last);
    std::vector<HANDLE> handles;
    for (const std::string &name : names) {
        handles.push_back(OpenLock(name.c_str()));
        EXPECT_EQ(WaitForSingleObject(handles.back(), 0), WAIT_OBJECT_0) << name;
    }
    int files = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(base)) {
        if (!entry.is_regular_file()) continue;
        ++files;
        EXPECT_EQ(entry.path().parent_path(), base + "/run");
        EXPECT_EQ(static_cast<int>(entry.status().permissions()) & 077, 0);
    }
    EXPECT_EQ(files, static_cast<int>(std::size(names))) << "a file of its own for each name";
    for (const HANDLE handle : handles) CloseHandle(handle);
    // A link in the place of the file: a semaphore of this process alone.
    std::filesystem::create_symlink(base + "/elsewhere", base + "/run/fenlight-semaphore-linked");
    const HANDLE linked = OpenLock("linked");
    EXPECT_EQ(WaitForSingleObject(linked, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(linked, 0), WAIT_TIMEOUT);
    CloseHandle(linked);
    EXPECT_FALSE(std::filesystem::exists(base + "/elsewhere"));
    setenv("XDG_RUNTIME_DIR", old.c_str(), 1);
}

}  // namespace
}  // namespace fenlight::platform
