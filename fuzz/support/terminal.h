// Serial lines in memory.
#pragma once

#include "platform/posix/terminal.h"
#include "support/wire.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

namespace fuzz {

class Terminal final : public platform::Terminal {
public:
    explicit Terminal(Wire &wire) : wire_(wire) {}

    std::set<int> opened;

    int open(const char *, int) override {
        if (fails()) return -1;
        int fd = 5;
        while (opened.contains(fd))
            ++fd;
        opened.insert(fd);
        return fd;
    }
    int close(int fd) override { return opened.erase(fd) == 1 ? 0 : bad(); }
    ssize_t read(int fd, void *buffer, size_t size) override {
        if (int result = outcome(fd); result != 0) return result;
        if (wire_.replies.empty()) {
            errno = EAGAIN;
            return -1;
        }
        const std::string_view reply = wire_.nextReply(size);
        memcpy(buffer, reply.data(), reply.size());
        return static_cast<ssize_t>(reply.size());
    }
    ssize_t write(int fd, const void *bytes, size_t size) override {
        if (int result = outcome(fd); result != 0) return result;
        if (wire_.onWrite) wire_.onWrite();
        const size_t taken = wire_.room ? std::min(wire_.room(size), size) : size;
        wire_.arrived.append(static_cast<const char *>(bytes), taken);
        return static_cast<ssize_t>(taken);
    }
    int setStatusFlags(int fd, int) override { return outcome(fd); }
    int ioctl(int fd, unsigned long request, int *argument) override {
        if (int result = outcome(fd); result != 0) return result;
        if (request == TIOCMGET) *argument = TIOCM_DTR;
        return 0;
    }
    int tcgetattr(int fd, termios *attributes) override {
        *attributes = {};
        return outcome(fd);
    }
    int tcsetattr(int fd, int, const termios *) override { return outcome(fd); }
    int tcdrain(int fd) override { return outcome(fd); }
    int tcflush(int fd, int) override { return opened.contains(fd) ? 0 : bad(); }
    int identify(int fd, platform::DeviceIdentity *identity) override {
        *identity = {1, 1};
        return opened.contains(fd) ? 0 : bad();
    }

private:
    static int bad() {
        errno = EBADF;
        return -1;
    }
    bool fails() {
        static constexpr int kErrors[] = {EIO, EAGAIN, EINTR, EBUSY, ENXIO, ENODEV, EACCES, ENOTTY};
        return wire_.fails(kErrors, &errno);
    }
    int outcome(int fd) { return !opened.contains(fd) ? bad() : fails() ? -1 : 0; }

    Wire &wire_;
};

} // namespace fuzz
