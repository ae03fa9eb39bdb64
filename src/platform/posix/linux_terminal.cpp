#include "platform/linux_backends.h"
#include "platform/posix/stop.h"
#include "platform/posix/terminal.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

/// Repeats a call that a signal interrupted, unless that signal is a stop.
template <typename Call> auto retried(Call call) {
    mayBlock();
    for (;;) {
        auto result = call();
        if (result >= 0 || errno != EINTR || stopRequested()) return result;
    }
}

class LinuxTerminal final : public Terminal {
public:
    int open(const char *path, int flags) override {
        return retried([&] { return ::open(path, flags | O_NOCTTY | O_CLOEXEC); });
    }

    // The last close of a port waits up to 30 s for what a USB adapter still holds (a flush does not empty it); a stop ends
    // that wait. Not repeated after EINTR: Linux has released the descriptor even then, and its number may be someone
    // else's.
    int close(int fd) override {
        mayBlock();
        return ::close(fd);
    }

    ssize_t read(int fd, void *buffer, size_t size) override {
        return retried([&] { return ::read(fd, buffer, size); });
    }

    // A signal that is no stop (the process suspended and continued, the machine put to sleep) ends a write that waits for
    // room, with the bytes taken so far: the rest is then written by the next one.
    ssize_t write(int fd, const void *bytes, size_t size) override {
        size_t taken = 0;
        do {
            const ssize_t count =
                retried([&] { return ::write(fd, static_cast<const char *>(bytes) + taken, size - taken); });
            if (count < 0) return taken > 0 ? static_cast<ssize_t>(taken) : count;
            if (count == 0) break;
            taken += static_cast<size_t>(count);
        } while (taken < size && !stopRequested());
        return static_cast<ssize_t>(taken);
    }

    int setStatusFlags(int fd, int flags) override { return ::fcntl(fd, F_SETFL, flags); }

    int ioctl(int fd, unsigned long request, int *argument) override { return ::ioctl(fd, request, argument); }

    int tcgetattr(int fd, termios *attributes) override { return ::tcgetattr(fd, attributes); }

    int tcsetattr(int fd, int when, const termios *attributes) override {
        return retried([&] { return ::tcsetattr(fd, when, attributes); });
    }

    int tcdrain(int fd) override {
        return retried([&] { return ::tcdrain(fd); });
    }

    int tcflush(int fd, int queue) override { return ::tcflush(fd, queue); }

    // One device may have several nodes: devices are compared by their number, other files by their inode.
    int identify(int fd, DeviceIdentity *identity) override {
        struct stat status;
        if (::fstat(fd, &status) != 0) return -1;
        *identity =
            S_ISCHR(status.st_mode) ? DeviceIdentity{status.st_rdev, 0} : DeviceIdentity{status.st_dev, status.st_ino};
        return 0;
    }
};

} // namespace

Terminal &linuxTerminal() noexcept {
    static LinuxTerminal terminal;
    return terminal;
}

} // namespace platform
