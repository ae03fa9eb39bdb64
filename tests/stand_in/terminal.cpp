#include "stand_in/terminal.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

namespace stand_in {

namespace {

std::string openFlags(int flags) {
    std::string text = (flags & O_ACCMODE) == O_RDWR ? "rw" : "other";
    if (flags & O_NONBLOCK) text += "|nonblock";
    if (flags & O_APPEND) text += "|append";
    return text;
}

const char *requestName(unsigned long request) {
    switch (request) {
    case TIOCMGET: return "TIOCMGET";
    case TIOCMSET: return "TIOCMSET";
    case TIOCMBIS: return "TIOCMBIS";
    case TIOCMBIC: return "TIOCMBIC";
    case TIOCEXCL: return "TIOCEXCL";
    case TIOCNXCL: return "TIOCNXCL";
    case TIOCOUTQ: return "TIOCOUTQ";
    default: return "unknown-request";
    }
}

bool isPseudo(const std::string &path) { return path.starts_with("/dev/pts/"); }

} // namespace

int Terminal::outcome(const Step &step, int fd) {
    if (openPaths.contains(fd)) return step.posixResult();
    fate_.stray(step.call(), fd);
    errno = EBADF;
    return -1;
}

int Terminal::open(const char *path, int flags) {
    const Step step(fate_, Seam::terminal, "open");
    step.log(path, openFlags(flags));
    if (step.fails()) return step.posixResult();
    const int fd = step.gives() ? step.code<int>() : nextDescriptor++;
    openPaths[fd] = path;
    return fd;
}

int Terminal::close(int fd) {
    const Step step(fate_, Seam::terminal, "close");
    step.log(fd);
    const int result = outcome(step, fd);
    discard();
    openPaths.erase(fd);
    return result;
}

ssize_t Terminal::read(int fd, void *buffer, size_t size) {
    const Step step(fate_, Seam::terminal, "read");
    ssize_t result = outcome(step, fd);
    const size_t room = step.gives() ? std::min(step.code<size_t>(), size) : size;
    if (result >= 0 && room == 0) {
        result = 0; // scripted: the end of the line
    } else if (result >= 0 && replies.empty()) {
        errno = EAGAIN;
        result = -1;
    } else if (result >= 0) {
        result = static_cast<ssize_t>(say(buffer, room));
    }
    if (result >= 0) fate_.said({static_cast<const char *>(buffer), static_cast<size_t>(result)});
    step.log(fd, "=", result);
    return result;
}

ssize_t Terminal::write(int fd, const void *bytes, size_t size) {
    const Step step(fate_, Seam::terminal, "write");
    const std::string_view text(static_cast<const char *>(bytes), size);
    if (logWrites) step.log(fd, Quoted{text});
    if (onWrite) onWrite(text);
    const bool fails = outcome(step, fd) < 0;
    const size_t taken = fails ? 0 : step.gives() ? std::min(step.code<size_t>(), size) : size;
    written += text.substr(0, taken);
    if (!isPseudo(openPaths[fd])) queued += taken - std::min(taken, leavesAtOnce);
    fate_.wrote(size, taken, !fails);
    return fails ? -1 : static_cast<ssize_t>(taken);
}

int Terminal::setStatusFlags(int fd, int flags) {
    const Step step(fate_, Seam::terminal, "fcntl");
    step.log(fd, "F_SETFL", flags == O_NONBLOCK ? "nonblock" : std::to_string(flags));
    return outcome(step, fd);
}

int Terminal::ioctl(int fd, unsigned long request, int *argument) {
    const Step step(fate_, Seam::terminal, requestName(request));
    const bool takesWord = request == TIOCMSET || request == TIOCMBIS || request == TIOCMBIC;
    if (takesWord && argument != nullptr) {
        char word[16];
        snprintf(word, sizeof word, "0x%x", static_cast<unsigned>(*argument));
        step.log(fd, word);
    } else if (logWrites || takesWord) {
        step.log(fd);
    }
    const int result = outcome(step, fd);
    if (result == 0 && request == TIOCMGET) *argument = modemWord;
    if (result == 0 && request == TIOCMSET) modemWord = *argument;
    if (result == 0 && request == TIOCOUTQ) *argument = static_cast<int>(queued);
    return result;
}

int Terminal::tcgetattr(int fd, termios *out) {
    const Step step(fate_, Seam::terminal, "tcgetattr");
    step.log(fd);
    const int result = outcome(step, fd);
    if (result == 0) *out = attributes[fd];
    return result;
}

int Terminal::tcsetattr(int fd, int when, const termios *in) {
    const Step step(fate_, Seam::terminal, "tcsetattr");
    step.log(fd, when == TCSADRAIN ? "TCSADRAIN" : when == TCSANOW ? "TCSANOW" : "?");
    const int result = outcome(step, fd);
    if (result == 0) attributes[fd] = *in;
    return result;
}

int Terminal::tcdrain(int fd) {
    const Step step(fate_, Seam::terminal, "tcdrain");
    if (logWrites) step.log(fd);
    const int result = outcome(step, fd);
    if (result == 0) queued = 0;
    return result;
}

void Terminal::discard() {
    fate_.discarded(queued);
    written.resize(written.size() - std::min(queued, written.size()));
    queued = 0;
}

int Terminal::tcflush(int fd, int queue) {
    const Step step(fate_, Seam::terminal, "tcflush");
    step.log(fd, queue == TCOFLUSH ? "TCOFLUSH" : "?");
    const int result = outcome(step, fd);
    if (result == 0) discard();
    return result;
}

int Terminal::identify(int fd, platform::DeviceIdentity *identity) {
    const Step step(fate_, Seam::terminal, "identify");
    const auto found = openPaths.find(fd);
    if (found == openPaths.end()) {
        errno = EBADF;
        return -1;
    }
    *identity = isPseudo(found->second) ? platform::DeviceIdentity{makedev(136, 0), 0}
                                        : platform::DeviceIdentity{std::hash<std::string>{}(found->second), 1};
    return 0;
}

} // namespace stand_in
