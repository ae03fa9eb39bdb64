// The plot file: held open from its examination to the end of the job, so that both see the same file.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace host {

/// Throws Failure unless there is a file with something in it that may be read. what names its kind: "plot file".
void requireInputFile(const std::string &path, const char *what);

/// What became of a plot file since it was opened.
struct PlotChange {
    bool spoils = false; ///< it was written to: what was printed may be neither the old plot nor the new one
    std::string text;    ///< empty when it is as it was
};

class PlotFile {
public:
    /// Reads a stream (host/plot_stream.h) to its end. Throws Failure when it cannot be opened for reading, or is no file.
    explicit PlotFile(const std::string &path);
    PlotFile(const PlotFile &) = delete;
    PlotFile &operator=(const PlotFile &) = delete;
    ~PlotFile();

    /// Throws Failure (unfit) when it is empty.
    void requireContents() const;

    /// As people call it.
    const std::string &path() const { return path_; }
    /// A path of this very file in this process, also when its own name is gone or names another.
    std::string heldPath() const;
    /// Bytes, when it was opened.
    int64_t size() const { return opened_.st_size; }

    /// Bytes from the offset on, as many as there are up to the buffer's size. Throws Failure.
    std::string_view read(int64_t offset, std::string &buffer) const;
    /// Reads it block by block to its present end, until look returns false. Throws Failure.
    void readBlocks(const std::function<bool(std::string_view block)> &look) const;

    PlotChange change() const;

private:
    std::string path_;
    bool isStream_;
    int fd_;
    struct stat opened_;
};

} // namespace host
