// A platform in memory: a serial port and a USB plotter that take all they are sent and answer what they are given to say,
// two files, and time that does not pass. Calls fail as the weather has it.
#pragma once

#include "orb/vectorix.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "support/files.h"
#include "support/registry.h"
#include "support/terminal.h"
#include "support/wire.h"

#include <string_view>

namespace fuzz {

inline constexpr const char *kPort = "/dev/plotter";

/// Time that adds up and never waits.
class Clock final : public platform::Clock {
public:
    void sleep(unsigned seconds) override { slept += seconds; }
    uint64_t slept = 0;
};

class Console final : public platform::Console {
public:
    void print(std::string_view text, bool) override { printed += text.size(); }
    void flush() override {}
    size_t printed = 0;
};

/// In place for as long as it lives. What was opened and not closed, or handed out and not released, is a finding.
class Platform {
public:
    Platform();
    ~Platform();
    Platform(const Platform &) = delete;
    Platform &operator=(const Platform &) = delete;

    Wire wire;
    Terminal terminal{wire};
    Registry registry{wire};
    Files files;
    Clock clock;
    Console console;

    /// A record that leads to the port, to the USB plotter, and to the two files.
    ORB_ServiceRecord record() const;

private:
    platform::Backends before_;
};

/// Calls the entry, and looks at what must hold of any call: reserved bytes as they were, an identifier of the table, time
/// within bounds, reports that add up.
ORB_ServiceRecord call(Platform &platform, const ORB_ServiceRecord &record);

/// Whether nothing is left open but a port that the record holds: one whose start-up text could not be written.
bool isClosed(const Platform &platform, const ORB_ServiceRecord &returned);

/// Releases every string of the record.
void releaseStrings(const ORB_ServiceRecord &record);

} // namespace fuzz
