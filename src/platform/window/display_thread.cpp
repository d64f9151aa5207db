// SPDX-License-Identifier: Zlib
#include "platform/window/display_thread.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

#include "platform/system/failure_point.h"
#include "platform/window/full_screen.h"
#include "platform/window/tooltip.h"
#include "platform/window/video.h"

namespace fenlight::platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

// Keys and motion must not wait for a whole refresh of the display; a tick without news costs some
// microseconds.
constexpr auto kTickPeriod = std::chrono::milliseconds(8);
// A display thread that is inside a message box does not come to rest; the exit of the process goes on then.
constexpr auto kRestDeadline = std::chrono::milliseconds(250);

// Lives on the stack of the caller that waits for it.
struct Request {
    void (*call)(void *);
    void *argument;
    Request *next = nullptr;
    bool isDone = false;
    bool wasRun = false;
};

enum class Phase { NotStarted, Running, Ending, AtRest };

class DisplayThread {
  public:
    bool Call(void (*call)(void *), void *argument) {
        if (IsForkedChild()) return false;
        Request request{call, argument};
        std::unique_lock lock(mutex_);
        if (!EnsureStarted()) {
            // What the caller gives up next, the thread may still be looking at.
            served_.wait(lock, [this] { return phase_ != Phase::Ending; });
            return false;
        }
        Append(&request);
        wake_.notify_one();
        served_.wait(lock, [&] { return request.isDone; });
        return request.wasRun;
    }

    bool IsRunning() {
        if (IsForkedChild()) return false;
        const std::lock_guard lock(mutex_);
        return phase_ == Phase::Running || phase_ == Phase::Ending;
    }

  private:
    // A child has a copy of this record but not the thread, and a copy of the lock that nobody may ever give
    // back.
    bool IsForkedChild() const {
        const pid_t process = process_.load(std::memory_order_relaxed);
        return process != 0 && process != getpid();
    }

    // Everything below is called with the lock held, except Main and Rest.
    bool EnsureStarted();
    void Append(Request *request);
    void ServeRequests(std::unique_lock<std::mutex> &lock);
    void RefuseRequests();
    void WaitForWork(std::unique_lock<std::mutex> &lock);
    void TickWhenDue(std::unique_lock<std::mutex> &lock);
    [[noreturn]] void StayAtRest(std::unique_lock<std::mutex> &lock);
    void Main();
    void Rest();

    std::mutex mutex_;
    std::condition_variable wake_;    // the thread: a request came, or the process exits
    std::condition_variable served_;  // the callers: a request is done, or the thread is at rest
    Request *first_ = nullptr;
    Request *last_ = nullptr;
    Phase phase_ = Phase::NotStarted;
    std::atomic<pid_t> process_{0};       // the one that the thread runs in
    SteadyClock::time_point nextTick_{};  // the thread's own
};

// Never destroyed: the thread and late callers use it until the process is gone.
DisplayThread &TheDisplayThread() {
    static DisplayThread &thread = *new DisplayThread;
    return thread;
}

// The program's signals go to its own threads. The ones that a fault raises stay with the thread that
// faulted.
void BlockSignals(sigset_t *before) {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
        sigdelset(&blocked, fault);
    pthread_sigmask(SIG_SETMASK, &blocked, before);
}

bool StartThread(void *(*start)(void *), void *argument) {
    if (OperationFails(Operation::Thread)) return false;
    sigset_t before;
    BlockSignals(&before);
    pthread_t thread;
    const bool isStarted = pthread_create(&thread, nullptr, start, argument) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (!isStarted) return false;
    pthread_setname_np(thread, "display");
    pthread_detach(thread);
    return true;
}

bool DisplayThread::EnsureStarted() {
    if (phase_ != Phase::NotStarted) return phase_ == Phase::Running;
    const auto start = [](void *self) -> void * {
        static_cast<DisplayThread *>(self)->Main();
        return nullptr;
    };
    if (!StartThread(start, this)) return false;
    phase_ = Phase::Running;
    process_.store(getpid(), std::memory_order_relaxed);
    // Registered late and so run early: before the libraries under SDL take themselves down.
    std::atexit([] { TheDisplayThread().Rest(); });
    return true;
}

void DisplayThread::Append(Request *request) {
    (last_ != nullptr ? last_->next : first_) = request;
    last_ = request;
}

void DisplayThread::ServeRequests(std::unique_lock<std::mutex> &lock) {
    while (first_ != nullptr && phase_ == Phase::Running) {
        Request *request = first_;
        first_ = request->next;
        if (first_ == nullptr) last_ = nullptr;
        lock.unlock();
        request->call(request->argument);
        lock.lock();
        request->wasRun = true;
        request->isDone = true;
        served_.notify_all();
    }
}

void DisplayThread::RefuseRequests() {
    for (; first_ != nullptr; first_ = first_->next) first_->isDone = true;
    last_ = nullptr;
    served_.notify_all();
}

// A tooltip may outlive the last window by a tick, which takes it away.
bool HasSomethingShown() { return HasShownWindows() || IsTooltipShown(); }

void DisplayThread::WaitForWork(std::unique_lock<std::mutex> &lock) {
    const auto hasWork = [this] { return first_ != nullptr || phase_ != Phase::Running; };
    if (HasSomethingShown()) {
        wake_.wait_until(lock, nextTick_, hasWork);
    } else {
        wake_.wait(lock, hasWork);
    }
}

void DisplayThread::TickWhenDue(std::unique_lock<std::mutex> &lock) {
    const auto now = SteadyClock::now();
    if (!HasSomethingShown() || now < nextTick_) return;
    nextTick_ = now + kTickPeriod;
    lock.unlock();
    PumpEvents();
    ShowChangedWindows();
    UpdateTooltips(now, WindowUnderPointer());
    lock.lock();
}

void DisplayThread::StayAtRest(std::unique_lock<std::mutex> &lock) {
    phase_ = Phase::AtRest;
    RefuseRequests();
    lock.unlock();
    for (;;) pause();
}

void DisplayThread::Main() {
    StartVideo();
    std::unique_lock lock(mutex_);
    while (phase_ == Phase::Running) {
        WaitForWork(lock);
        ServeRequests(lock);
        TickWhenDue(lock);
    }
    lock.unlock();
    GiveScreenBack();
    lock.lock();
    StayAtRest(lock);
}

// Runs at the exit of the process. A forked child has no display thread to wait for; and where the X
// connection broke, it is the display thread itself that exits, inside a task or a tick.
void DisplayThread::Rest() {
    if (IsForkedChild()) return;
    std::unique_lock lock(mutex_);
    phase_ = Phase::Ending;
    wake_.notify_one();
    served_.wait_for(lock, kRestDeadline, [this] { return phase_ == Phase::AtRest; });
    if (phase_ == Phase::AtRest) return;
    phase_ = Phase::AtRest;
    RefuseRequests();
}

}  // namespace

bool CallOnDisplayThread(void (*call)(void *), void *argument) noexcept {
    return TheDisplayThread().Call(call, argument);
}

bool IsDisplayThreadRunning() noexcept { return TheDisplayThread().IsRunning(); }

}  // namespace fenlight::platform
