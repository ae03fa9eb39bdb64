#include "host/files/whole_file.h"

#include "host/files/write_all.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr int kMostLinks = 40; // as the kernel follows

bool writeAndClose(int fd, const std::string &contents) {
    bool whole = writeAll(fd, contents) && fsync(fd) == 0;
    int errorNumber = errno;
    if (close(fd) == 0) errno = errorNumber;
    return whole;
}

/// Gives the file its name; without force not one that is in use (EEXIST). Where the file system cannot refuse to replace
/// (EINVAL), the look that writeWhole() takes beforehand has to do.
bool rename(const std::string &from, const std::string &to, bool force) {
    if (!force && renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (!force && errno != EINVAL) return false;
    return ::rename(from.c_str(), to.c_str()) == 0;
}

Failure exists(const std::string &path) {
    return {ExitCode::Failed,
            fmt::format("{}: exists already; add --force to replace it, or choose another name", shown(path))};
}

/// The path that path leads to when it is a symbolic link, whether there is a file or not; otherwise path. Throws Failure.
std::string behindLinks(const std::string &path) {
    fs::path end = path;
    std::error_code error;
    for (int links = 0; fs::is_symlink(end, error); ++links) {
        if (links == kMostLinks) throw outputFailure(path, ELOOP);
        end = end.parent_path() / fs::read_symlink(end, error);
        if (error) throw outputFailure(path, error.value());
    }
    return end;
}

mode_t newFileMode() {
    mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

std::string readWhole(const std::string &path, const char *what, int64_t most) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) throw fileFailure(path, errno);
    if (S_ISDIR(status.st_mode)) throw fileFailure(path, EISDIR);
    if (!S_ISREG(status.st_mode))
        throw Failure(ExitCode::Unfit, fmt::format("{}: not a file; name a {}", shown(path), what));
    if (status.st_size > most) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: {} bytes are too many for a {}; is it another file?", shown(path),
                                                   grouped(status.st_size), what));
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) throw fileFailure(path, errno);
    std::string text(static_cast<size_t>(status.st_size), '\0');
    file.read(text.data(), status.st_size);
    if (file.bad()) throw fileFailure(path, errno);
    text.resize(static_cast<size_t>(file.gcount()));
    return text;
}

void writeWhole(const std::string &path, const std::string &contents, bool force) {
    struct stat status;
    if (lstat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode) && !force) throw exists(path);
    std::string target = force ? behindLinks(path) : path;
    bool isReplaced = stat(target.c_str(), &status) == 0;
    if (isReplaced && !S_ISREG(status.st_mode)) throw outputFailure(path, S_ISDIR(status.st_mode) ? EISDIR : EMEDIUMTYPE);

    std::string draft = target + ".XXXXXX";
    int fd = mkostemp(draft.data(), O_CLOEXEC);
    if (fd < 0) throw outputFailure(path, errno);
    fchmod(fd, isReplaced ? status.st_mode & 0777 : newFileMode());
    if (writeAndClose(fd, contents) && rename(draft, target, force)) return;
    int errorNumber = errno;
    unlink(draft.c_str());
    throw errorNumber == EEXIST ? exists(path) : outputFailure(path, errorNumber);
}

} // namespace host
