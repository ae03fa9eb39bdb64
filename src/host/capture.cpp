#include "host/capture.h"

#include "host/failure.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

namespace host {

namespace {

bool writeAll(int fd, const char *bytes, size_t size) {
    while (size > 0) {
        ssize_t written = write(fd, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

void closeOnce(int &fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

} // namespace

Capture::Capture(const std::string &file) : file_(file) {
    output_ = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (output_ < 0) throw outputFailure(file, errno);
    std::array<char, 64> name{};
    farEnd_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    bool made =
        farEnd_ >= 0 && grantpt(farEnd_) == 0 && unlockpt(farEnd_) == 0 && ptsname_r(farEnd_, name.data(), name.size()) == 0;
    if (made) nearEnd_ = open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (nearEnd_ < 0) {
        Failure failure = fileFailure("pseudo-terminal", errno);
        end();
        throw failure;
    }
    port_ = name.data();
    termios attributes;
    tcgetattr(nearEnd_, &attributes);
    cfmakeraw(&attributes);
    tcsetattr(nearEnd_, TCSANOW, &attributes);

    // Signals are for the thread that makes the plug-in's call.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    keeper_ = std::thread(&Capture::keep, this);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Capture::keep() {
    std::array<char, 4096> bytes;
    // A file that cannot be written must not stop the line: what comes is read on and dropped. The read ends with an error
    // when the near end is closed and all of it has been read.
    for (ssize_t count; (count = read(farEnd_, bytes.data(), bytes.size())) > 0;) {
        if (writeError_ == 0 && !writeAll(output_, bytes.data(), static_cast<size_t>(count))) writeError_ = errno;
    }
}

void Capture::end() {
    closeOnce(nearEnd_);
    if (keeper_.joinable()) keeper_.join();
    closeOnce(farEnd_);
    if (output_ >= 0 && close(output_) != 0 && writeError_ == 0) writeError_ = errno;
    output_ = -1;
}

void Capture::finish() {
    end();
    if (writeError_ != 0) throw outputFailure(file_, writeError_);
}

} // namespace host
