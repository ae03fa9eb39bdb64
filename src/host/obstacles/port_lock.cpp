#include "host/obstacles/port_lock.h"

#include "host/obstacles/port_obstacles.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

namespace host {

namespace {

/// What is told of an open or a lock that failed when nothing else shows why.
constexpr struct {
    int errorNumber;
    Obstacle obstacle;
} kErrors[] = {
    {EACCES, Obstacle::RootOnlyPort}, {EPERM, Obstacle::RootOnlyPort}, {ENOENT, Obstacle::NoSuchPort},
    {ENODEV, Obstacle::NoSuchPort},   {ENXIO, Obstacle::NoSuchPort},   {EIO, Obstacle::NoSuchPort},
    {ENOTTY, Obstacle::NotSerial},    {EBUSY, Obstacle::HeldByHidden}, {EWOULDBLOCK, Obstacle::LockedByHidden},
};

/// Adds who may have kept the port from being opened or locked; a far end's own process, too, may have done that.
void addAnyHolder(const SerialPort &port, LinkReport &report) {
    struct stat node;
    if (stat(port.path.c_str(), &node) != 0) return;
    for (const Holder &holder : holdersOf(node))
        report.addHolder(Obstacle::Held, holder, {});
}

/// The port is looked at anew, for only what the open or the lock said was not known before.
[[noreturn]] void refuse(const System &system, const SerialPort &port, int errorNumber) {
    LinkReport report = obstaclesOf(system, port);
    requireFree(report);
    if (errorNumber == EBUSY || errorNumber == EWOULDBLOCK) addAnyHolder(port, report);
    const auto *at = std::find_if(std::begin(kErrors), std::end(kErrors),
                                  [&](const auto &row) { return row.errorNumber == errorNumber; });
    if (at != std::end(kErrors)) {
        report.add(at->obstacle,
                   {{"port", port.path}, {"node", port.path}, {"rights", ""}, {"what", "another kind of device"}});
    }
    requireFree(report);
    throw Failure(ExitCode::Failed,
                  fmt::format("{}: cannot be opened: {}", shown(port.path), lowered(strerror(errorNumber))));
}

/// Non-blocking: a port that waits for its carrier would not open. Not the exclusive mode: the plug-in opens it as well.
int openLocked(const std::string &path) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return -1;
    if (isatty(fd) && flock(fd, LOCK_EX | LOCK_NB) == 0) return fd;
    const int errorNumber = errno;
    close(fd); // at once, so that the holder does not take this process for a rival
    errno = errorNumber;
    return -1;
}

} // namespace

void requirePortPath(const std::string &port) {
    constexpr size_t kLongestPath = 255;
    bool foreign = std::any_of(port.begin(), port.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    if (!foreign && port.size() <= kLongestPath) return;
    throw Failure(ExitCode::Usage,
                  fmt::format("{}: the path is {}, and the plug-in cannot open it; make a link with a plain "
                              "name: ln -s … /tmp/plotter",
                              shown(port), foreign ? "not ASCII" : "longer than 255 bytes"));
}

void requireFreePort(const std::string &port) {
    requirePortPath(port);
    requireFree(obstaclesOf(System(), portAt(port)));
}

PortLock::PortLock(const std::string &path) {
    requirePortPath(path);
    const System system;
    const SerialPort port = portAt(path);
    LinkReport report{"serial", path};
    const auto node = findPort(system, port, report);
    if (node) addPortSigns(system, port, *node, report);
    requireFree(report);

    fd_ = openLocked(path);
    if (fd_ < 0) refuse(system, port, errno);
    addOpenHolders(port, *node, report);
    if (report.inTheWay()) close(fd_);
    requireFree(report);
}

PortLock::~PortLock() { close(fd_); }

bool PortLock::isGone() const {
    termios settings;
    return tcgetattr(fd_, &settings) != 0;
}

} // namespace host
