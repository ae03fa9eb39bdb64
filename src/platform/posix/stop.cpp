// A system call that blocks returns early only when its thread receives a signal. So before the first one that may block,
// the call of the entry borrows a signal, if it can one that the host does not use, and makes a timer that sends it to the
// calling thread.
//
// requestStop() sets that timer, which may be done in a signal handler and on any thread. A signal that arrives just before
// the system call begins interrupts nothing: so each one sets the timer again, until the call of the entry ends. Then timer
// and signal are given back.
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

// By default the system ignores these signals: should one arrive when the host has taken it back, nothing happens. Borrowed
// is the first that the host has no handler for; if it handles both, the last, which is sent more rarely.
constexpr int kSignals[] = {SIGURG, SIGWINCH};

constexpr long kAtOnce = 1;
constexpr long kPause = 50'000'000; // nanoseconds from one signal to the next

// These are used in signal handlers.
std::atomic<int> state{kIdle};
std::atomic<int> requests{0};      // calls of requestStop() that have not returned yet
std::atomic<bool> isLent{false};   // the signal is borrowed, and the timer exists
std::atomic<sighandler_t> since{}; // SIG_DFL or SIG_IGN that the host set since; SIG_ERR: none
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<sighandler_t>::is_always_lock_free);

// The signal, and the action that the host had for it; written only while isLent is false.
int lentSignal = 0;
struct sigaction before;

// Used by the calling thread alone, but for the timer, which others set while isLent.
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
        // Set anew each time instead of repeating by itself: once the host has the signal again, no further one comes.
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

/// Gives the signal the action that the host had for it, or the one that it has set since.
void restoreAction() noexcept {
    struct sigaction now;
    if (::sigaction(lentSignal, nullptr, &now) != 0 || !isOurs(now)) return; // what the host set since stays
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
    if (isOurs(before)) before = {}; // in an earlier call the host read this handler, and has set it again since
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
    // A signal that the timer sent and that is still pending arrives here, while the handler is still installed.
    if (isBlocked(SIG_UNBLOCK)) wasBlocked = true;
    restoreAction();
    if (wasBlocked) isBlocked(SIG_BLOCK);
}

/// Starts the signals to the calling thread, unless the host has given the signal a handler of its own by now.
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

/// Runs in a child of fork(), which inherits this state but neither the timer nor the other threads: a call in progress is
/// the parent's, and so are the requests that its threads have under way.
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
    // A request that saw this call must end before the next call begins, for it would stop that one.
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
    if (isLent && state == kStopped) wakeCaller(); // the stop came before the loan, or the host has reset the signal
}

void requestStop() noexcept {
    if (state == kIdle) return; // not counted in requests: endCall() need not wait for it
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
