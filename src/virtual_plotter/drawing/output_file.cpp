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
    m_path = path;
    m_error = 0;
    struct stat status;
    if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return m_error = EISDIR;

    // Not mkstemp: the picture gets the permissions that any new file of the user's gets.
    m_folder = path.substr(0, path.rfind('/') + 1);
    m_temporary.clear();
    int fd = ::open(m_folder.empty() ? "." : m_folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode);
    // Not every file system has files without a name.
    if (fd < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        named([&](const std::string &name) {
            fd = ::open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kMode);
            return fd >= 0;
        });
    }
    if (fd < 0) return m_error = errno;
    m_file = ::fdopen(fd, "w");
    if (m_file != nullptr) return 0;
    m_error = errno;
    ::close(fd);
    if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
    return m_error;
}

bool OutputFile::named(const std::function<bool(const std::string &name)> &take) {
    static std::atomic<unsigned> counter = 0;
    for (int tries = 0; tries < 100; ++tries) {
        std::string name = m_folder + ".orb-picture-" + std::to_string(::getpid()) + '-' + std::to_string(++counter);
        if (take(name)) {
            m_temporary = std::move(name);
            return true;
        }
        if (errno != EEXIST) break; // EEXIST: left by a killed process of our number, so the next name
    }
    return false;
}

int OutputFile::write(const void *bytes, size_t size) {
    if (m_error != 0) return m_error;
    if (m_file == nullptr) return m_error = EBADF;
    if (std::fwrite(bytes, 1, size, m_file) != size) m_error = errno;
    return m_error;
}

int OutputFile::commit() {
    if (m_file == nullptr) return m_error != 0 ? m_error : EBADF;
    if (std::fflush(m_file) != 0 && m_error == 0) m_error = errno;
    // A link cannot replace a file but a rename can: the file first gets a temporary name, and then the target's.
    const std::string self = "/proc/self/fd/" + std::to_string(::fileno(m_file));
    const auto link = [&](const std::string &name) {
        return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    if (m_error == 0 && m_temporary.empty() && !named(link)) m_error = errno;
    const bool closed = std::fclose(m_file) == 0;
    m_file = nullptr;
    if (!closed && m_error == 0) m_error = errno;
    if (m_error == 0 && std::rename(m_temporary.c_str(), m_path.c_str()) != 0) m_error = errno;
    if (m_error != 0 && !m_temporary.empty()) ::unlink(m_temporary.c_str());
    return m_error;
}

void OutputFile::discard() {
    if (m_file == nullptr) return;
    std::fclose(m_file);
    m_file = nullptr;
    if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

} // namespace virtual_plotter
