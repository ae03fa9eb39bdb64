// Only a signal ends a system call that blocks. So a call that is about to block borrows one from the host, and makes a
// timer that sends it to the calling thread; a stop sets the timer off, which may be done from anywhere, and what the first
// signal came too early for meets the next one. At the end of the call all of it is given back.
#include "platform/posix/stop.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#ifndef sigev_notify_thread_id
#define sigev_notify_thread_id _sigev_un._tid // some versions of the C library have no name for it
#endif

namespace platform {

namespace {

enum State : int { kIdle, kRunning, kStopped };

// Nobody dies of these: a host that takes back what was borrowed, or that never handled it, does not notice one that comes
// late. The first that nobody handles is borrowed, or else the last, as the rarer one.
constexpr int kSignals[] = {SIGURG, SIGWINCH};

constexpr long kAtOnce = 1;
constexpr long kPause = 50'000'000; // nanoseconds from one signal to the next

// All of it is used in signal handlers.
std::atomic<int> state{kIdle};
std::atomic<int> requests{0};      // requestStop()s under way
std::atomic<bool> isLent{false};   // the signal and the timer are there
std::atomic<sighandler_t> since{}; // what the host made of the signal after that; SIG_ERR for nothing
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<sighandler_t>::is_always_lock_free);

// Written before the handler is installed, and constant as long as it is.
int lentSignal = 0;
struct sigaction before;

// Of the calling thread; the timer is set by others, but only while the signal is lent.
bool hasTried = false;
bool wasBlocked = false;
pthread_t caller;
timer_t timer;

bool isHandled(const struct sigaction &action) noexcept {
    return (action.sa_flags & SA_SIGINFO) != 0 || (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
}

void setTimer(long nanoseconds) noexcept {
    const itimerspec once = {{0, 0}, {0, nanoseconds}};
    ::timer_settime(timer, 0, &once, nullptr);
}

void take(int number, siginfo_t *info, void *context) {
    const int savedErrno = errno;
    if (info->si_code == SI_TIMER && info->si_value.sival_ptr == &timer) {
        // Not a repeating timer: were the signal the host's by now, it would get no more than this one.
        if (isLent && state == kStopped) setTimer(kPause);
    } else if (since == SIG_ERR && isHandled(before)) {
        if ((before.sa_flags & SA_SIGINFO) != 0)
            before.sa_sigaction(number, info, context);
        else
            before.sa_handler(number);
    }
    errno = savedErrno;
}

bool isOurs(const struct sigaction &action) noexcept {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == take;
}

bool install() noexcept {
    struct sigaction action = {};
    action.sa_sigaction = take;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK; // without SA_RESTART: a blocked system call returns
    if (isHandled(before)) {
        action.sa_flags |= before.sa_flags & SA_NODEFER;
        action.sa_mask = before.sa_mask;
    }
    return ::sigaction(lentSignal, &action, nullptr) == 0;
}

bool isBlocked(int how) noexcept {
    sigset_t set, old;
    ::sigemptyset(&set);
    ::sigaddset(&set, lentSignal);
    return ::pthread_sigmask(how, &set, &old) == 0 && ::sigismember(&old, lentSignal) == 1;
}

/// Gives the signal what the host had, or has made of it since.
void restoreAction() noexcept {
    struct sigaction now;
    if (::sigaction(lentSignal, nullptr, &now) != 0 || !isOurs(now)) return; // what the host set stays
    struct sigaction action = {};
    action.sa_handler = since;
    ::sigaction(lentSignal, since == SIG_ERR ? &before : &action, nullptr);
}

void borrow() noexcept {
    for (int number : kSignals) {
        lentSignal = number;
        ::sigaction(number, nullptr, &before);
        if (!isHandled(before)) break;
    }
    if (isOurs(before)) before = {}; // a host put back what it had found during an earlier call
    since = SIG_ERR;
    if (!install()) return;
    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = lentSignal;
    event.sigev_notify_thread_id = ::gettid();
    event.sigev_value.sival_ptr = &timer;
    if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0) return restoreAction();
    wasBlocked = isBlocked(SIG_UNBLOCK);
    isLent = true;
}

void giveBack() noexcept {
    isLent = false;
    ::timer_delete(timer);
    // What the timer sent before comes here at the latest.
    if (isBlocked(SIG_UNBLOCK)) wasBlocked = true;
    restoreAction();
    if (wasBlocked) isBlocked(SIG_BLOCK);
}

/// Sets the signals off, unless the host has given the signal a handler of its own by now.
void wakeCaller() noexcept {
    struct sigaction now;
    if (::sigaction(lentSignal, nullptr, &now) != 0) return;
    if (!isOurs(now)) {
        if (isHandled(now)) return;
        since = now.sa_handler;
        if (!install()) return;
    }
    setTimer(kAtOnce);
}

/// A child of fork() has no timer of its parent's, and takes along the counts of threads that it does not have. A call in
/// progress is the parent's.
void forgetParent() noexcept {
    state = kIdle;
    requests = 0;
    if (!isLent.exchange(false)) return;
    restoreAction();
    if (wasBlocked && ::pthread_equal(caller, ::pthread_self()) != 0) isBlocked(SIG_BLOCK);
}

} // namespace

void beginCall() noexcept {
    static bool watchesForks = false;
    if (!watchesForks) watchesForks = ::pthread_atfork(nullptr, nullptr, forgetParent) == 0;
    hasTried = false;
    caller = ::pthread_self();
    state = kRunning;
}

void endCall() noexcept {
    state = kIdle;
    // Once no request is under way, nothing of this call can reach the next one.
    while (requests != 0)
        ::sched_yield();
    if (isLent) giveBack();
}

void mayBlock() noexcept {
    if (state == kIdle) return;
    if (!hasTried) {
        hasTried = true;
        borrow();
    }
    if (isLent && state == kStopped) wakeCaller(); // a stop that came before there was a signal; or the host took it away
}

void requestStop() noexcept {
    if (state == kIdle) return; // before it counts: endCall waits only for those that may have seen its call
    const int savedErrno = errno;
    ++requests;
    int expected = kRunning;
    state.compare_exchange_strong(expected, kStopped);
    if (expected != kIdle && isLent) wakeCaller();
    --requests;
    errno = savedErrno;
}

bool stopRequested() noexcept { return state == kStopped; }

} // namespace platform
