// A file that appears whole or not at all.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace virtual_plotter {

/// Collects bytes in a hidden temporary beside the target, which takes the target's name at the end; until then an older
/// file of that name stays as it is. Not committed, it leaves nothing behind.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile() { discard(); }

    /// Each returns 0 or an errno. Once one has failed, commit answers with that error and the file is gone.
    int open(const std::string &path);
    int write(const void *bytes, size_t size);
    int commit();
    void discard();
    int error() const { return m_error; }

private:
    std::FILE *m_file = nullptr;
    std::string m_path, m_temporary;
    int m_error = 0;
};

} // namespace virtual_plotter
