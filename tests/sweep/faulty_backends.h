// Backends around others: each call may fail before it reaches the one inside.
#pragma once

#include "support/scripted.h"
#include "sweep/faults.h"
#include "sweep/faulty_registry.h"
#include "sweep/ledger.h"

#include <cerrno>
#include <functional>

namespace sweep {

class FaultyTerminal final : public platform::Terminal {
    using Inner = scripted::Terminal;

public:
    FaultyTerminal(Faults &faults, Inner &inner, Ledger &ledger) : faults_(faults), inner_(inner), ledger_(ledger) {}

    int open(const char *path, int flags) override;
    int close(int fd) override { return pass("close", &Inner::close, fd); }
    ssize_t read(int fd, void *buffer, size_t size) override;
    ssize_t write(int fd, const void *bytes, size_t size) override;
    int setStatusFlags(int fd, int flags) override { return pass("fcntl", &Inner::setStatusFlags, fd, flags); }
    int ioctl(int fd, unsigned long request, int *argument) override {
        return pass("ioctl", &Inner::ioctl, fd, request, argument);
    }
    int tcgetattr(int fd, termios *attributes) override { return pass("tcgetattr", &Inner::tcgetattr, fd, attributes); }
    int tcsetattr(int fd, int when, const termios *attributes) override {
        return pass("tcsetattr", &Inner::tcsetattr, fd, when, attributes);
    }
    int tcdrain(int fd) override { return pass("tcdrain", &Inner::tcdrain, fd); }
    int tcflush(int fd, int queue) override { return pass("tcflush", &Inner::tcflush, fd, queue); }
    int identify(int fd, platform::DeviceIdentity *identity) override {
        return pass("identify", &Inner::identify, fd, identity);
    }

private:
    template <typename Method, typename... Arguments> int pass(const char *call, Method method, Arguments... arguments) {
        const Step step(faults_, call);
        if (step.fails()) return failed(step);
        const int result = std::invoke(method, inner_, arguments...);
        return step.failsAfter() ? failed(step) : result;
    }
    static int failed(const Step &step) {
        errno = step.code<int>();
        return -1;
    }

    Faults &faults_;
    Inner &inner_;
    Ledger &ledger_;
};

class FaultyFiles final : public platform::FileStore {
public:
    FaultyFiles(Faults &faults, scripted::FileStore &inner, Ledger &ledger)
        : faults_(faults), inner_(inner), ledger_(ledger) {}
    OSErr open(const std::string &path, ForkRefNum *fork) override;
    OSErr size(ForkRefNum fork, int64_t *bytes) override;
    OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) override;
    OSErr close(ForkRefNum fork) override;

private:
    Faults &faults_;
    scripted::FileStore &inner_;
    Ledger &ledger_;
};

class FaultyClock final : public platform::Clock {
public:
    FaultyClock(Faults &faults, scripted::Clock &inner, Ledger &ledger) : faults_(faults), inner_(inner), ledger_(ledger) {}
    void sleep(unsigned seconds) override;

private:
    Faults &faults_;
    scripted::Clock &inner_;
    Ledger &ledger_;
};

/// The console cannot fail, but the host may stop the call meanwhile.
class FaultyConsole final : public platform::Console {
public:
    explicit FaultyConsole(Faults &faults) : faults_(faults) {}
    void print(std::string_view, bool) override { const Step step(faults_, "print"); }
    void flush() override { const Step step(faults_, "flush"); }

private:
    Faults &faults_;
};

class FaultyGate final : public platform::CreationGate {
public:
    explicit FaultyGate(Faults &faults) : faults_(faults) {}
    bool mayCreate() override { return !Step(faults_, "create").fails(); }

private:
    Faults &faults_;
};

/// Puts a faulty backend around each of a platform's, for its lifetime.
class FaultyPlatform {
public:
    FaultyPlatform(Faults &faults, scripted::Platform &inner);
    ~FaultyPlatform() { platform::backends() = before_; }
    FaultyPlatform(const FaultyPlatform &) = delete;
    FaultyPlatform &operator=(const FaultyPlatform &) = delete;

    Ledger ledger;

private:
    platform::Backends before_;
    FaultyTerminal terminal_;
    FaultyFiles files_;
    FaultyClock clock_;
    FaultyConsole console_;
    FaultyGate gate_;
    FaultyRegistry registry_;
};

} // namespace sweep
