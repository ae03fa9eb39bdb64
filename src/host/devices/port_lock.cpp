#include "host/devices/port_lock.h"

#include "host/devices/holders.h"
#include "host/devices/node_access.h"
#include "host/devices/serial_ports.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace host {

namespace {

template <class... Values>
Failure portFailure(ExitCode code, const std::string &port, fmt::format_string<Values...> format, Values &&...values) {
    return {code, fmt::format("{}: {}", shown(port), fmt::format(format, std::forward<Values>(values)...))};
}

Failure missing(const std::string &port) {
    return portFailure(ExitCode::Missing, port,
                       "no such device; check the cable and the name (ls /dev/serial/by-id lists USB adapters)");
}

Failure forbidden(const std::string &port, const struct stat &device) {
    std::string group = groupWithAccess(device);
    if (group.empty()) {
        return portFailure(ExitCode::Permission, port, "permission denied; ask the administrator for access to the port");
    }
    return portFailure(ExitCode::Permission, port,
                       "permission denied; add yourself to the group {0}: sudo usermod -aG {0} $USER (then log in again)",
                       group);
}

Failure notSerial(const std::string &port, const char *what) {
    return portFailure(ExitCode::Missing, port, "{}, not a serial port; name one such as /dev/ttyUSB0", what);
}

Failure busy(const std::string &port, const Holder &holder) {
    return portFailure(ExitCode::Busy, port, "busy: held by {}; wait until it is done, or end it", holderText(holder));
}

/// For a holder that the system does not show to this user.
Failure busy(const std::string &port) {
    return portFailure(ExitCode::Busy, port, "busy: held by another program; 'sudo fuser -v {}' names it", shown(port));
}

Failure openFailure(const std::string &port, const struct stat &device, int errorNumber) {
    switch (errorNumber) {
    case EACCES:
    case EPERM: return forbidden(port, device);
    case ENOENT:
    case ENODEV:
    case ENXIO:
    case EIO: return missing(port);
    case EBUSY: {
        auto holders = holdersOf(device);
        return holders.empty() ? busy(port) : busy(port, holders.front());
    }
    default: return portFailure(ExitCode::Failed, port, "cannot be opened: {}", lowered(strerror(errorNumber)));
    }
}

struct stat requireSerialDevice(const std::string &port) {
    struct stat device;
    if (stat(port.c_str(), &device) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) throw missing(port);
        throw fileFailure(port, errno);
    }
    if (S_ISDIR(device.st_mode)) throw notSerial(port, "a directory");
    if (!S_ISCHR(device.st_mode)) throw notSerial(port, S_ISREG(device.st_mode) ? "a file" : "something else");
    if (isEmptySlot(device.st_rdev)) {
        throw portFailure(ExitCode::Missing, port,
                          "there is no hardware behind this slot; 'vectorix ports' lists the ports that there are");
    }
    return device;
}

/// Throws Failure for a device that the kernel counts to another subsystem. Pseudo-terminals, which it does not list, pass.
void requireTerminal(const std::string &port, const struct stat &device) {
    std::error_code error;
    std::filesystem::path subsystem = std::filesystem::read_symlink(
        fmt::format("/sys/dev/char/{}:{}/subsystem", major(device.st_rdev), minor(device.st_rdev)), error);
    if (!error && subsystem.filename() != "tty") throw notSerial(port, "another kind of device");
}

/// A program that has the port open without a lock of ours. Looked for twice: another vectorix that has just been refused
/// the lock still holds the port for a moment.
Holder unlockedHolder(const struct stat &device) {
    for (int look = 0; look < 2; ++look) {
        auto holders = holdersOf(device);
        auto rival = std::find_if(holders.begin(), holders.end(), [](const Holder &holder) { return !holder.isFarEnd; });
        if (rival == holders.end()) return {};
        if (look == 1) return *rival;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return {};
}

} // namespace

void requirePortPath(const std::string &port) {
    constexpr size_t kLongestPath = 255;
    bool foreign = std::any_of(port.begin(), port.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    if (!foreign && port.size() <= kLongestPath) return;
    throw portFailure(ExitCode::Usage, port,
                      "the path is {}, and the plug-in cannot open it; make a link with a plain name: ln -s … /tmp/plotter",
                      foreign ? "not ASCII" : "longer than 255 bytes");
}

void requireFreePort(const std::string &port) {
    struct stat device = requireSerialDevice(port);
    requirePortPath(port);
    requireTerminal(port, device);
    if (Holder holder = uucpHolder(port); holder.pid != 0) throw busy(port, holder);
    if (accessTo(port) == NodeAccess::NoPermission) throw forbidden(port, device);
    if (Holder holder = unlockedHolder(device); holder.pid != 0) throw busy(port, holder);
}

PortLock::PortLock(const std::string &port) {
    struct stat device = requireSerialDevice(port);
    requirePortPath(port);
    if (Holder holder = uucpHolder(port); holder.pid != 0) throw busy(port, holder);

    // Non-blocking: a port that waits for its carrier would not open. Not the exclusive mode: the plug-in opens it as well.
    fd_ = open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) throw openFailure(port, device, errno);
    if (!isatty(fd_)) {
        close(fd_);
        throw notSerial(port, "another kind of device");
    }
    if (flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        int errorNumber = errno;
        close(fd_); // before the search, so that the holder does not take this process for a rival
        if (errorNumber != EWOULDBLOCK) throw openFailure(port, device, errorNumber);
        auto holders = holdersOf(device);
        if (holders.empty()) throw busy(port);
        std::stable_partition(holders.begin(), holders.end(), [](const Holder &holder) { return !holder.isFarEnd; });
        throw busy(port, holders.front());
    }
    if (Holder holder = unlockedHolder(device); holder.pid != 0) {
        close(fd_);
        throw busy(port, holder);
    }
}

PortLock::~PortLock() { close(fd_); }

bool PortLock::isGone() const {
    termios settings;
    return tcgetattr(fd_, &settings) != 0;
}

} // namespace host
