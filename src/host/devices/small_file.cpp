#include "host/devices/small_file.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

/// The size of files in /proc is told as 0, so that only reading tells where they end.
std::optional<std::string> contents(int fd, size_t most) {
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return {};
    std::string text;
    std::array<char, 4096> block;
    for (;;) {
        ssize_t count = read(fd, block.data(), block.size());
        if (count == 0) return text;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {};
        text.append(block.data(), static_cast<size_t>(count));
        if (text.size() > most) return {};
    }
}

} // namespace

std::optional<std::string> smallFile(const std::string &path, size_t most) {
    int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return {};
    std::optional<std::string> text = contents(fd, most);
    close(fd);
    return text;
}

} // namespace host
