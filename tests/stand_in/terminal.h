// The plotter's end of a link, and serial lines in memory. Beside the calls the lines model their output queue, for what a
// stop or a lost device leaves in it is what a job report must not count as sent.
#pragma once

#include "platform/posix/terminal.h"
#include "stand_in/fate.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <sys/sysmacros.h>

namespace stand_in {

/// What came over a serial line or USB pipes, and what the plotter says.
struct Wire {
    std::string written;                           ///< all bytes taken, over all descriptors and interfaces
    std::deque<std::string> replies;               ///< what reads give, one after the other
    std::string said;                              ///< what the last read gave that gave anything
    std::function<void(std::string_view)> onWrite; ///< called in each write, with its text

    /// Copies what there is room for of the next reply, if there is one; the rest of it comes with the next read.
    size_t say(void *buffer, size_t room) {
        if (replies.empty()) return 0;
        std::string &reply = replies.front();
        const size_t count = std::min(room, reply.size());
        memcpy(buffer, reply.data(), count);
        if (count != 0) said = reply.substr(0, count);
        reply.erase(0, count);
        if (reply.empty()) replies.pop_front();
        return count;
    }
};

/// Opens give descriptors from 5 up, a write takes all, a drain lets all of it out (of "/dev/pts/…" it is out at once), a
/// read without replies gives EAGAIN, the modem-line word reads 0x126.
struct Terminal : platform::Terminal, Wire {
    std::map<int, std::string> openPaths; ///< descriptors that are open
    std::map<int, termios> attributes;    ///< what was last applied
    int modemWord = 0x126;
    int nextDescriptor = 5;
    size_t queued = 0;       ///< bytes that are lost with the port or its flush; `written` is without those that were
    size_t leavesAtOnce = 0; ///< bytes of each write that do not wait in the queue
    bool logWrites = true;   ///< false for jobs of many pieces: only `written` then tells

    int open(const char *path, int flags) override {
        const Step step(Seam::Terminal, "open");
        const std::string access = (flags & O_ACCMODE) == O_RDWR ? "rw" : "other";
        step.log(path, access + (flags & O_NONBLOCK ? "|nonblock" : "") + (flags & O_APPEND ? "|append" : ""));
        if (step.fails()) return step.posixResult();
        const int fd = step.gives() ? step.code<int>() : nextDescriptor++;
        openPaths[fd] = path;
        return fd;
    }
    int close(int fd) override {
        const Step step(Seam::Terminal, "close");
        step.log(fd);
        const int result = outcome(step, fd);
        discard();
        openPaths.erase(fd);
        return result;
    }
    ssize_t read(int fd, void *buffer, size_t size) override {
        const Step step(Seam::Terminal, "read");
        ssize_t result = outcome(step, fd);
        const size_t room = step.gives() ? std::min(step.code<size_t>(), size) : size;
        const bool isSilent = room != 0 && replies.empty(); // without room, it is the end of the line
        if (result >= 0 && isSilent) errno = EAGAIN;
        if (result >= 0) result = isSilent ? -1 : static_cast<ssize_t>(say(buffer, room));
        step.log(fd, "=", result);
        return result;
    }
    ssize_t write(int fd, const void *bytes, size_t size) override {
        const Step step(Seam::Terminal, "write");
        const std::string_view text(static_cast<const char *>(bytes), size);
        if (fate().keepsLog && logWrites) step.log(fd, quoted(text));
        if (onWrite) onWrite(text);
        const bool fails = outcome(step, fd) < 0;
        const size_t taken = fails ? 0 : step.gives() ? std::min(step.code<size_t>(), size) : size;
        written += text.substr(0, taken);
        if (taken != 0 && !isPseudo(openPaths[fd])) queued += taken - std::min(taken, leavesAtOnce);
        fate().wrote(size, taken, !fails);
        return fails ? -1 : static_cast<ssize_t>(taken);
    }
    int setStatusFlags(int fd, int flags) override {
        return change(
            "fcntl", fd, [] {}, "F_SETFL", flags == O_NONBLOCK ? "nonblock" : std::to_string(flags));
    }
    int ioctl(int fd, unsigned long request, int *argument) override {
        static const std::map<unsigned long, const char *> kNames = {
            {TIOCMGET, "TIOCMGET"}, {TIOCEXCL, "TIOCEXCL"}, {TIOCNXCL, "TIOCNXCL"}, {TIOCOUTQ, "TIOCOUTQ"}};
        if (request == TIOCMSET) {
            char word[16];
            snprintf(word, sizeof word, "0x%x", static_cast<unsigned>(*argument));
            return change(
                "TIOCMSET", fd, [&] { modemWord = *argument; }, word);
        }
        return change(kNames.at(request), fd, [&] {
            if (request == TIOCMGET) *argument = modemWord;
            if (request == TIOCOUTQ) *argument = static_cast<int>(queued);
        });
    }
    int tcgetattr(int fd, termios *out) override {
        return change("tcgetattr", fd, [&] { *out = attributes[fd]; });
    }
    int tcsetattr(int fd, int when, const termios *in) override {
        const char *name = when == TCSADRAIN ? "TCSADRAIN" : when == TCSANOW ? "TCSANOW" : "?";
        return change(
            "tcsetattr", fd, [&] { attributes[fd] = *in; }, name);
    }
    int tcdrain(int fd) override {
        return change("tcdrain", fd, [&] { queued = 0; });
    }
    int tcflush(int fd, int queue) override {
        return change(
            "tcflush", fd, [&] { discard(); }, queue == TCOFLUSH ? "TCOFLUSH" : "?");
    }
    /// Never fails on an open descriptor: the system always knows what it leads to.
    int identify(int fd, platform::DeviceIdentity *identity) override {
        errno = EBADF;
        if (!openPaths.contains(fd)) return -1;
        const std::string &path = openPaths[fd];
        *identity = {isPseudo(path) ? makedev(136, 0) : std::hash<std::string>{}(path), isPseudo(path) ? 0U : 1U};
        return 0;
    }

private:
    static bool isPseudo(const std::string &path) { return path.starts_with("/dev/pts/"); }
    /// 0 for a call on an open descriptor that is to succeed; what it returns otherwise.
    int outcome(const Step &step, int fd) {
        if (openPaths.contains(fd)) return step.posixResult();
        fate().stray(step.call(), fd);
        errno = EBADF;
        return -1;
    }
    /// A call that has its effect when it succeeds. Those without arguments are written down as writes are.
    template <typename Effect, typename... Arguments>
    int change(const char *call, int fd, Effect effect, const Arguments &...arguments) {
        const Step step(Seam::Terminal, call);
        if (logWrites || sizeof...(arguments) != 0) step.log(fd, arguments...);
        const int result = outcome(step, fd);
        if (result == 0) effect();
        return result;
    }
    void discard() {
        fate().discarded(queued);
        written.resize(written.size() - std::min(queued, written.size()));
        queued = 0;
    }
};

} // namespace stand_in
