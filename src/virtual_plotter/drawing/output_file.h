// A file that appears whole or not at all. A plot may be read for minutes, and be stopped, killed or run out of disk: an
// older picture stays until the new one is complete, and no half picture is left to be taken for the plot.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

namespace virtual_plotter {

/// Collects bytes in a file beside the target, which takes the target's name at the end; until then an older file of that
/// name stays as it is. Not committed, it leaves nothing behind, even when the process is killed, for it has no name. Only
/// on file systems without such files it has one, beginning with a dot, and would stay behind a killed process.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile() { discard(); }

    /// Each returns 0 or an errno. Once one has failed, commit answers with that error and the file is gone.
    int open(const std::string &path);
    int openStandardOutput(); ///< what is written goes there at once, and stays
    int write(const void *bytes, size_t size);
    int commit();
    void discard();
    int error() const { return error_; }

private:
    /// Tries names for a temporary until one is taken, or errno is another than EEXIST; false leaves errno.
    bool named(const std::function<bool(const std::string &name)> &take);

    std::FILE *file_ = nullptr;
    std::string path_, folder_;
    std::string temporary_; ///< its name; empty while it has none
    int error_ = 0;
};

} // namespace virtual_plotter
