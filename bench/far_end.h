// The far end of a serial line: a thread that reads what is printed and compares it with the plot.
#pragma once

#include "plots.h"
#include "virtual_plotter/face/plotter.h"
#include "virtual_plotter/face/pty_line.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace bench {

class FarEnd {
public:
    /// Takes everything at once or, with a plotter, at the plotter's pace and held by its XON and XOFF.
    explicit FarEnd(const Plot &plot, virtual_plotter::VirtualPlotter *plotter = nullptr);
    FarEnd(const FarEnd &) = delete;
    FarEnd &operator=(const FarEnd &) = delete;
    ~FarEnd();

    const std::string &port() const { return line_.path(); }
    /// Begins to listen to one print of the plot.
    void listen();
    /// The print has ended: waits until all of it is here and carried out. Throws std::runtime_error when the bytes that
    /// came are not the plot's.
    void finish();

private:
    void hear();

    const Plot &plot_;
    virtual_plotter::VirtualPlotter *plotter_;
    virtual_plotter::PtyLine line_;
    std::thread thread_;
    std::atomic<bool> ended_{false};
    int64_t heard_ = 0;
    bool same_ = true;
};

} // namespace bench
