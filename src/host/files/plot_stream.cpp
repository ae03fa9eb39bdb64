#include "host/files/plot_stream.h"

#include "host/terminal/failure.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

bool isPlotStream(const std::string &path) {
    struct stat status;
    return path == "-" || (stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode));
}

std::string streamName(const std::string &path) { return path == "-" ? "standard input" : path; }

KeptFile keepPlotStream(const std::string &path) {
    std::string name = streamName(path);
    bool isInput = path == "-";
    if (isInput && isatty(STDIN_FILENO)) {
        throw Failure(ExitCode::Usage,
                      "standard input: a terminal; send a plot into the command with '|' or '<', or name a file");
    }
    const UniqueFd from(isInput ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (from.get() < 0) throw fileFailure(name, errno);
    KeptFile kept(name);
    std::string buffer(size_t{64} * 1024, '\0');
    for (;;) {
        ssize_t count = read(from.get(), buffer.data(), buffer.size());
        if (count == 0) return kept;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw fileFailure(name, errno);
        kept.add(std::string_view(buffer).substr(0, static_cast<size_t>(count)));
    }
}

} // namespace host
