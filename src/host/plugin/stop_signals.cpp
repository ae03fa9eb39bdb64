#include "host/plugin/stop_signals.h"

#include "host/terminal/failure.h"

#include <cerrno>
#include <fcntl.h>
#include <orb/vectorix.h>
#include <sys/time.h>
#include <unistd.h>

namespace host {

namespace {

constexpr long kTick = 50'000; // microseconds
constexpr int kGraceTicks = 20;

volatile sig_atomic_t isHandled = 0; // there is a StopOnSignal
volatile sig_atomic_t stopCame = 0;
volatile sig_atomic_t ticksToTheEnd = 0; // of the process, since a second signal; 0 before

void setTimer(long microseconds) {
    itimerval interval = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &interval, nullptr);
}

/// Closes all descriptors itself, while the timer ticks: the last close of a port waits for what an adapter holds, and
/// inside _exit() nothing would interrupt that wait.
[[noreturn]] void endProcess() {
    constexpr char kText[] = "vectorix: stopped by a second signal, before it could say what was done\n";
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    sigset_t ticks;
    sigemptyset(&ticks);
    sigaddset(&ticks, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &ticks, nullptr);
    [[maybe_unused]] ssize_t written = write(STDERR_FILENO, kText, sizeof kText - 1);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    _exit(static_cast<int>(ExitCode::Stopped));
}

void onSignal(int signal) {
    int errorNumber = errno;
    if (signal != SIGALRM) {
        if (ticksToTheEnd == 0) setTimer(kTick); // signals in quick succession would else put off each tick
        if (stopCame != 0 && ticksToTheEnd == 0) ticksToTheEnd = kGraceTicks;
        stopCame = 1;
    } else if (ticksToTheEnd > 0) {
        ticksToTheEnd = ticksToTheEnd - 1;
        if (ticksToTheEnd == 0) endProcess();
    }
    // An alarm without a stop before it asks for none: it is interrupt()'s, or was set before the command was started.
    if (stopCame != 0) ORB_hostStop();
    errno = errorNumber;
}

} // namespace

StopOnSignal::StopOnSignal() {
    stopCame = 0;
    ticksToTheEnd = 0;
    for (size_t i = 0; i < before_.size(); ++i) {
        sigaction(kSignals[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN || kSignals[i] == SIGALRM) handle(kSignals[i], 0);
    }
    isHandled = 1;
}

StopOnSignal::~StopOnSignal() {
    isHandled = 0;
    for (size_t i = 0; i < before_.size(); ++i) {
        if (!came()) {
            sigaction(kSignals[i], &before_[i], nullptr);
        } else if (before_[i].sa_handler != SIG_IGN || kSignals[i] == SIGALRM) {
            handle(kSignals[i], SA_RESTART); // what is left to say is said whole
        }
    }
    if (ticksToTheEnd == 0) setTimer(0);
}

void StopOnSignal::interrupt() { setTimer(kTick); }

void StopOnSignal::stop() {
    if (isHandled != 0) onSignal(0);
}

bool StopOnSignal::came() { return stopCame != 0; }

bool StopOnSignal::isUrgent() { return ticksToTheEnd != 0; }

void StopOnSignal::handle(int signal, int flags) {
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

} // namespace host
