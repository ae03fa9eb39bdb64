// A descriptor that is closed with the object that holds it: early returns and exceptions leave none behind.
#pragma once

#include <unistd.h>
#include <utility>

namespace host {

class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) : fd_(fd) {}
    UniqueFd(UniqueFd &&other) noexcept : fd_(other.release()) {}
    UniqueFd &operator=(UniqueFd &&other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~UniqueFd() {
        if (fd_ >= 0) close(fd_);
    }

    /// -1 for none.
    int get() const { return fd_; }
    /// The descriptor, which the caller closes.
    int release() { return std::exchange(fd_, -1); }

private:
    int fd_;
};

} // namespace host
