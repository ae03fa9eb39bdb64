// A serial line that ends in a plotter in software, played by a thread.
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

    /// Takes what is still under way; returns how many bytes have arrived. The line is closed then.
    int64_t end();
    const language::PlotReader &plot() const { return plotter_.plot(); }
    const Drawing &drawing() const { return drawing_; }

    /// After end(): the picture appears. Throws Failure when it cannot.
    void finish();

private:
    Drawing drawing_;
    virtual_plotter::VirtualPlotter plotter_;
    virtual_plotter::PtyLine line_;
    std::thread player_;
};

} // namespace host
