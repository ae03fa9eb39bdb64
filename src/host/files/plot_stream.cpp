#include "host/files/plot_stream.h"

#include "host/files/write_all.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

std::string temporaryFolder() {
    const char *folder = getenv("TMPDIR");
    return folder && *folder ? folder : "/tmp";
}

int unnamedFile(const std::string &folder) {
    int fd = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return fd;
    // Not every file system can make a file that never had a name.
    std::string path = folder + "/vectorix-XXXXXX";
    fd = mkostemp(path.data(), O_CLOEXEC);
    if (fd >= 0) unlink(path.c_str());
    return fd;
}

Failure cannotKeep(const std::string &name, const std::string &folder, int errorNumber) {
    return {ExitCode::Failed, fmt::format("{}: cannot be kept in {}: {}; make room there, or set TMPDIR to another folder",
                                          shown(name), shown(folder), lowered(strerror(errorNumber)))};
}

} // namespace

bool isPlotStream(const std::string &path) {
    struct stat status;
    return path == "-" || (stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode));
}

std::string streamName(const std::string &path) { return path == "-" ? "standard input" : path; }

UniqueFd keepPlotStream(const std::string &path) {
    std::string name = streamName(path);
    bool isInput = path == "-";
    if (isInput && isatty(STDIN_FILENO)) {
        throw Failure(ExitCode::Usage,
                      "standard input: a terminal; send a plot into the command with '|' or '<', or name a file");
    }
    const UniqueFd from(isInput ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (from.get() < 0) throw fileFailure(name, errno);
    std::string folder = temporaryFolder();
    UniqueFd kept(unnamedFile(folder));
    if (kept.get() < 0) throw cannotKeep(name, folder, errno);

    std::string buffer(size_t{64} * 1024, '\0');
    for (;;) {
        ssize_t count = read(from.get(), buffer.data(), buffer.size());
        if (count == 0) return kept;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw fileFailure(name, errno);
        if (!writeAll(kept.get(), std::string_view(buffer).substr(0, static_cast<size_t>(count))))
            throw cannotKeep(name, folder, errno);
    }
}

} // namespace host
