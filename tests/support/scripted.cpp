#include "support/scripted.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace scripted {

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
    default: return "unknown-request";
    }
}

} // namespace

void Terminal::requireOpen(const char *call, int fd) const {
    if (!openPaths.contains(fd)) ADD_FAILURE() << call << " on descriptor " << fd << ", which is not open";
}

int Terminal::open(const char *path, int flags) {
    log_.push_back(std::string("open ") + path + " " + openFlags(flags));
    long fd = nextDescriptor;
    if (!scriptedOutcome("open", &fd)) ++nextDescriptor;
    if (fd >= 0) openPaths[static_cast<int>(fd)] = path;
    return static_cast<int>(fd);
}

int Terminal::close(int fd) {
    requireOpen("close", fd);
    log_.push_back("close " + std::to_string(fd));
    openPaths.erase(fd);
    long result = 0;
    scriptedOutcome("close", &result);
    return static_cast<int>(result);
}

ssize_t Terminal::read(int fd, void *buffer, size_t size) {
    requireOpen("read", fd);
    long result = 0;
    if (scriptedOutcome("read", &result)) {
        // as scripted
    } else if (replies.empty()) {
        errno = EAGAIN;
        result = -1;
    } else {
        std::string &reply = replies.front();
        size_t count = std::min(size, reply.size());
        memcpy(buffer, reply.data(), count);
        reply.erase(0, count);
        if (reply.empty()) replies.pop_front();
        result = static_cast<long>(count);
    }
    log_.push_back("read " + std::to_string(fd) + " = " + std::to_string(result));
    return result;
}

ssize_t Terminal::write(int fd, const void *bytes, size_t size) {
    requireOpen("write", fd);
    std::string_view text(static_cast<const char *>(bytes), size);
    if (logWrites) log_.push_back("write " + std::to_string(fd) + " " + quoted(text));
    if (onWrite) onWrite(text);
    long result = static_cast<long>(size);
    scriptedOutcome("write", &result);
    if (result > 0) written += text.substr(0, static_cast<size_t>(result));
    return result;
}

int Terminal::setStatusFlags(int fd, int flags) {
    requireOpen("fcntl", fd);
    log_.push_back("fcntl " + std::to_string(fd) + " F_SETFL " + (flags == O_NONBLOCK ? "nonblock" : std::to_string(flags)));
    long result = 0;
    scriptedOutcome("fcntl", &result);
    return static_cast<int>(result);
}

int Terminal::ioctl(int fd, unsigned long request, int *argument) {
    requireOpen("ioctl", fd);
    std::string name = requestName(request);
    bool takesWord = request == TIOCMSET || request == TIOCMBIS || request == TIOCMBIC;
    if (logWrites || takesWord) {
        char word[32] = "";
        if (takesWord && argument) snprintf(word, sizeof word, " 0x%x", static_cast<unsigned>(*argument));
        log_.push_back(name + " " + std::to_string(fd) + word);
    }
    long result = 0;
    scriptedOutcome(name, &result);
    if (result == 0 && request == TIOCMGET) *argument = modemWord;
    if (result == 0 && request == TIOCMSET) modemWord = *argument;
    return static_cast<int>(result);
}

int Terminal::tcgetattr(int fd, termios *out) {
    requireOpen("tcgetattr", fd);
    log_.push_back("tcgetattr " + std::to_string(fd));
    long result = 0;
    scriptedOutcome("tcgetattr", &result);
    if (result == 0) *out = attributes[fd];
    return static_cast<int>(result);
}

int Terminal::tcsetattr(int fd, int when, const termios *in) {
    requireOpen("tcsetattr", fd);
    log_.push_back("tcsetattr " + std::to_string(fd) +
                   (when == TCSADRAIN ? " TCSADRAIN"
                    : when == TCSANOW ? " TCSANOW"
                                      : " ?"));
    long result = 0;
    scriptedOutcome("tcsetattr", &result);
    if (result == 0) attributes[fd] = *in;
    return static_cast<int>(result);
}

int Terminal::tcdrain(int fd) {
    requireOpen("tcdrain", fd);
    if (logWrites) log_.push_back("tcdrain " + std::to_string(fd));
    long result = 0;
    scriptedOutcome("tcdrain", &result);
    return static_cast<int>(result);
}

int Terminal::tcflush(int fd, int queue) {
    requireOpen("tcflush", fd);
    log_.push_back("tcflush " + std::to_string(fd) + (queue == TCOFLUSH ? " TCOFLUSH" : " ?"));
    return 0;
}

int Terminal::identify(int fd, platform::DeviceIdentity *identity) {
    auto it = openPaths.find(fd);
    if (it == openPaths.end()) {
        errno = EBADF;
        return -1;
    }
    *identity = {std::hash<std::string>{}(it->second), 1};
    return 0;
}

void Clock::sleep(unsigned seconds) {
    slept += seconds;
    log_.push_back("sleep " + std::to_string(seconds));
}

void Console::print(std::string_view text, bool isError) {
    (isError ? err : out) += text;
    log_.push_back((isError ? "err " : "out ") + quoted(text));
}

void Console::flush() {}

FileStore::~FileStore() {
    if (openForks != 0) ADD_FAILURE() << openForks << " fork(s) left open";
}

OSErr FileStore::open(const std::string &path, ForkRefNum *fork) {
    if (!files.contains(path)) return fnfErr;
    ForkRefNum ref = 1;
    while (open_.contains(ref))
        ++ref;
    open_[ref] = path;
    ++openForks;
    *fork = ref;
    return noErr;
}

OSErr FileStore::size(ForkRefNum fork, int64_t *bytes) {
    if (sizeResult != noErr) return sizeResult;
    *bytes = static_cast<int64_t>(files[open_.at(fork)].size());
    return noErr;
}

OSErr FileStore::read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) {
    if (onRead) {
        if (OSErr result = onRead(offset); result != noErr) return result;
    }
    const std::string &bytes = files[open_.at(fork)];
    size_t from = std::min(static_cast<size_t>(offset), bytes.size());
    *actual = std::min<ByteCount>(count, bytes.size() - from);
    memcpy(buffer, bytes.data() + from, *actual);
    return *actual == count ? noErr : eofErr;
}

OSErr FileStore::close(ForkRefNum fork) {
    if (open_.erase(fork) == 0) ADD_FAILURE() << "fork " << fork << " closed, which is not open";
    --openForks;
    return noErr;
}

bool CreationGate::mayCreate() {
    ++creations;
    return failAt == 0 || (failAllAfter ? creations < failAt : creations != failAt);
}

Platform::Platform() : before_(platform::backends()) {
    platform::backends() = {&terminal, &clock, &console, &files, &objects, &registry};
}

Platform::~Platform() { platform::backends() = before_; }

} // namespace scripted
