// Reads a plot behind the print: what was sent is drawn in the plotter's stead, so that it is known at each piece where the
// pen is, whether it is up, and how much has been drawn.
#pragma once

#include "host/files/plot_file.h"
#include "language/plot_reader.h"

#include <cstdint>

namespace host {

/// How far the drawing has come, by what was sent of it.
struct DrawnSoFar {
    uint64_t strokes = 0;
    int pen = 0;
    bool isPenUp = true; ///< and no instruction is under way that lowers it
};

class Follower {
public:
    /// plot must outlive it. terminator: behind which the next instruction begins.
    Follower(const PlotFile &plot, std::optional<language::Language> language, std::string_view terminator,
             const language::Rectangle &hardClip);

    /// So many bytes of the plot were sent in all. Throws Failure when the plot cannot be read.
    DrawnSoFar goTo(int64_t sentBytes);
    /// An instruction as a plotter carries it out behind what was sent: in the middle of a label it would be written as a
    /// part of that, unless what ends labels in this plot stands before it; and of the piece that was cut short nobody knows
    /// whether a label had begun. It must put the pen away. To be called once, at last.
    std::string behindText(const std::string &instruction);

private:
    void follow(std::string_view block);
    bool mayWait() const;

    const PlotFile &plot_;
    const char mark_;
    language::NoPen noPen_;
    language::PlotReader reader_;
    std::string buffer_;
    int64_t read_ = 0;
    std::string begun_; ///< of the instruction under way, at most two letters
};

} // namespace host
