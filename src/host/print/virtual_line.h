// A print to a plotter in software, for --virtual. The plug-in prints on a pseudo-terminal as on any serial port, while a
// thread plays the plotter at its other end: the plug-in's call returns only after the job.
#pragma once

#include "host/picture/drawing.h"
#include "virtual_plotter/face/line_loop.h"

#include <string>
#include <thread>

namespace host {

class VirtualLine {
public:
    /// Throws Failure.
    VirtualLine(const DrawingOptions &options, const std::string &picture);
    VirtualLine(const VirtualLine &) = delete;
    VirtualLine &operator=(const VirtualLine &) = delete;
    ~VirtualLine() { end(); }

    /// The path of the near end, to be printed to.
    const std::string &port() const { return line_.path(); }

    /// Waits for what is still on the line, closes it, and returns how many bytes have arrived.
    int64_t end();
    const language::PlotReader &plot() const { return plotter_.plot(); }
    const Drawing &drawing() const { return drawing_; }

    /// After end(): completes the picture. Throws Failure when it could not be written.
    void finish();

private:
    Drawing drawing_;
    virtual_plotter::VirtualPlotter plotter_;
    virtual_plotter::PtyLine line_;
    std::thread player_;
};

} // namespace host
