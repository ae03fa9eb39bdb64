#include "platform/posix/stop.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <pthread.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace platform {

namespace {

enum State : int { kIdle, kRunning, kStopped };

// All of it is used in signal handlers.
std::atomic<int> state{kIdle};
std::atomic<int> event{-1};        // made at the first call of a process
std::atomic<pthread_t> caller{};   // the thread of the call in progress
std::atomic<int> requests{0};      // requestStop()s under way
std::atomic<int> wakeSignal{0};    // chosen at the first need
std::atomic<bool> wakeSent{false}; // and not yet taken
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<pthread_t>::is_always_lock_free);

void takeWake(int) { wakeSent = false; }

/// The highest real-time signal that nobody handles, taken for a handler of our own; 0 when there is none.
int chooseWakeSignal() noexcept {
    for (int number = SIGRTMAX; number >= SIGRTMIN; --number) {
        struct sigaction action;
        if (::sigaction(number, nullptr, &action) != 0 || (action.sa_flags & SA_SIGINFO) != 0) continue;
        if (action.sa_handler == takeWake) return number;
        if (action.sa_handler != SIG_DFL) continue;
        action = {};
        action.sa_handler = takeWake; // without SA_RESTART: a blocked system call returns
        if (::sigaction(number, &action, nullptr) == 0) return number;
    }
    return 0;
}

void wakeCaller() noexcept {
    const pthread_t thread = caller; // it lives: its call does not end before this request has
    // In a handler on that thread its system call is interrupted already.
    if (::pthread_equal(thread, ::pthread_self()) != 0) return;
    if (wakeSignal == 0) wakeSignal = chooseWakeSignal();
    // One at a time: real-time signals queue up, and a host repeats its stop for as long as the call goes on.
    if (wakeSignal != 0 && !wakeSent.exchange(true)) ::pthread_kill(thread, wakeSignal);
}

void drainEvent() noexcept {
    uint64_t count = 0;
    [[maybe_unused]] ssize_t ignored = ::read(event, &count, sizeof count);
}

/// A child of fork() shares the descriptor with its parent, and takes along the counts of threads that it does not have. A
/// call in progress is the parent's.
void forgetParent() noexcept {
    state = kIdle;
    requests = 0;
    if (event >= 0) ::close(event.exchange(-1));
}

} // namespace

void beginCall() noexcept {
    static bool watchesForks = false;
    if (!watchesForks) watchesForks = ::pthread_atfork(nullptr, nullptr, forgetParent) == 0;
    if (event < 0) event = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    caller = ::pthread_self();
    wakeSent = false;
    state = kRunning;
}

void endCall() noexcept {
    const bool stopped = state.exchange(kIdle) == kStopped;
    // Once no request is under way, nothing of this call can reach the next one; the read also takes a signal just sent.
    while (requests != 0)
        ::sched_yield();
    if (stopped && event >= 0) drainEvent();
}

void requestStop() noexcept {
    if (state == kIdle) return; // before it counts: endCall waits only for those that may have seen its call
    const int savedErrno = errno;
    ++requests;
    if (state != kIdle) {
        int expected = kRunning;
        if (state.compare_exchange_strong(expected, kStopped) && event >= 0) {
            const uint64_t one = 1;
            [[maybe_unused]] ssize_t ignored = ::write(event, &one, sizeof one);
        }
        // A repeated request wakes the thread again: the signal before may have come just ahead of a blocking call.
        if (expected != kIdle) wakeCaller();
    }
    --requests;
    errno = savedErrno;
}

bool stopRequested() noexcept { return state == kStopped; }

int stopDescriptor() noexcept { return event; }

} // namespace platform
