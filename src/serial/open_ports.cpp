#include "serial/open_ports.h"

#include "platform/posix/stop.h"
#include "platform/posix/terminal.h"
#include "record/state.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <new>
#include <sys/sysmacros.h>
#include <vector>

namespace serial {

namespace {

struct Port {
    int fd;
    platform::DeviceIdentity device;
};

std::vector<Port> openPorts;
std::vector<platform::DeviceIdentity> openedInThisCall;

/// False when the host has closed the descriptor; its number may then stand for something else of the host's.
bool stillOurs(const Port &port) {
    platform::DeviceIdentity now;
    return posix::identify(port.fd, &now) == 0 && now == port.device;
}

bool isPseudoTerminal(int fd) {
    constexpr unsigned kFirst = 136, kLast = 143; // the kernel's list of devices: Unix98 pseudo-terminals
    platform::DeviceIdentity identity;
    if (posix::identify(fd, &identity) != 0 || identity.inode != 0) return false;
    return major(identity.device) >= kFirst && major(identity.device) <= kLast;
}

bool wasOpenedInThisCall(const platform::DeviceIdentity &device) {
    return std::find(openedInThisCall.begin(), openedInThisCall.end(), device) != openedInThisCall.end();
}

void noteClosed(int fd) {
    std::erase_if(openPorts, [fd](const Port &port) { return port.fd == fd; });
}

/// False when there is no memory to note it with: nobody would close it.
bool noteOpened(int fd) {
    Port port{fd, {}};
    if (posix::identify(fd, &port.device) != 0) return false;
    noteClosed(fd); // the host may have closed an earlier port of this number
    try {
        openPorts.push_back(port);
        if (!wasOpenedInThisCall(port.device)) openedInThisCall.push_back(port.device);
        return true;
    } catch (const std::bad_alloc &) {
        noteClosed(fd);
        return false;
    }
}

} // namespace

int openPort(int flags) noexcept {
    const int fd = posix::open(gORB_bsdPath, flags);
    if (fd <= 0) return fd;
    const bool fits = fd <= INT16_MAX;
    if (fits && noteOpened(fd)) return fd;
    posix::close(fd);
    errno = fits ? ENOMEM : EMFILE;
    return -1;
}

int64_t closePort(int fd) noexcept {
    int64_t discarded = 0;
    if (platform::stopRequested() && !isPseudoTerminal(fd)) {
        int queued = 0;
        discarded = posix::ioctl(fd, TIOCOUTQ, &queued) == 0 ? queued : INT64_MAX;
        posix::tcflush(fd, TCOFLUSH); // where a driver takes no notice of it, the close throws the bytes away
    }
    posix::close(fd);
    noteClosed(fd);
    return discarded;
}

void beginCall() noexcept { openedInThisCall.clear(); }

void endCall(int keptFD) noexcept {
    for (size_t i = openPorts.size(); i-- > 0;) {
        const Port port = openPorts[i];
        if (!stillOurs(port)) {
            noteClosed(port.fd);
        } else if (port.fd != keptFD && wasOpenedInThisCall(port.device)) {
            closePort(port.fd);
        }
    }
    openedInThisCall.clear();
}

} // namespace serial
