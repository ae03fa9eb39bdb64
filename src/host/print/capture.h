// A serial line that ends in a file: a pseudo-terminal whose far end is kept by a thread.
#pragma once

#include "virtual_plotter/face/pty_line.h"

#include <cstdint>
#include <string>
#include <thread>

namespace host {

/// Throws Failure when the file could not be written; changes nothing.
void requireWritable(const std::string &file);

class Capture {
public:
    /// Creates or empties the file. Throws Failure.
    explicit Capture(const std::string &file);
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;
    ~Capture() { end(); }

    /// The path of the near end, to be printed to.
    const std::string &port() const { return line_.path(); }

    /// Takes what is still under way and closes the file; returns how many bytes are in it.
    int64_t end();

    /// After end(): throws Failure when not all of it could be written.
    void finish();

private:
    void keep();

    std::string file_;
    virtual_plotter::PtyLine line_; ///< its near end is held, so that it lasts from before the job to its end
    int output_ = -1;
    int64_t written_ = 0;
    int writeError_ = 0;
    std::thread keeper_;
};

} // namespace host
