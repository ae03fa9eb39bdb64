// The serial port as the command sees it before the plug-in opens it: there, allowed, free, and then locked.
#pragma once

#include <string>

namespace host {

/// Throws Failure (usage) for a path that the plug-in could not take: it would answer with success and send nothing.
void requirePortPath(const std::string &port);

/// All of that, and whether the port is there, allowed and free, as far as it can be told without opening it. Throws
/// Failure.
void requireFreePort(const std::string &port);

/// Holds a serial port for this process, so that no two jobs interleave on one plotter.
class PortLock {
public:
    /// Never waits. Throws Failure when the port is missing, no serial port, forbidden, or held by somebody else, whom it
    /// names.
    explicit PortLock(const std::string &port);
    PortLock(const PortLock &) = delete;
    PortLock &operator=(const PortLock &) = delete;
    /// May wait for what an adapter still holds, until a signal comes.
    ~PortLock();

    /// Of the port, for questions to its driver.
    int descriptor() const { return fd_; }

    /// True when the line has hung up: what was handed over last may not have arrived.
    bool isGone() const;

private:
    int fd_;
};

} // namespace host
