// Keeps signals away from helper threads. A signal stops a job by interrupting what the thread of the plug-in's call blocks
// in; the kernel may deliver it to any thread that lets it through, and there it would interrupt nothing.
#pragma once

#include <csignal>

namespace host {

/// A thread that is started while it exists gets no signals. The starting thread gets them when it is gone.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_;
};

} // namespace host
