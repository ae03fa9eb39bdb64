// Serial lines in memory. Beside the calls they model the line's output queue, for what a stop or a lost device leaves in it
// is what a job report must not count as sent.
#pragma once

#include "platform/posix/terminal.h"
#include "stand_in/fate.h"
#include "stand_in/wire.h"

#include <map>
#include <string>

namespace stand_in {

/// Opens give descriptors from 5 up, a write takes all, a drain lets all of it out (of "/dev/pts/…" it is out at once), a
/// read without replies gives EAGAIN, the modem-line word reads 0x126.
class Terminal : public platform::Terminal, public Wire {
public:
    explicit Terminal(Fate &fate) : fate_(fate) {}

    std::map<int, std::string> openPaths; ///< descriptors that are open
    std::map<int, termios> attributes;    ///< what was last applied
    int modemWord = 0x126;
    int nextDescriptor = 5;
    size_t queued = 0;       ///< bytes that are lost with the port or its flush; `written` is without those that were
    size_t leavesAtOnce = 0; ///< bytes of each write that do not wait in the queue
    bool logWrites = true;   ///< false for jobs of many pieces: only `written` then tells

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
    /// Never fails on an open descriptor: the system always knows what it leads to.
    int identify(int fd, platform::DeviceIdentity *identity) override;

private:
    /// 0 for a call on an open descriptor that is to succeed; what it returns otherwise.
    int outcome(const Step &step, int fd);
    void discard();

    Fate &fate_;
};

} // namespace stand_in
