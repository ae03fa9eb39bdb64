// Scripted backends: a platform of data. Every call is logged as one line of text, any call can be made to fail, time is
// virtual, and a scripted step that was never used fails the test.
#pragma once

#include "platform/backends.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/files/file_manager.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/terminal.h"
#include "support/script.h"
#include "support/scripted_registry.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace scripted {

/// Serial lines. Without a script every call succeeds: opens give descriptors from 5 up, a write takes all, the modem-line
/// word reads 0x126. A call on a descriptor that is not open fails the test.
class Terminal : public platform::Terminal, public Script {
public:
    explicit Terminal(Log &log) : log_(log) {}

    std::string written;                  ///< all bytes taken, over all descriptors
    std::map<int, std::string> openPaths; ///< descriptors that are open
    std::map<int, termios> attributes;    ///< what was last applied
    std::deque<std::string> replies;      ///< what reads give; empty: EAGAIN
    int modemWord = 0x126;
    int nextDescriptor = 5;
    bool logWrites = true;                         ///< false for jobs of many pieces: only `written` then tells
    std::function<void(std::string_view)> onWrite; ///< called in each write, with its text

    int open(const char *path, int flags) override;
    int close(int fd) override;
    ssize_t read(int fd, void *buffer, size_t size) override;
    ssize_t write(int fd, const void *bytes, size_t size) override;
    int setStatusFlags(int fd, int flags) override;
    int ioctl(int fd, unsigned long request, int *argument) override;
    int tcgetattr(int fd, termios *attributes) override;
    int tcsetattr(int fd, int when, const termios *attributes) override;
    int tcdrain(int fd) override;
    int tcflush(int fd, int queue) override;
    int identify(int fd, platform::DeviceIdentity *identity) override;

private:
    void requireOpen(const char *call, int fd) const;

    Log &log_;
};

/// Time that adds up and never waits.
class Clock : public platform::Clock {
public:
    explicit Clock(Log &log) : log_(log) {}
    unsigned slept = 0;
    void sleep(unsigned seconds) override;

private:
    Log &log_;
};

/// Lines kept: `out` and `err`, and in the log as "out …" and "err …" a line each.
class Console : public platform::Console {
public:
    explicit Console(Log &log) : log_(log) {}
    std::string out, err;
    void print(std::string_view text, bool isError) override;
    void flush() override;

private:
    Log &log_;
};

/// Files in memory, by path. Real file references lead here when the path exists on disk or not.
class FileStore : public platform::FileStore {
public:
    ~FileStore() override;

    std::map<std::string, std::string> files;
    std::function<OSErr(int64_t offset)> onRead; ///< noErr lets the read pass
    OSErr sizeResult = noErr;
    int openForks = 0;

    OSErr open(const std::string &path, ForkRefNum *fork) override;
    OSErr size(ForkRefNum fork, int64_t *bytes) override;
    OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) override;
    OSErr close(ForkRefNum fork) override;

private:
    std::map<ForkRefNum, std::string> open_;
};

/// Makes the n-th creation from now fail (1 = the next), or every one from the n-th on.
class CreationGate : public platform::CreationGate {
public:
    int failAt = 0;
    bool failAllAfter = false;
    int creations = 0;
    bool mayCreate() override;
};

/// Installs one of each for its lifetime, and puts back what was installed before.
class Platform {
public:
    Platform();
    ~Platform();
    Platform(const Platform &) = delete;
    Platform &operator=(const Platform &) = delete;

    Log log;
    Terminal terminal{log};
    Clock clock{log};
    Console console{log};
    FileStore files;
    CreationGate objects;
    Registry registry{log};

private:
    platform::Backends before_;
};

} // namespace scripted
