#include "virtual_plotter/drawing/output_file.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace virtual_plotter {

namespace {

constexpr mode_t kMode = 0666;

} // namespace

int OutputFile::open(const std::string &path) {
    discard();
    path_ = path;
    error_ = 0;
    struct stat status;
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) // a device would be replaced by the file
        return error_ = S_ISDIR(status.st_mode) ? EISDIR : EMEDIUMTYPE;

    // Not mkstemp: the picture gets the permissions that any new file of the user's gets.
    folder_ = path.substr(0, path.rfind('/') + 1);
    temporary_.clear();
    int fd = ::open(folder_.empty() ? "." : folder_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode);
    // Not every file system has files without a name.
    if (fd < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        named([&](const std::string &name) {
            fd = ::open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kMode);
            return fd >= 0;
        });
    }
    if (fd < 0) return error_ = errno;
    file_ = ::fdopen(fd, "w");
    if (file_ != nullptr) return 0;
    error_ = errno;
    ::close(fd);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    return error_;
}

int OutputFile::openStandardOutput() {
    discard();
    error_ = 0;
    path_.clear();
    temporary_.clear();
    file_ = ::fdopen(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), "w");
    return file_ != nullptr ? 0 : error_ = errno;
}

bool OutputFile::named(const std::function<bool(const std::string &name)> &take) {
    static std::atomic<unsigned> counter = 0;
    for (int tries = 0; tries < 100; ++tries) {
        std::string name = folder_ + ".orb-picture-" + std::to_string(::getpid()) + '-' + std::to_string(++counter);
        if (take(name)) {
            temporary_ = std::move(name);
            return true;
        }
        if (errno != EEXIST) break; // EEXIST: left by a killed process of our number, so the next name
    }
    return false;
}

int OutputFile::write(const void *bytes, size_t size) {
    if (error_ != 0) return error_;
    if (file_ == nullptr) return error_ = EBADF;
    if (std::fwrite(bytes, 1, size, file_) != size) error_ = errno;
    return error_;
}

int OutputFile::commit() {
    if (file_ == nullptr) return error_ != 0 ? error_ : EBADF;
    if (std::fflush(file_) != 0 && error_ == 0) error_ = errno;
    // A link cannot replace a file but a rename can: the file first gets a temporary name, and then the target's.
    const std::string self = "/proc/self/fd/" + std::to_string(::fileno(file_));
    const auto link = [&](const std::string &name) {
        return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    const bool isNamed = !path_.empty(); // standard output has no name to be given
    if (error_ == 0 && isNamed && temporary_.empty() && !named(link)) error_ = errno;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed && error_ == 0) error_ = errno;
    if (error_ == 0 && isNamed && std::rename(temporary_.c_str(), path_.c_str()) != 0) error_ = errno;
    if (error_ != 0 && !temporary_.empty()) ::unlink(temporary_.c_str());
    return error_;
}

void OutputFile::discard() {
    if (file_ == nullptr) return;
    std::fclose(file_);
    file_ = nullptr;
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

} // namespace virtual_plotter
