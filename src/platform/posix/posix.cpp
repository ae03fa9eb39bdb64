// The POSIX names: each asks the terminal or clock in use, unless a stop was requested and the call could block.
#include "platform/posix/clock.h"
#include "platform/posix/stop.h"
#include "platform/posix/terminal.h"

#include <cerrno>

namespace posix {

namespace {

bool stopped() {
    if (!platform::stopRequested()) return false;
    errno = EINTR;
    return true;
}

platform::Terminal &terminal() { return *platform::backends().terminal; }

} // namespace

int open(const char *path, int flags) { return stopped() ? -1 : terminal().open(path, flags); }

int close(int fd) { return terminal().close(fd); }

ssize_t read(int fd, void *buffer, size_t size) { return stopped() ? -1 : terminal().read(fd, buffer, size); }

ssize_t write(int fd, const void *bytes, size_t size) { return stopped() ? -1 : terminal().write(fd, bytes, size); }

int setStatusFlags(int fd, int flags) { return terminal().setStatusFlags(fd, flags); }

int ioctl(int fd, unsigned long request, int *argument) { return terminal().ioctl(fd, request, argument); }

int tcgetattr(int fd, termios *attributes) { return terminal().tcgetattr(fd, attributes); }

int tcsetattr(int fd, int when, const termios *attributes) {
    return stopped() ? -1 : terminal().tcsetattr(fd, when, attributes);
}

int tcdrain(int fd) { return stopped() ? -1 : terminal().tcdrain(fd); }

int tcflush(int fd, int queue) { return terminal().tcflush(fd, queue); }

int identify(int fd, platform::DeviceIdentity *identity) { return terminal().identify(fd, identity); }

void sleep(unsigned seconds) {
    if (!platform::stopRequested()) platform::backends().clock->sleep(seconds);
}

} // namespace posix
