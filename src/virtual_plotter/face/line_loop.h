// Plays a virtual plotter on a pseudo-terminal, in real time. The plotter has no clock and the line no plotter: this loop is
// the one place where they meet, for 'vectorix simulate' as for a print to a plotter in software.
#pragma once

#include "virtual_plotter/face/plotter.h"
#include "virtual_plotter/face/pty_line.h"

#include <chrono>
#include <functional>
#include <optional>

namespace virtual_plotter {

struct LineRules {
    /// Asked several times a second; true ends the play. Empty: never.
    std::function<bool()> isStopped;
    /// Ends the play when whoever had opened the line has closed it, and nobody has opened it again for so long.
    std::optional<std::chrono::milliseconds> onceWithin;
    /// onceWithin counts only after something was heard: a program may first open the line just to see whether it is there.
    bool mustHear = true;
};

/// Blocks until the rules end it, or the plotter hangs up and with it the line. Replies that nobody reads are lost.
void playOn(PtyLine &line, VirtualPlotter &plotter, const LineRules &rules);

} // namespace virtual_plotter
