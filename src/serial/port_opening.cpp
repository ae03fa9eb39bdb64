// The ways in which the port at gORB_bsdPath is opened.
//
// Descriptor 0 is never used as the port, for a 0 in ORB_portFD means that none is open. It stays open, so that the next
// open gives another one.
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/terminal.h"
#include "record/state.h"
#include "record/status_text.h"
#include "serial/line_setup.h"
#include "serial/link.h"
#include "serial/open_ports.h"

#include <fcntl.h>

namespace {

constexpr int32_t kLastRetry = 10;

void storePort(int fd) { answer().ORB_portFD = static_cast<int16_t>(fd); }

} // namespace

int32_t ORB_Serialopen_Keyspan2Write() {
    int32_t retry = 0;
    while (retry <= kLastRetry) {
        setStatusFormat("fd=%d, ORB_retry = %d", 0, retry);
        int fd = serial::openPort(O_RDWR | O_NONBLOCK | O_APPEND);
        if (fd == -1) {
            answer().ORB_errorID = kORB_ErrorOpeningPort;
            posix::sleep(1);
            ++retry;
            continue;
        }
        answer().ORB_errorID = kORB_NoError;
        storePort(fd);
        ORB_Serialsetc_cflag();
        if (fd != 0) break;
    }
    return portIsOpen() ? 0 : -1;
}

int32_t ORB_Serialopen_Keyspan2Read() {
    int fd = 0;
    while (fd == 0) {
        fd = serial::openPort(O_RDWR | O_APPEND);
        if (fd == -1) {
            answer().ORB_errorID = kORB_ErrorOpeningPort;
            break;
        }
        answer().ORB_errorID = kORB_NoError;
        posix::setStatusFlags(fd, 0);
        if (posix::ioctl(fd, TIOCEXCL) == -1) {
            answer().ORB_errorID = kORB_ErrorSetExclusive;
            serial::closePort(fd);
            return -1;
        }
    }
    // Without a port the setup fails too, and its identifier is the one that stays.
    storePort(fd);
    return ORB_Serialsetc_cflag();
}

void ORB_Serialopen_std() {
    int fd = 0;
    while (fd == 0) {
        fd = serial::openPort(O_RDWR);
        if (fd == -1) {
            posix::perror("open_port : unable to open /dev/ttyf1-");
        } else {
            posix::setStatusFlags(fd, 0);
        }
    }
    storePort(fd);
}

void ORB_Serial_forcePlotterHangUp() {
    const int fd = serial::openPort(O_RDWR);
    storePort(fd);
    if (fd == -1) {
        posix::perror(gORB_bsdPath);
        return;
    }
    termios hungUp{}, before{};
    const bool known = posix::tcgetattr(fd, &hungUp) == 0 && posix::tcgetattr(fd, &before) == 0;
    // Attributes that were never read are not applied.
    if (known) {
        posix::cfsetspeed(&hungUp, B0);
        posix::tcsetattr(fd, TCSANOW, &hungUp);
    }
    posix::sleep(1);
    if (known) posix::tcsetattr(fd, TCSANOW, &before);
    serial::closePort(fd);
    storePort(-1);
}
