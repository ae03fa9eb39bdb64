// Serial lines: the class that carries out the calls on them, and the POSIX names under which the plug-in makes these calls.
//
// The names have a namespace of their own because one rule is added to POSIX: once a stop was requested, calls that could
// block fail at once. Only close is made even then.
#pragma once

#include "platform/backends.h"

#include <cstddef>
#include <cstdint>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <termios.h>

namespace platform {

/// What a descriptor leads to; equal for two descriptors on the same device.
struct DeviceIdentity {
    uint64_t device = 0;
    uint64_t inode = 0;
    bool operator==(const DeviceIdentity &) const = default;
};

/// Calls on terminal devices. Results and errno are those of the POSIX calls of the same names.
class Terminal {
public:
    virtual ~Terminal() = default;
    /// Does not make the device the controlling terminal and is closed on exec. May block unless flags hold O_NONBLOCK.
    virtual int open(const char *path, int flags) = 0;
    /// May block while the device still sends.
    virtual int close(int fd) = 0;
    /// Blocks unless the descriptor is non-blocking.
    virtual ssize_t read(int fd, void *buffer, size_t size) = 0;
    /// Blocks unless the descriptor is non-blocking. A signal interrupts it only when a stop is requested.
    virtual ssize_t write(int fd, const void *bytes, size_t size) = 0;
    /// fcntl F_SETFL. Never blocks.
    virtual int setStatusFlags(int fd, int flags) = 0;
    /// A request with an int argument, or none (nullptr). Never blocks.
    virtual int ioctl(int fd, unsigned long request, int *argument) = 0;
    virtual int tcgetattr(int fd, termios *attributes) = 0;
    /// TCSADRAIN blocks while output is pending.
    virtual int tcsetattr(int fd, int when, const termios *attributes) = 0;
    /// Blocks until all output is transmitted. A signal interrupts it only when a stop is requested.
    virtual int tcdrain(int fd) = 0;
    virtual int tcflush(int fd, int queue) = 0;
    /// Stores what the descriptor leads to; -1 with EBADF when it is not open. Never blocks.
    virtual int identify(int fd, DeviceIdentity *identity) = 0;
};

} // namespace platform

/// The plug-in's terminal calls. After a stop was requested, those that can block fail at once with EINTR.
namespace posix {

int open(const char *path, int flags);
int close(int fd);
ssize_t read(int fd, void *buffer, size_t size);
ssize_t write(int fd, const void *bytes, size_t size);
int setStatusFlags(int fd, int flags);
int ioctl(int fd, unsigned long request, int *argument = nullptr);
int tcgetattr(int fd, termios *attributes);
int tcsetattr(int fd, int when, const termios *attributes);
int tcdrain(int fd);
int tcflush(int fd, int queue);
int identify(int fd, platform::DeviceIdentity *identity);

/// No processing of input or output, 8 bits without parity, and a read returns with the first byte.
void cfmakeraw(termios *attributes);
/// Both speeds, of input and output. speed is a B constant.
void cfsetspeed(termios *attributes, speed_t speed);

} // namespace posix
