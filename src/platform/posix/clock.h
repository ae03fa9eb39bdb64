// Time as the plug-in uses it: it only ever waits, whole seconds. A class of its own, so that tests need not wait and a stop
// can end a pause.
#pragma once

namespace platform {

class Clock {
public:
    virtual ~Clock() = default;
    /// Waits; returns early only when a stop is requested.
    virtual void sleep(unsigned seconds) = 0;
};

} // namespace platform

namespace posix {

/// Waits whole seconds; returns at once when a stop is requested.
void sleep(unsigned seconds);

} // namespace posix
