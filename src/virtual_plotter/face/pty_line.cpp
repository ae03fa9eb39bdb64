#include "virtual_plotter/face/pty_line.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace virtual_plotter {

namespace {

void closeOnce(int &fd) {
    if (fd >= 0) ::close(std::exchange(fd, -1));
}

} // namespace

int PtyLine::open() {
    std::array<char, 64> name{};
    farEnd_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios attributes{};
    // The far end's attributes are the near end's, which need not be opened for them and is not: closing it would look like
    // a program that has come and gone.
    const bool made = farEnd_ >= 0 && ::grantpt(farEnd_) == 0 && ::unlockpt(farEnd_) == 0 &&
                      ::ptsname_r(farEnd_, name.data(), name.size()) == 0 && ::tcgetattr(farEnd_, &attributes) == 0;
    if (!made) {
        const int error = errno;
        hangUp();
        return error;
    }
    ::cfmakeraw(&attributes);
    ::tcsetattr(farEnd_, TCSANOW, &attributes);
    path_ = name.data();
    return 0;
}

int PtyLine::holdNearEnd() {
    nearEnd_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    return nearEnd_ < 0 ? errno : 0;
}

void PtyLine::releaseNearEnd() { closeOnce(nearEnd_); }

bool PtyLine::isHeld() const {
    pollfd look{farEnd_, 0, 0};
    return ::poll(&look, 1, 0) <= 0 || (look.revents & POLLHUP) == 0;
}

void PtyLine::hangUp() {
    releaseNearEnd();
    closeOnce(farEnd_);
}

} // namespace virtual_plotter
