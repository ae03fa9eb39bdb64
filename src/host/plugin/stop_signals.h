// Ctrl-C and its kin end the plug-in's call, not the process.
#pragma once

#include <array>
#include <csignal>

namespace host {

/// While it lives, SIGINT, SIGTERM and SIGHUP stop the call of the entry in progress, again every 50 ms until it is gone,
/// and interrupt what this thread waits for: also the close of a port that it closed itself, so a lock on one goes first.
/// One at a time. A signal that the process was told to ignore stays ignored. Once one came, the command is ending: a second
/// one, then or later, ends the process after another second, should it still be there.
class StopOnSignal {
public:
    StopOnSignal();
    StopOnSignal(const StopOnSignal &) = delete;
    StopOnSignal &operator=(const StopOnSignal &) = delete;
    ~StopOnSignal();

    /// From now on whatever this thread waits for is interrupted every 50 ms.
    static void interrupt();

    /// True once such a signal came.
    static bool came();

private:
    static void handle(int signal, int flags);

    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGALRM};
    std::array<struct sigaction, std::size(kSignals)> before_;
};

} // namespace host
