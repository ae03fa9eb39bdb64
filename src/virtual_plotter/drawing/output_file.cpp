#include "virtual_plotter/drawing/output_file.h"

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace virtual_plotter {

int OutputFile::open(const std::string &path) {
    discard();
    m_path = path;
    m_error = 0;
    struct stat status;
    if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return m_error = EISDIR;

    // Not mkstemp: the picture gets the permissions that any new file of the user's gets.
    static std::atomic<unsigned> counter = 0;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    for (int tries = 0; tries < 100; ++tries) {
        m_temporary = folder + ".orb-picture-" + std::to_string(::getpid()) + '-' + std::to_string(++counter);
        m_file = std::fopen(m_temporary.c_str(), "wxe");
        if (m_file != nullptr) return 0;
        if (errno != EEXIST) break; // else left by a process of the same number that was killed
    }
    return m_error = errno;
}

int OutputFile::write(const void *bytes, size_t size) {
    if (m_error != 0) return m_error;
    if (m_file == nullptr) return m_error = EBADF;
    if (std::fwrite(bytes, 1, size, m_file) != size) m_error = errno;
    return m_error;
}

int OutputFile::commit() {
    if (m_file == nullptr) return m_error != 0 ? m_error : EBADF;
    const bool closed = std::fclose(m_file) == 0;
    m_file = nullptr;
    if (!closed && m_error == 0) m_error = errno;
    if (m_error == 0 && std::rename(m_temporary.c_str(), m_path.c_str()) != 0) m_error = errno;
    if (m_error != 0) ::unlink(m_temporary.c_str());
    return m_error;
}

void OutputFile::discard() {
    if (m_file == nullptr) return;
    std::fclose(m_file);
    m_file = nullptr;
    ::unlink(m_temporary.c_str());
}

} // namespace virtual_plotter
