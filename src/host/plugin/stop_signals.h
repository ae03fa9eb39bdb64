// Ctrl-C, a hang-up and a request to terminate end the plug-in's call, not the process: a process that just ended would
// leave the plotter in the middle of a command and nobody knowing how much was drawn. The call returns early instead, the
// port is closed, and the command reports as after any job. A second signal is for those who cannot wait.
#pragma once

#include <array>
#include <csignal>

namespace host {

/// While it exists, SIGINT, SIGTERM and SIGHUP stop the plug-in's call in progress, again every 50 ms, and interrupt what
/// the thread blocks in. That ends the close of a port, too: a PortLock is to be destroyed first. A signal that the process
/// was started to ignore stays ignored. A second signal, even when the object is gone by then, ends the process a second
/// later, should it still be there. One object at a time.
class StopOnSignal {
public:
    StopOnSignal();
    StopOnSignal(const StopOnSignal &) = delete;
    StopOnSignal &operator=(const StopOnSignal &) = delete;
    ~StopOnSignal();

    /// From now on, until the object is gone, what the thread blocks in is interrupted every 50 ms, as after a signal.
    static void interrupt();

    /// As one of the signals, also where they are ignored; nothing while there is no object. Any thread.
    static void stop();

    /// True once SIGINT, SIGTERM or SIGHUP came; the next object begins anew.
    static bool came();
    /// True once a second one came.
    static bool isUrgent();

private:
    static void handle(int signal, int flags);

    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGALRM};
    std::array<struct sigaction, std::size(kSignals)> before_;
};

} // namespace host
