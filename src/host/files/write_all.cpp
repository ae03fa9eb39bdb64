#include "host/files/write_all.h"

#include <cerrno>
#include <unistd.h>

namespace host {

bool writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        ssize_t count = write(fd, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        text.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

} // namespace host
