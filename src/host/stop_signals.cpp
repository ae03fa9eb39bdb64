#include "host/stop_signals.h"

#include <cerrno>
#include <orb/vectorix.h>
#include <sys/time.h>

namespace host {

namespace {

volatile sig_atomic_t stopCame = 0;

void setTimer(long microseconds) {
    itimerval interval = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &interval, nullptr);
}

void onSignal(int signal) {
    int errorNumber = errno;
    ORB_hostStop();
    if (signal != SIGALRM && stopCame == 0) {
        stopCame = 1;
        // The signal may have come in the moment before a system call blocked: the next one finds it blocked.
        setTimer(50'000);
    }
    errno = errorNumber;
}

} // namespace

StopOnSignal::StopOnSignal() {
    stopCame = 0;
    struct sigaction action = {};
    action.sa_handler = onSignal; // without SA_RESTART: whatever waits is to return
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < before_.size(); ++i) {
        sigaction(kSignals[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN || kSignals[i] == SIGALRM) sigaction(kSignals[i], &action, nullptr);
    }
}

StopOnSignal::~StopOnSignal() {
    setTimer(0);
    for (size_t i = 0; i < before_.size(); ++i) {
        if (came()) before_[i].sa_handler = SIG_IGN; // a second one must not cut the report off
        sigaction(kSignals[i], &before_[i], nullptr);
    }
}

void StopOnSignal::interrupt() { setTimer(50'000); }

bool StopOnSignal::came() { return stopCame != 0; }

} // namespace host
