// A platform of data: devices and files in memory, and time that does not pass. All that the plug-in can reach is in here,
// so that a test sees each call and no call leaves the process.
#pragma once

#include "platform/backends.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "stand_in/fate.h"
#include "stand_in/files.h"
#include "stand_in/registry.h"
#include "stand_in/terminal.h"

#include <string>
#include <string_view>

namespace stand_in {

/// Time that adds up and never waits.
class Clock final : public platform::Clock {
public:
    explicit Clock(Fate &fate) : fate_(fate) {}
    unsigned slept = 0;
    void sleep(unsigned seconds) override;

private:
    Fate &fate_;
};

/// Lines kept: `out` and `err`, and in the log as "out …" and "err …" a line each.
class Console final : public platform::Console {
public:
    explicit Console(Fate &fate) : fate_(fate) {}
    std::string out, err;
    void print(std::string_view text, bool isError) override;
    void flush() override { const Step step(fate_, Seam::other, "flush"); }

private:
    Fate &fate_;
};

/// Makes the n-th creation from now fail (1 = the next), or every one from the n-th on.
class CreationGate final : public platform::CreationGate {
public:
    explicit CreationGate(Fate &fate) : fate_(fate) {}
    int failAt = 0;
    bool failAllAfter = false;
    int creations = 0;
    bool mayCreate() override;

private:
    Fate &fate_;
};

/// Installs one of each for its lifetime, and puts back what was installed before.
class Platform : public Fate {
public:
    Platform();
    ~Platform() override { platform::backends() = before_; }

    Terminal terminal{*this};
    Clock clock{*this};
    Console console{*this};
    FileStore files{*this};
    CreationGate objects{*this};
    Registry registry{*this};

private:
    platform::Backends before_;
};

} // namespace stand_in
