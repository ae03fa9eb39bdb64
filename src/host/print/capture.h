// A print into a file, for --capture. The plug-in prints on a pseudo-terminal as on any serial port, and a thread writes to
// the file what arrives at the other end: so the file holds exactly what a plotter would have received. It takes a thread
// because the plug-in's call returns only after the job, and the line holds little until it is read.
#pragma once

#include "virtual_plotter/face/pty_line.h"

#include <cstdint>
#include <string>
#include <thread>

namespace host {

/// Throws Failure when the file could not be created or written, without touching it: for a dry run.
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

    /// Waits for what is still on the line, closes line and file, and returns how many bytes are in the file.
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
