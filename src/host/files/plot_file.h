// The plot file, held open from its examination to the end of the job. The plug-in is handed heldPath(), so that what was
// examined is what is printed, also when the file's name is given to another meanwhile. Nothing keeps other programs from
// writing to the file itself: that is found afterwards, by change().
#pragma once

#include "host/files/kept_file.h"
#include "host/files/plot_stream.h"
#include "host/files/unique_fd.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace host {

/// Throws Failure unless path is a file that may be read and is not empty. what names its kind: "plot file".
void requireInputFile(const std::string &path, const char *what);

/// What became of a plot file since it was opened.
struct PlotChange {
    bool spoils = false; ///< it was written to: what was printed may be neither the old plot nor the new one
    std::string text;    ///< empty when it is as it was
};

class PlotFile {
public:
    /// Opens a file; a stream is read to its end. Throws Failure when path cannot be opened for
    /// reading, or is neither.
    explicit PlotFile(const std::string &path) : PlotFile(path, streamName(path)) {}
    /// The same, of a file that messages call otherwise.
    PlotFile(const std::string &path, std::string name);
    /// A plot that is no file of the user's: messages call it by the name that it was kept under.
    explicit PlotFile(KeptFile kept);
    /// The same, of bytes. Throws Failure.
    static PlotFile holding(std::string name, std::string_view bytes);

    /// Throws Failure (unfit) when it is empty.
    void requireContents() const;

    /// For messages: the path as typed, "standard input", or the name that it was given.
    const std::string &path() const { return name_; }
    /// A path by which this process can open this very file again, also when its own name is gone or names another. Valid
    /// while the object exists.
    std::string heldPath() const;
    /// Bytes, when it was opened.
    int64_t size() const { return opened_.st_size; }

    /// Bytes from the offset on, as many as there are up to the buffer's size. Throws Failure.
    std::string_view read(int64_t offset, std::string &buffer) const;
    /// Reads it block by block to its present end, until look returns false. Throws Failure.
    void readBlocks(const std::function<bool(std::string_view block)> &look) const;

    /// Compares the file with what it was when it was opened. What has no name never changes: nobody else can
    /// write to it.
    PlotChange change() const;

private:
    std::string path_, name_;
    bool isUnnamed_;
    struct stat opened_;
    std::shared_ptr<const UniqueFd> fd_; ///< copies are the same open file
};

/// Adds what stands from begin to end in a plot. Throws Failure.
void addBytes(KeptFile &kept, const PlotFile &plot, int64_t begin, int64_t end);

} // namespace host
