// Plots to measure with: made up, the same in every run.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

/// A file of its own that is removed in the end. Throws std::runtime_error.
class TemporaryFile {
public:
    explicit TemporaryFile(const char *ending);
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile();
    const std::string &path() const { return path_; }
    void append(std::string_view bytes);

private:
    std::string path_;
    int fd_;
};

constexpr int64_t kMB = 1'000'000;

/// An HP-GL plot of moves and lines, of so many bytes: a block of 1 MB, repeated, then the commands that fit. Nothing
/// of it is held but the block.
class Plot {
public:
    explicit Plot(int64_t bytes);
    int64_t size() const { return size_; }
    static constexpr size_t kBlock = kMB;
    /// One block, and behind it the first bytes of the next.
    const char *block() const { return block_.data(); }
    /// The plot has these bytes at offset.
    bool has(int64_t offset, std::string_view bytes) const;
    const std::string &path() const { return file_.path(); }

private:
    std::string block_;
    int64_t size_;
    TemporaryFile file_;
};

/// A sheet of small outlines, of about so many bytes: what a cutter is sent.
std::string outlines(size_t bytes);

/// Lines from anywhere on a sheet to anywhere, of about so many bytes: the most dots for the least plot.
std::string longLines(size_t bytes);

} // namespace bench
