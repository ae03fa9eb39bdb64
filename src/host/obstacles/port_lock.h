// What is made sure of a serial port before the plug-in opens it: that it is there, allowed and free, and stays this
// process's. The plug-in's exclusive mode keeps out only who opens the port later; a program that has it open already would
// mix its bytes with the plot. Here it is found, and named.
#pragma once

#include <string>

namespace host {

/// Throws Failure (usage) for a path that the plug-in could not take: it would answer with success and send nothing.
void requirePortPath(const std::string &port);

/// requirePortPath(), and that the port is there, allowed and free, as far as it can be told without opening it: for what
/// must leave the plotter alone. Throws Failure.
void requireFreePort(const std::string &port);

/// Holds a serial port, open and under an advisory lock (flock), so that no two jobs interleave on one plotter.
class PortLock {
public:
    /// Never waits. Throws Failure when the port is missing, no serial port, forbidden, or held by somebody else, whom it
    /// names.
    explicit PortLock(const std::string &port);
    PortLock(const PortLock &) = delete;
    PortLock &operator=(const PortLock &) = delete;
    /// Closes the port, which blocks while an adapter still holds bytes; a signal with a handler ends that.
    ~PortLock();

    /// Of the open port, for questions to its driver; stays the lock's.
    int descriptor() const { return fd_; }

    /// True when the line has hung up: what was handed over last may not have arrived.
    bool isGone() const;

private:
    int fd_;
};

} // namespace host
